#include "core/dividend_split.h"

#include <limits>
#include <utility>

#include "base/amounts.h"
#include "base/settings.h"

namespace {

constexpr std::int64_t MOST_SATS = std::numeric_limits<std::int64_t>::max();

struct Split {
    std::int64_t pot = 0;
    std::string payable;
    std::vector<PreviewRow> rows;
    std::int64_t paid = 0;
    std::int64_t remainder = 0;
    std::int64_t fee_total = 0;
    int heads = 0;
    int skips = 0;
    bool exceeds_pot = false;
};

std::int64_t add_capped(std::int64_t a, std::int64_t b) {
    return a > MOST_SATS - b ? MOST_SATS : a + b;
}

// The reason why this amount and this board cannot be split, or empty.
std::string refusal(const RoundState& state, const std::string& amount_text, Split& split) {
    if (!parse_bsv_amount(trim_text(amount_text), split.pot))
        return "Enter how much BSV to pay as a dividend (e.g. 0.01).";
    if (state.board.rows.empty() || !state.board.loaded) return "Snapshot the board first.";
    if (state.board.in_market_lots.empty() || state.board.in_market_lots == "0")
        return "Float is zero - every lot is reserve on this wallet. Nothing to pay.";
    return "";
}

bool reads_as_payable(const std::string& payable) {
    std::uint64_t lots = 0;
    return read_lot_text_strict(payable, lots) && lots > 0;
}

void add_fee_estimate(Split& split, const RoundWallet& wallet, const std::string& dest, std::int64_t sats) {
    const std::int64_t estimate = wallet.estimate_send_fee(dest, sats);
    if (estimate > 0) split.fee_total = add_capped(split.fee_total, estimate);
}

void add_row(Split& split, const HolderRow& holder) {
    PreviewRow row{holder.who, holder.dest, holder.lots, pro_rata_sats(split.pot, holder.lots, split.payable),
                   false};
    row.skip = row.dest.empty() || row.sats < DUST_SATS;
    if (row.skip) {
        ++split.skips;
    } else {
        // Lots beyond 64 bits make the float read short of what the rows hold, and the shares too large.
        if (row.sats > split.pot - split.paid) split.exceeds_pot = true;
        if (!split.exceeds_pot) split.paid += row.sats;
        ++split.heads;
    }
    split.rows.push_back(std::move(row));
}

void split_rows(const RoundState& state, Split& split) {
    for (std::size_t row = 0; row < state.board.rows.size(); ++row) {
        if (is_in_market(state, row)) add_row(split, state.board.rows[row]);
    }
    split.remainder = split.pot - split.paid;
}

void estimate_fees(Split& split, const RoundWallet& wallet) {
    for (const PreviewRow& row : split.rows) {
        if (!row.skip) add_fee_estimate(split, wallet, row.dest, row.sats);
    }
    add_fee_estimate(split, wallet, settings().fee_address, APP_FEE_SATS);
}

// Empty if the wallet can pay, or if nobody knows what it holds: a chain service that does not answer stops
// no round.
std::string funds_refusal(const Split& split, const RoundWallet& wallet) {
    QvClaspStatus status;
    wallet.status(status);
    const std::int64_t need = add_capped(add_capped(split.pot, APP_FEE_SATS), split.fee_total);
    if (!status.balance_known || status.balance_sats >= need) return "";
    return "Not enough BSV on the connected Clasp for this pot, the 0.01 BSV app fee, plus miner "
           "fees.\nHave " +
           format_bsv(status.balance_sats) + " BSV.";
}

void freeze(RoundState& state, const Split& split) {
    state.preview = split.rows;
    state.frozen_pot = split.pot;
    state.frozen_fee_estimate = split.fee_total;
    state.frozen_remainder = split.remainder;
    state.frozen_skips = split.skips;
    state.frozen_token_id = state.board.token_id;
}

std::string preview_text(const RoundState& state, const Split& split) {
    std::string text = "Dividend preview (this list is frozen until you Snapshot again)\n\n";
    text += "Pot: " + format_bsv(split.pot);
    text += " BSV\nIn-market lots: " + state.board.in_market_lots;
    text += "\nExcluded lots: " + excluded_lots(state);
    text += "\nPayable lots: " + split.payable;
    text += "\nPayable heads: " + std::to_string(split.heads);
    text += "\nDust / no-dest skips: " + std::to_string(split.skips);
    text += "  (those sats stay in the connected Clasp)\nRemainder after pro-rata: " +
            format_bsv(split.remainder);
    text += " BSV  (stays in the connected Clasp)\nMiner fee estimate: " + std::to_string(split.fee_total);
    text += " sats  (from the connected Clasp, on top of the pot)\nApp fee: " + format_bsv(APP_FEE_SATS);
    text += " BSV to " + settings().fee_handle + "\n  " + settings().fee_address;
    text += "\n  (once per Pay, not taken from holders)\n\n";
    for (const PreviewRow& row : split.rows) {
        text += row.name + "  " + row.lots + " lots  ->  ";
        text += row.skip ? "skip" : format_bsv(row.sats) + " BSV";
        text += "\n";
    }
    return text;
}

}  // namespace

bool compute_preview(RoundState& state, const std::string& amount_text, const RoundWallet& wallet,
                     std::string& text_out) {
    state.preview.clear();
    Split split;
    text_out = refusal(state, amount_text, split);
    if (!text_out.empty()) return false;

    split.payable = payable_lots(state);
    if (reads_as_payable(split.payable)) split_rows(state, split);
    if (!reads_as_payable(split.payable) || split.exceeds_pot) {
        text_out =
            "No payable lots - every in-market holder is excluded. Include someone, or Snapshot again.";
        return false;
    }
    estimate_fees(split, wallet);
    text_out = funds_refusal(split, wallet);
    if (!text_out.empty()) return false;

    freeze(state, split);
    text_out = preview_text(state, split);
    return split.heads > 0;
}
