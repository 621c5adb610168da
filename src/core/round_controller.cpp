#include "core/round_controller.h"

#include <utility>

#include "base/amounts.h"
#include "base/text.h"
#include "core/dividend_split.h"
#include "core/pay_run.h"
#include "core/round_display.h"
#include "core/round_status.h"

namespace {

// True, with the user told, while another action runs.
bool refused_as_busy(Round& round) {
    if (round.state.busy) set_status(round, "Already working...", false);
    return round.state.busy;
}

bool has_frozen_list(const RoundState& state) {
    return !state.busy && !state.preview.empty() && !state.frozen_token_id.empty();
}

void connect_worker(const RoundWallet& wallet, const RoundWorkers& workers) {
    auto message = std::make_unique<RoundMessage>();
    message->number = WM_APP_CONNECT;
    message->text = wallet.connect();
    workers.post(std::move(message));
}

void load_tokens_worker(const RoundWallet& wallet, const RoundWorkers& workers) {
    auto message = std::make_unique<RoundMessage>();
    message->number = WM_APP_TOKENS;
    message->text = wallet.list_tokens(message->tokens, true);
    workers.post(std::move(message));
}

void snapshot_worker(const std::string& token_id, const RoundWallet& wallet, const RoundWorkers& workers) {
    auto message = std::make_unique<RoundMessage>();
    message->number = WM_APP_SNAPSHOT;
    message->text = wallet.snapshot_holders(token_id, message->board);
    workers.post(std::move(message));
}

void show_message(Round& round, const std::string& title, const std::string& text) {
    MessageWindow message;
    message.title = title;
    message.text = text;
    round.window.show_message_window(message);
}

bool confirm_pay(Round& round) {
    MessageWindow message;
    message.title = "Pay";
    message.text = pay_confirmation_text(round.state);
    message.confirm = true;
    message.primary_label = "Pay";
    return round.window.show_message_window(message);
}

void on_connect_result(Round& round, const RoundMessage& message) {
    set_busy(round, false, 0);
    refresh_wallet_summary(round);
    if (!message.text || !says_success(*message.text)) {
        set_status(round, message.text.value_or("Connect failed."), false);
        return;
    }
    set_status(round, "Loading tokens", true);
    on_load_tokens(round);
}

void on_tokens_result(Round& round, RoundMessage& message) {
    RoundState& state = round.state;
    const bool asked_by_button = state.busy_control == CONTROL_LOAD_TOKENS;
    set_busy(round, false, 0);
    state.tokens = std::move(message.tokens);
    refresh_token_list(round);
    if (!state.tokens.empty()) write_selected_origin(round);
    const std::string text = message.text.value_or("");
    if (says_error(text)) {
        set_status(round, text, false);
    } else if (state.tokens.empty()) {
        set_status(round,
                   "No tokens on this wallet yet. Paste a deploy origin if you minted and sent the stack.",
                   false);
    } else {
        set_status(
            round,
            "Loaded " + std::to_string(state.tokens.size()) +
                (asked_by_button ? " token(s) from GorillaPool. Pick one and Snapshot."
                                 : " token(s) from this wallet. Load tokens refreshes from the chain."),
            false);
    }
}

void take_board(Round& round, HolderBoard board) {
    round.state.board = std::move(board);
    round.state.excluded.assign(round.state.board.rows.size(), 0);
    round.state.selected_row = -1;
}

void on_snapshot_result(Round& round, RoundMessage& message) {
    set_busy(round, false, 0);
    const std::string text = message.text.value_or("");
    if (says_error(text)) {
        take_board(round, HolderBoard());
        // The summary pane keeps the figures of the board before.
        round.window.fill_board({});
        set_status(round, text, false);
        return;
    }
    take_board(round, std::move(message.board));
    refresh_board(round);
    set_status(round, "Snapshot ready. Enter a BSV amount and Preview.", false);
}

void on_pay_result(Round& round, const RoundMessage& message) {
    set_busy(round, false, 0);
    invalidate_preview(round);
    refresh_wallet_summary(round);
    refresh_board(round);
    set_status(round, message.text.value_or("Pay finished."), false);
    round.window.reload_history();
    if (!message.text) return;
    MessageWindow window;
    window.title = "Pay";
    window.text = *message.text;
    window.txids = extract_txids(*message.text);
    round.window.show_message_window(window);
}

void on_balance_result(Round& round, const RoundMessage& message) {
    if (!round.window.has_control(CONTROL_WALLET_BALANCE) || !round.wallet.is_connected()) return;
    if (!message.balance_known)
        round.window.set_text(CONTROL_WALLET_BALANCE, "(WhatsOnChain miss)");
    else if (message.balance_sats >= 0)
        round.window.set_text(CONTROL_WALLET_BALANCE, format_bsv(message.balance_sats) + " BSV");
}

}  // namespace

void on_window_created(Round& round) {
    round.window.enable_control(CONTROL_PAY, false);
    refresh_wallet_summary(round);
    if (round.wallet.is_connected()) on_load_tokens(round);
}

void on_connect(Round& round) {
    if (refused_as_busy(round)) return;
    if (round.wallet.is_connected()) {
        set_status(round, "Already connected. Unbind to pick another wallet.", false);
        return;
    }
    set_busy(round, true, CONTROL_CONNECT);
    set_status(round, "Waiting for Clasp to approve", true);
    round.workers.start_worker(
        [wallet = round.wallet, workers = round.workers] { connect_worker(wallet, workers); });
}

void on_unbind(Round& round) {
    RoundState& state = round.state;
    round.wallet.unbind();
    state.board = HolderBoard();
    state.excluded.clear();
    state.selected_row = -1;
    state.tokens.clear();
    round.window.fill_token_box({}, -1);
    round.window.fill_board({});
    invalidate_preview(round);
    refresh_wallet_summary(round);
    set_status(round, "Unbound. Connect again to pick a wallet in Clasp.", false);
}

void on_load_tokens(Round& round) {
    if (refused_as_busy(round)) return;
    if (!round.wallet.is_connected()) {
        set_status(round, "Connect a Clasp wallet first.", false);
        return;
    }
    set_busy(round, true, CONTROL_LOAD_TOKENS);
    set_status(round, "Loading tokens", true);
    round.workers.start_worker(
        [wallet = round.wallet, workers = round.workers] { load_tokens_worker(wallet, workers); });
}

void on_snapshot(Round& round) {
    if (refused_as_busy(round)) return;
    const std::string token_id = selected_token_id(round);
    if (token_id.size() < TOKEN_ID_LENGTH) {
        show_message(round, "The Bursaria", "Pick a token or paste its deploy origin (txid_vout).");
        return;
    }
    set_busy(round, true, CONTROL_SNAPSHOT);
    invalidate_preview(round);
    set_status(round, "Loading the holder board", true);
    round.workers.start_worker([token_id, wallet = round.wallet, workers = round.workers] {
        snapshot_worker(token_id, wallet, workers);
    });
}

void on_preview(Round& round) {
    std::string text;
    const std::string amount = round.window.read_edit(CONTROL_AMOUNT, MOST_AMOUNT_CHARACTERS);
    if (!compute_preview(round.state, amount, round.wallet, text)) {
        show_message(round, "Preview", text);
        return;
    }
    round.window.enable_control(CONTROL_PAY, true);
    round.window.open_preview_window(text);
    set_status(round, "Preview frozen. Pay sends that list - Snapshot again for a new round.", false);
}

void on_pay(Round& round) {
    if (!has_frozen_list(round.state)) return;
    // Messages are handled while the question stands; the list that is paid must be the one that was asked
    // about.
    if (!confirm_pay(round) || !has_frozen_list(round.state)) return;
    set_busy(round, true, CONTROL_PAY);
    set_status(round, "Paying", true);
    PayJob job{round.state.preview, round.state.frozen_token_id, round.state.board.token_name};
    round.workers.start_worker([job = std::move(job), wallet = round.wallet, workers = round.workers] {
        pay_worker(job, wallet, workers);
    });
}

void on_token_selection_changed(Round& round) {
    write_selected_origin(round);
    invalidate_preview(round);
}

void on_amount_changed(Round& round) {
    invalidate_preview(round);
}

void on_set_excluded(Round& round, int row, bool excluded) {
    RoundState& state = round.state;
    if (row < 0 || static_cast<std::size_t>(row) >= state.board.rows.size()) return;
    const auto position = static_cast<std::size_t>(row);
    if (state.board.rows[position].reserve) return;
    fit_excluded(state);
    state.excluded[position] = excluded ? 1 : 0;
    invalidate_preview(round);
    refresh_board(round);
    set_status(round, (excluded ? "Excluded " : "Included ") + state.board.rows[position].who + ".", false);
}

void on_message(Round& round, RoundMessage& message) {
    // It may end in bytes of a service, and a window shows nothing of a text that is no UTF-8.
    if (message.text) message.text = shown_text(*message.text);
    switch (message.number) {
        case WM_APP_CONNECT:
            return on_connect_result(round, message);
        case WM_APP_TOKENS:
            return on_tokens_result(round, message);
        case WM_APP_SNAPSHOT:
            return on_snapshot_result(round, message);
        case WM_APP_PAY:
            return on_pay_result(round, message);
        case WM_APP_STATUS:
            return set_status(round, message.text.value_or(""), false);
        case WM_APP_BALANCE:
            return on_balance_result(round, message);
        default:
            return;
    }
}

TextSink status_line_sink(const RoundWorkers& workers) {
    return [post = workers.post](const std::string& line) {
        if (line.empty()) return;
        auto message = std::make_unique<RoundMessage>();
        message->number = WM_APP_STATUS;
        message->text = line;
        post(std::move(message));
    };
}
