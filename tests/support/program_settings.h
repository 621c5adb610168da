// The settings of a program that a test starts, handed over in a file.
#pragma once

#include <string>

#include "base/json_file.h"
#include "base/settings.h"

inline bool write_program_settings(const std::string& path, const Settings& given) {
    const Json file{{"woc_base", given.woc_base},
                    {"woc_site", given.woc_site},
                    {"ordinals_api_base", given.ordinals_api_base},
                    {"ordinals_content_base", given.ordinals_content_base},
                    {"arc_tx_endpoint", given.arc_tx_endpoint},
                    {"home_host", given.home_host},
                    {"home_domain", given.home_domain},
                    {"tls_ca_file", given.tls_ca_file},
                    {"local_resolver_port", given.local_resolver_port}};
    return write_text_file(path, dump_json(file, 2));
}

// In the program itself: its settings are those of the file from now on, and its host is not pinned.
inline bool use_program_settings(const std::string& path) {
    Json file;
    if (!read_json_file(path, file)) return false;
    Settings taken = settings();
    taken.woc_base = json_text(file, "woc_base");
    taken.woc_site = json_text(file, "woc_site");
    taken.ordinals_api_base = json_text(file, "ordinals_api_base");
    taken.ordinals_content_base = json_text(file, "ordinals_content_base");
    taken.arc_tx_endpoint = json_text(file, "arc_tx_endpoint");
    taken.home_host = json_text(file, "home_host");
    taken.home_host_pin.clear();
    taken.home_domain = json_text(file, "home_domain");
    taken.tls_ca_file = json_text(file, "tls_ca_file");
    taken.local_resolver_port = static_cast<int>(json_int(file, "local_resolver_port"));
    override_settings(taken);
    return true;
}
