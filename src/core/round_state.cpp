#include "core/round_state.h"

#include "base/amounts.h"

bool is_excluded(const RoundState& state, std::size_t row) {
    return row < state.excluded.size() && state.excluded[row] != 0 && row < state.board.rows.size() &&
           !state.board.rows[row].reserve;
}

bool is_in_market(const RoundState& state, std::size_t row) {
    return row < state.board.rows.size() && !state.board.rows[row].reserve && !is_excluded(state, row);
}

std::string excluded_lots(const RoundState& state) {
    std::uint64_t sum = 0;
    for (std::size_t row = 0; row < state.board.rows.size(); ++row) {
        std::uint64_t lots = 0;
        if (is_excluded(state, row) && read_lot_text_strict(state.board.rows[row].lots, lots)) sum += lots;
    }
    return std::to_string(sum);
}

std::string payable_lots(const RoundState& state) {
    const std::uint64_t in_market = read_lot_text_lenient(state.board.in_market_lots);
    const std::uint64_t excluded = read_lot_text_lenient(excluded_lots(state));
    return std::to_string(excluded >= in_market ? 0 : in_market - excluded);
}

bool is_due(const PreviewRow& row) {
    return !row.skip && !row.dest.empty() && row.sats >= DUST_SATS;
}

bool says_success(std::string_view result) {
    return result.starts_with("success");
}

bool says_error(std::string_view result) {
    return result.starts_with("error:");
}
