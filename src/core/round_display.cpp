#include "core/round_display.h"

#include <unordered_map>
#include <utility>

#include "base/amounts.h"
#include "records/holder_notes.h"
#include "records/payout_ledger.h"

namespace {

constexpr std::size_t MOST_ORIGIN_CHARACTERS = 159;

std::string typed_origin(const Round& round) {
    return trim_text(round.window.read_edit(CONTROL_ORIGIN, MOST_ORIGIN_CHARACTERS));
}

// A later match wins; without one the first row is taken.
std::size_t token_to_select(const std::vector<TokenRow>& tokens, const std::string& typed) {
    std::size_t selected = 0;
    if (typed.empty()) return selected;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        if (typed.starts_with(tokens[i].token_id)) selected = i;
    }
    return selected;
}

void status_worker(const RoundWallet& wallet, const RoundWorkers& workers, std::atomic<int>& runs) {
    QvClaspStatus status;
    wallet.status(status);
    auto message = std::make_unique<RoundMessage>();
    message->number = WM_APP_BALANCE;
    message->balance_known = status.balance_known;
    message->balance_sats = status.balance_sats;
    workers.post(std::move(message));
    runs.store(0);
}

void start_status_worker(Round& round) {
    if (!round.window.exists()) return;
    int idle = 0;
    if (!round.status_worker_runs->compare_exchange_strong(idle, 1)) return;
    round.workers.start_worker([wallet = round.wallet, workers = round.workers,
                                runs = round.status_worker_runs] { status_worker(wallet, workers, *runs); });
}

std::string role_text(const RoundState& state, std::size_t row) {
    if (state.board.rows[row].reserve) return "reserve";
    return is_excluded(state, row) ? "excluded" : "in-market";
}

// What the records tell of the holders of one token.
struct BoardRecords {
    TokenPayouts payouts;
    std::unordered_map<std::string, std::string> notes;
};

BoardRecords read_board_records(const std::string& token_id) {
    return {read_token_payouts(token_id), notes_on(read_notes(), token_id)};
}

BoardLine board_line(const RoundState& state, std::size_t row, const BoardRecords& records) {
    const HolderRow& holder = state.board.rows[row];
    const std::int64_t received = holder.reserve ? 0 : records.payouts.received(holder.dest);
    const bool has_note = records.notes.contains(note_key(holder.pubkey, holder.who, holder.dest));
    BoardLine line;
    line.holder = holder.who + (has_note ? NOTE_MARK : "");
    line.lots = holder.lots;
    line.pay_to = holder.reserve || holder.dest.empty() ? "-" : holder.dest;
    line.role = role_text(state, row);
    line.received = received > 0 ? format_bsv(received) : "-";
    line.excluded = is_excluded(state, row);
    return line;
}

std::vector<BoardLine> board_lines_with(const RoundState& state, const BoardRecords& records) {
    std::vector<BoardLine> lines;
    lines.reserve(state.board.rows.size());
    for (std::size_t row = 0; row < state.board.rows.size(); ++row)
        lines.push_back(board_line(state, row, records));
    return lines;
}

std::size_t count_heads(const RoundState& state) {
    std::size_t heads = 0;
    for (std::size_t row = 0; row < state.board.rows.size(); ++row) heads += is_in_market(state, row) ? 1 : 0;
    return heads;
}

std::string board_summary(const RoundState& state, std::int64_t paid_out_sats) {
    const HolderBoard& board = state.board;
    return "Token: " + (board.token_name.empty() ? board.token_id : board.token_name) +
           "\r\nTotal lots: " + board.total_lots + "      In-market: " + board.in_market_lots +
           "      This wallet: " + board.reserve_lots + "      Excluded: " + excluded_lots(state) +
           "\r\nHeads: " + std::to_string(count_heads(state)) +
           "      Paid out: " + format_bsv(paid_out_sats) + " BSV";
}

}  // namespace

std::string selected_token_id(const Round& round) {
    const std::string typed = typed_origin(round);
    if (typed.size() >= TOKEN_ID_LENGTH) return typed;
    const int selected = round.window.selected_token();
    if (selected < 0 || static_cast<std::size_t>(selected) >= round.state.tokens.size()) return "";
    return round.state.tokens[static_cast<std::size_t>(selected)].token_id;
}

void write_selected_origin(Round& round) {
    const std::string token_id = selected_token_id(round);
    if (token_id.size() >= TOKEN_ID_LENGTH && round.window.has_control(CONTROL_ORIGIN))
        round.window.set_text(CONTROL_ORIGIN, token_id);
}

std::string token_item_text(const TokenRow& token) {
    std::string text = (token.name.empty() ? "(unnamed)" : token.name) + "  ";
    if (!token.lots.empty() && token.lots != "0") return text + token.lots + " lots";
    return token.minted ? text + "minted" : text;
}

void refresh_token_list(Round& round) {
    const std::vector<TokenRow>& tokens = round.state.tokens;
    const std::string typed = typed_origin(round);
    std::vector<std::string> items;
    items.reserve(tokens.size());
    for (const TokenRow& token : tokens) items.push_back(token_item_text(token));
    const std::size_t selected = token_to_select(tokens, typed);
    round.window.fill_token_box(items, tokens.empty() ? -1 : static_cast<int>(selected));
    if (!tokens.empty() && typed.size() < TOKEN_ID_LENGTH)
        round.window.set_text(CONTROL_ORIGIN, tokens[selected].token_id);
}

WalletSummary wallet_summary(const RoundWallet& wallet) {
    if (!wallet.is_connected()) return {"not connected", "-"};
    std::string address, paymail;
    wallet.summary(address, paymail);
    WalletSummary summary{"connected", "..."};
    if (!paymail.empty())
        summary.label = paymail;
    else if (!address.empty())
        summary.label = address;
    const std::int64_t balance_sats = wallet.shown_balance();
    if (balance_sats >= 0) summary.balance = format_bsv(balance_sats) + " BSV";
    return summary;
}

std::string connect_caption(const RoundWallet& wallet) {
    return wallet.is_connected() ? "Connected" : "Connect";
}

void refresh_wallet_summary(Round& round) {
    const WalletSummary summary = wallet_summary(round.wallet);
    if (round.wallet.is_connected()) start_status_worker(round);
    round.window.set_text(CONTROL_WALLET_LABEL, summary.label);
    round.window.set_text(CONTROL_WALLET_BALANCE, summary.balance);
    round.window.set_text(CONTROL_CONNECT, connect_caption(round.wallet));
}

std::vector<BoardLine> board_lines(const RoundState& state) {
    return board_lines_with(state, read_board_records(state.board.token_id));
}

void fit_excluded(RoundState& state) {
    if (state.excluded.size() != state.board.rows.size()) state.excluded.assign(state.board.rows.size(), 0);
}

void refresh_board(Round& round) {
    RoundState& state = round.state;
    fit_excluded(state);
    const BoardRecords records = read_board_records(state.board.token_id);
    round.window.fill_board(board_lines_with(state, records));
    round.window.set_text(CONTROL_SUMMARY, board_summary(state, records.payouts.paid_total));
}
