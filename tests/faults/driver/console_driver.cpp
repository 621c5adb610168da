// The console program with the endpoints of a file: "console_driver SETTINGS COMMAND...". The file is a JSON
// object of the settings that differ from the build's.
#include <string>
#include <vector>

#include "base/json_file.h"
#include "base/settings.h"
#include "clasp/qv_clasp_wallet.h"
#include "console/console_commands.h"
#include "console/status_line.h"
#include "program/wallet_calls.h"

namespace {

Settings settings_of(const Json& file) {
    Settings changed = settings();
    changed.woc_base = json_text(file, "woc_base");
    changed.woc_site = json_text(file, "woc_site");
    changed.ordinals_api_base = json_text(file, "ordinals_api_base");
    changed.ordinals_content_base = json_text(file, "ordinals_content_base");
    changed.arc_tx_endpoint = json_text(file, "arc_tx_endpoint");
    changed.home_host = json_text(file, "home_host");
    changed.home_host_pin.clear();
    changed.home_domain = json_text(file, "home_domain");
    changed.tls_ca_file = json_text(file, "tls_ca_file");
    changed.local_resolver_port = static_cast<int>(json_int(file, "local_resolver_port"));
    return changed;
}

}  // namespace

int main(int count, char** values) {
    constexpr int NO_SETTINGS = 3;
    Json file;
    if (count < 2 || !read_json_file(values[1], file)) return NO_SETTINGS;
    override_settings(settings_of(file));
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
