// The payout ledger as the history shows it: rows by token and range, their sum, the buckets of the chart and
// every text of the table. It reads the ledger and never writes it; all but load_payouts is pure, apart from
// the local time zone. Fee rows are no payouts: they show in fees_total alone. Any thread; no locks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "records/payout_ledger.h"

using PayoutRow = PayoutEntry;

// Token ids with their names, as the token list knows them.
using TokenNames = std::vector<std::pair<std::string, std::string>>;

// The ranges, in the order of the list of the window. A span of 0 is no limit.
struct HistoryRange {
    const char* label;
    const char* word;  // on a command line
    std::int64_t span_s;
    std::size_t buckets;
};
inline constexpr HistoryRange HISTORY_RANGES[] = {
    {"24 hours", "24h", 86'400, 24},   {"7 days", "7d", 604'800, 7},     {"1 month", "1m", 2'592'000, 30},
    {"3 months", "3m", 7'776'000, 12}, {"1 year", "1y", 31'536'000, 12}, {"All time", "all", 0, 16},
};
inline constexpr std::size_t ALL_TIME = 5;

// All entries of the ledger, newest first; entries of one second keep their order. One without a token name
// takes that of its token, if `tokens` knows the token.
std::vector<PayoutRow> load_payouts(const TokenNames& tokens);

// The short name of a token: the name given, else the one in `tokens`, else the id (first 8 characters, "..."
// and last 6 of one from 16 characters on; "token" for an empty one).
std::string token_label(const std::string& token_id, const std::string& token_name, const TokenNames& tokens);

// The items of the token filter behind "All tokens": each token that was paid on, in the order of `rows`.
struct TokenChoice {
    std::string token_id;
    std::string label;
};
std::vector<TokenChoice> history_tokens(const std::vector<PayoutRow>& rows, const TokenNames& tokens);

// What the window shows for one choice of token and range.
struct HistoryView {
    std::vector<PayoutRow> rows;
    std::int64_t total_sats = 0;
    std::vector<std::int64_t> buckets;     // oldest first; they add up to the total
    std::vector<std::string> axis_labels;  // the times at which the buckets begin and end
};
// An empty `token_id` is every token; `now` is in seconds since 1970.
HistoryView history_view(const std::vector<PayoutRow>& all_rows, const std::string& token_id,
                         const HistoryRange& range, std::int64_t now);

// The sums of `count` equal stretches of time from `start` to `now`; one sum if a stretch would be shorter
// than a second. A row outside counts with the nearest stretch.
std::vector<std::int64_t> payout_buckets(const std::vector<PayoutRow>& rows, std::int64_t start,
                                         std::int64_t now, std::size_t count);

// Local time as "2026-01-31 09:05"; "-" for a time of 0 or less and for one that cannot be converted.
std::string payout_time_text(std::int64_t unix);
// `name`, or `dest` without one.
const std::string& payout_who(const PayoutRow& row);
// The kind, or "payout" for an empty one.
std::string payout_kind(const PayoutRow& row);
// First 8 characters, "..." and last 6 of a text of more than 16 characters.
std::string short_txid(const std::string& txid);

// "Payouts: 2    Total: 0.00000546 BSV".
std::string payouts_line(const HistoryView& view);
// "Total fees paid: 0.01000000 BSV".
std::string fees_line(std::int64_t fees_sats);
