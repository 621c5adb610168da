#include "console/console_commands.h"

#include <map>
#include <utility>

#include "base/text.h"
#include "console/console_answers.h"
#include "console/console_window.h"
#include "console/record_commands.h"
#include "core/round_controller.h"
#include "records/vaults.h"

namespace {

// Belongs to no window: wakes the main thread when a job of the console's own is done.
constexpr unsigned JOB_DONE = 0;

struct Console {
    ConsoleWindow window;
    Round round;
    MessageQueue& queue;
    const AddressReader& read_address;
    const VersionReader& read_version;
    std::map<unsigned, std::string> results;  // the text of each message that came
    bool run_stopped = false;
};

void handle_next_message(Console& console) {
    std::unique_ptr<RoundMessage> message =
        console.window.dots_run ? console.queue.wait(DOTS_PERIOD_MS) : console.queue.wait();
    if (!message) {
        on_dots_tick(console.round);
        return;
    }
    console.results[message->number] = message->text.value_or("");
    if (message->number == WM_APP_PAY) console.run_stopped = message->stopped;
    on_message(console.round, *message);
}

void run_while_busy(Console& console) {
    while (console.round.state.busy) handle_next_message(console);
}

void run_job(Console& console, std::function<void()> job) {
    console.results.erase(JOB_DONE);
    const RoundWorkers& workers = console.round.workers;
    workers.start_worker([job = std::move(job), post = workers.post] {
        job();
        post(std::make_unique<RoundMessage>());
    });
    while (!console.results.contains(JOB_DONE)) handle_next_message(console);
}

ConsoleAnswer connect(Console& console) {
    on_connect(console.round);
    // Nothing was started if a wallet is connected already.
    const bool started = console.round.state.busy;
    run_while_busy(console);
    const std::string result = started ? console.results[WM_APP_CONNECT] : console.window.status;
    return {says_success(result), result, result, result_object(result)};
}

ConsoleAnswer unbind(Console& console) {
    std::string result;
    const auto drop = console.round.wallet.unbind;
    console.round.wallet.unbind = [&result, &drop] { return result = drop(); };
    on_unbind(console.round);
    console.round.wallet.unbind = drop;
    return {says_success(result), result, result, result_object(result)};
}

ConsoleAnswer status(Console& console) {
    QvClaspStatus report;
    set_status(console.round, "Reading the wallet", true);
    run_job(console, [&report, wallet = console.round.wallet] { wallet.status(report); });
    std::string address, paymail;
    if (report.connected) console.round.wallet.summary(address, paymail);
    return {true, "", status_text(report, paymail), status_object(report, paymail)};
}

ConsoleAnswer tokens(Console& console) {
    on_load_tokens(console.round);
    const bool started = console.round.state.busy;
    run_while_busy(console);
    const std::string result = started ? console.results[WM_APP_TOKENS] : console.window.status;
    const std::vector<TokenRow>& rows = console.round.state.tokens;
    return {started && !says_error(result), result, tokens_text(rows), tokens_object(result, rows)};
}

// True with the board in the round; otherwise `result_out` is what to tell the user.
bool take_snapshot(Console& console, const ConsoleRequest& request, std::string& result_out) {
    console.window.edits[CONTROL_ORIGIN] = request.token;
    on_snapshot(console.round);
    if (!console.round.state.busy) {
        result_out = console.window.message;
        return false;
    }
    run_while_busy(console);
    result_out = console.results[WM_APP_SNAPSHOT];
    return !says_error(result_out);
}

ConsoleAnswer snapshot(Console& console, const ConsoleRequest& request) {
    std::string result;
    const bool ok = take_snapshot(console, request, result);
    const HolderBoard& board = console.round.state.board;
    return {ok, result, board_text(board), snapshot_object(result, board)};
}

// False if no holder in the market bears the name.
bool exclude(Console& console, const std::string& who) {
    bool found = false;
    const std::vector<HolderRow>& rows = console.round.state.board.rows;
    for (std::size_t row = 0; row < rows.size(); ++row) {
        if (rows[row].reserve || rows[row].who != who) continue;
        found = true;
        if (!is_excluded(console.round.state, row))
            on_set_excluded(console.round, static_cast<int>(row), true);
    }
    return found;
}

bool exclude_all(Console& console, const ConsoleRequest& request, std::string& failure_out) {
    for (const std::string& who : request.excluded) {
        if (exclude(console, who)) continue;
        failure_out = "No in-market holder is named \"" + who + "\" on this board.";
        return false;
    }
    return true;
}

// Snapshot, exclusions and Preview. True with a frozen list that may be paid; `text_out` is the preview, or
// what to tell the user.
bool freeze_split(Console& console, const ConsoleRequest& request, std::string& text_out) {
    if (!take_snapshot(console, request, text_out)) return false;
    if (!exclude_all(console, request, text_out)) return false;
    console.window.edits[CONTROL_AMOUNT] = request.amount;
    on_amount_changed(console.round);
    on_preview(console.round);
    const bool pay_enabled = console.window.enabled[CONTROL_PAY];
    text_out = pay_enabled ? console.window.preview_text : console.window.message;
    return pay_enabled;
}

ConsoleAnswer preview(Console& console, const ConsoleRequest& request) {
    std::string text;
    const bool ok = freeze_split(console, request, text);
    return {ok, text, text, preview_object(ok, text, console.round.state)};
}

// Anything but a run that reached its end counts as stopped, so that nobody takes it for paid.
ConsoleAnswer not_paid(const std::string& text) {
    return {false, text, text, pay_object(true, text)};
}

ConsoleAnswer pay(Console& console, const ConsoleRequest& request) {
    std::string text;
    if (!freeze_split(console, request, text)) return not_paid(text);
    console.window.assume_yes = request.yes;
    on_pay(console.round);
    if (!console.round.state.busy) return not_paid("Cancelled. Nothing was paid.");
    run_while_busy(console);
    text = console.results[WM_APP_PAY];
    if (console.run_stopped) return not_paid(text);
    return {true, "", text, pay_object(false, text)};
}

constexpr const char* NO_WALLET_FOR_VAULTS = "Connect a Clasp wallet first. Vaults are stored per wallet.";

ConsoleAnswer vaults(Console& console, const ConsoleRequest& request) {
    if (!console.round.wallet.is_connected()) return no_vaults(NO_WALLET_FOR_VAULTS);
    return answer_vaults(request);
}

ConsoleAnswer vault_value(Console& console, const ConsoleRequest& request) {
    if (!console.round.wallet.is_connected()) return no_vault_value(NO_WALLET_FOR_VAULTS);
    const std::vector<Vault> all_vaults = load_vaults();
    const std::size_t place = find_vault(all_vaults, request.name);
    if (place == NO_VAULT) return no_vault_value("No vault is named \"" + request.name + "\".");
    set_status(console.round, VAULT_LOOKING_UP, false);
    VaultLookupResult result;
    run_job(console, [&result, addresses = all_vaults[place].addresses, read = console.read_address] {
        result = look_up_vault(addresses, read);
    });
    return answer_vault_value(result);
}

ConsoleAnswer note(Console& console, const ConsoleRequest& request) {
    std::string result;
    if (!take_snapshot(console, request, result)) return no_note(result);
    return answer_note(request, console.round.state.board);
}

ConsoleAnswer update(Console& console) {
    set_status(console.round, "Looking for a newer version", true);
    int latest_version = -1;
    run_job(console, [&latest_version, &read = console.read_version] { latest_version = read(); });
    const std::string failure = "The download page did not tell a version.";
    return {latest_version >= 0, failure, update_text(latest_version), update_object(latest_version)};
}

ConsoleAnswer run_command(Console& console, const ConsoleRequest& request) {
    switch (request.command) {
        case ConsoleCommand::Connect:
            return connect(console);
        case ConsoleCommand::Unbind:
            return unbind(console);
        case ConsoleCommand::Status:
            return status(console);
        case ConsoleCommand::Tokens:
            return tokens(console);
        case ConsoleCommand::Snapshot:
            return snapshot(console, request);
        case ConsoleCommand::Preview:
            return preview(console, request);
        case ConsoleCommand::Pay:
            return pay(console, request);
        case ConsoleCommand::History:
            return answer_history(request, {});
        case ConsoleCommand::VaultList:
        case ConsoleCommand::VaultSave:
        case ConsoleCommand::VaultAdd:
            return vaults(console, request);
        case ConsoleCommand::VaultValue:
            return vault_value(console, request);
        case ConsoleCommand::Note:
            return note(console, request);
        case ConsoleCommand::Update:
            return update(console);
    }
    return {};
}

void write_line(std::ostream& out, const std::string& text) {
    out << text;
    if (!text.empty() && !text.ends_with('\n')) out << '\n';
}

int give_answer(Console& console, const ConsoleAnswer& answer, bool json) {
    ConsoleStreams& streams = console.window.streams;
    console.window.status_line.end_line();
    if (!answer.ok) console.window.status_line.print_failure(answer.failure);
    if (json)
        write_line(streams.out, dump_json(answer.object, -1));
    else if (answer.ok)
        write_line(streams.out, shown_text(answer.text));
    streams.out.flush();
    if (!streams.out) {
        console.window.status_line.print("The result could not be written.");
        return CONSOLE_FAILED;
    }
    return answer.ok ? CONSOLE_SUCCESS : CONSOLE_FAILED;
}

}  // namespace

bool accept_request(const std::vector<std::string>& arguments, ConsoleStreams streams,
                    ConsoleRequest& request_out) {
    std::string usage;
    if (!parse_console_arguments(arguments, request_out, usage)) {
        streams.err << usage << std::endl;
        return false;
    }
    if (request_out.command == ConsoleCommand::Pay && !request_out.yes && !streams.in_is_terminal) {
        streams.err << "There is no terminal to confirm the payment on; --yes pays without asking.\n"
                    << usage_line(request_out.command) << std::endl;
        return false;
    }
    return true;
}

int run_console(const ConsoleRequest& request, const RoundWallet& wallet, MessageQueue& queue,
                ConsoleStreams streams, const AddressReader& read_address,
                const VersionReader& read_version) {
    Console console{ConsoleWindow(streams), Round(), queue, read_address, read_version, {}, false};
    console.round.window = round_window_of(console.window);
    console.round.wallet = wallet;
    console.round.workers = queue.workers();
    const int exit_status = give_answer(console, run_command(console, request), request.json);
    queue.join_workers();
    return exit_status;
}
