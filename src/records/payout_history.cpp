#include "records/payout_history.h"

#include <algorithm>
#include <ctime>
#include <unordered_map>

#include "base/amounts.h"
#include "platform/local_time.h"
#include "records/sats_sum.h"

namespace {

constexpr std::int64_t ONE_DAY_S = 86'400;
constexpr std::int64_t SHORTEST_SPAN_S = 3'600;

std::string ends_of(const std::string& text) {
    return text.substr(0, 8) + "..." + text.substr(text.size() - 6);
}

std::string known_name(const std::string& token_id, const TokenNames& tokens) {
    for (const auto& [known_id, name] : tokens) {
        if (known_id == token_id && !name.empty()) return name;
    }
    return "";
}

bool is_payout(const PayoutRow& row) {
    return row.kind != APP_FEE_KIND && row.token_id != APP_FEE_KIND;
}

void keep_shown_rows(HistoryView& view, const std::vector<PayoutRow>& all_rows, const std::string& token_id,
                     std::int64_t cutoff) {
    for (const PayoutRow& row : all_rows) {
        if (cutoff != 0 && row.unix < cutoff) continue;
        if (!is_payout(row) || (!token_id.empty() && row.token_id != token_id)) continue;
        view.rows.push_back(row);
        add_sats(view.total_sats, row.sats);
    }
}

// Where the chart of "All time" begins.
std::int64_t start_of_all_time(const std::vector<PayoutRow>& rows, std::int64_t now) {
    if (rows.empty()) return now - ONE_DAY_S;
    const auto oldest = std::min_element(
        rows.begin(), rows.end(), [](const PayoutRow& a, const PayoutRow& b) { return a.unix < b.unix; });
    const std::int64_t start = oldest->unix < 1 ? now - ONE_DAY_S : oldest->unix;
    return now - start < SHORTEST_SPAN_S ? now - SHORTEST_SPAN_S : start;
}

// In floating point, which no time in a damaged file overflows.
std::size_t bucket_of(std::int64_t unix, std::int64_t start, double width, std::size_t count) {
    const double at = (static_cast<double>(unix) - static_cast<double>(start)) / width;
    if (!(at > 0.0)) return 0;
    const std::size_t last = count - 1;
    return at >= static_cast<double>(last) ? last : static_cast<std::size_t>(at);
}

}  // namespace

std::vector<PayoutRow> load_payouts(const TokenNames& tokens) {
    std::vector<PayoutRow> rows = read_payout_entries();
    for (PayoutRow& row : rows) {
        if (row.token_name.empty()) row.token_name = known_name(row.token_id, tokens);
    }
    std::stable_sort(rows.begin(), rows.end(),
                     [](const PayoutRow& a, const PayoutRow& b) { return a.unix > b.unix; });
    return rows;
}

std::string token_label(const std::string& token_id, const std::string& token_name,
                        const TokenNames& tokens) {
    if (!token_name.empty()) return token_name;
    const std::string name = known_name(token_id, tokens);
    if (!name.empty()) return name;
    if (token_id.empty()) return "token";
    return token_id.size() < 16 ? token_id : ends_of(token_id);
}

std::vector<TokenChoice> history_tokens(const std::vector<PayoutRow>& rows, const TokenNames& tokens) {
    std::vector<TokenChoice> choices;
    std::unordered_map<std::string, std::size_t> places;
    for (const PayoutRow& row : rows) {
        if (!is_payout(row) || row.token_id.empty()) continue;
        const auto [place, is_new] = places.emplace(row.token_id, choices.size());
        if (is_new) choices.push_back({row.token_id, ""});
        std::string& label = choices[place->second].label;
        if (label.empty()) label = row.token_name;
    }
    for (TokenChoice& choice : choices) choice.label = token_label(choice.token_id, choice.label, tokens);
    return choices;
}

HistoryView history_view(const std::vector<PayoutRow>& all_rows, const std::string& token_id,
                         const HistoryRange& range, std::int64_t now) {
    HistoryView view;
    const bool all_time = range.span_s == 0;
    const std::int64_t cutoff = all_time ? 0 : now - range.span_s;
    keep_shown_rows(view, all_rows, token_id, cutoff);
    const std::int64_t start = all_time ? start_of_all_time(view.rows, now) : cutoff;
    view.buckets = payout_buckets(view.rows, start, now, range.buckets);
    view.axis_labels = {payout_time_text(start), payout_time_text(now)};
    return view;
}

std::vector<std::int64_t> payout_buckets(const std::vector<PayoutRow>& rows, std::int64_t start,
                                         std::int64_t now, std::size_t count) {
    const double width = static_cast<double>(now - start) / static_cast<double>(count);
    if (width < 1.0) count = 1;
    std::vector<std::int64_t> buckets(count, 0);
    for (const PayoutRow& row : rows)
        add_sats(buckets[count == 1 ? 0 : bucket_of(row.unix, start, width, count)], row.sats);
    return buckets;
}

std::string payout_time_text(std::int64_t unix) {
    std::tm local{};
    if (unix <= 0 || !local_time(unix, local)) return "-";
    char text[64];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", &local);
    return length == 0 ? "-" : std::string(text, length);
}

const std::string& payout_who(const PayoutRow& row) {
    return row.name.empty() ? row.dest : row.name;
}

std::string payout_kind(const PayoutRow& row) {
    return row.kind.empty() ? PAYOUT_KIND : row.kind;
}

std::string short_txid(const std::string& txid) {
    return txid.size() <= 16 ? txid : ends_of(txid);
}

std::string payouts_line(const HistoryView& view) {
    return "Payouts: " + std::to_string(view.rows.size()) + "    Total: " + format_bsv(view.total_sats) +
           " BSV";
}

std::string fees_line(std::int64_t fees_sats) {
    return "Total fees paid: " + format_bsv(fees_sats) + " BSV";
}
