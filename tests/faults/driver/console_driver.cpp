// The console program with the endpoints of a file: "console_driver SETTINGS COMMAND...". The file is
// that of program_settings.h.
#include <string>
#include <vector>

#include "clasp/qv_clasp_wallet.h"
#include "console/console_commands.h"
#include "console/status_line.h"
#include "program/wallet_calls.h"
#include "tests/support/program_settings.h"

int main(int count, char** values) {
    constexpr int NO_SETTINGS = 3;
    if (count < 2 || !use_program_settings(values[1])) return NO_SETTINGS;
    const ConsoleStreams streams = process_streams();
    ConsoleRequest request;
    if (!accept_request({values + 2, values + count}, streams, request)) return CONSOLE_WRONG_USAGE;
    qv_clasp_init("/console_driver", "The Bursaria");
    qv_clasp_http_start();
    int exit_status = CONSOLE_FAILED;
    {
        MessageQueue queue;
        exit_status = run_console(request, library_wallet(), queue, streams);
    }
    qv_clasp_http_stop();
    return exit_status;
}
