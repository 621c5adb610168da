#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "base/json_file.h"
#include "clasp/qv_clasp_wallet.h"
#include "console/console_commands.h"
#include "core/round_controller.h"
#include "platform/program.h"
#include "program/wallet_calls.h"

int main(int count, char** values) {
    const std::vector<std::string> arguments(values + (count > 0 ? 1 : 0), values + count);
    const ConsoleStreams streams = process_streams();
    ConsoleRequest request;
    if (!accept_request(arguments, streams, request)) return CONSOLE_WRONG_USAGE;

    // Old records lie beside the program, wherever it is started from.
    std::error_code error;
    if (!request.csv_file.empty()) {
        const std::u8string whole = std::filesystem::absolute(utf8_path(request.csv_file), error).u8string();
        if (!error) request.csv_file.assign(whole.begin(), whole.end());
    }
    std::filesystem::current_path(program_folder(), error);
    qv_clasp_init(program_folder(), "The Bursaria");
    qv_clasp_http_start();
    int exit_status = CONSOLE_FAILED;
    {
        MessageQueue queue;
        qv_clasp_set_log_sink(status_line_sink(queue.workers()));
        exit_status = run_console(request, library_wallet(), queue, streams);
        qv_clasp_set_log_sink(nullptr);
    }
    qv_clasp_http_stop();
    return exit_status;
}
