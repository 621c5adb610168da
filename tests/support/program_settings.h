// The settings of a process that a test starts, handed over as JSON.
#pragma once

#include <string>

#include "base/json_file.h"
#include "base/settings.h"

inline Json program_settings(const Settings& given) {
    return {{"woc_base", given.woc_base},
            {"woc_site", given.woc_site},
            {"ordinals_api_base", given.ordinals_api_base},
            {"ordinals_content_base", given.ordinals_content_base},
            {"arc_tx_endpoint", given.arc_tx_endpoint},
            {"home_host", given.home_host},
            {"home_domain", given.home_domain},
            {"tls_ca_file", given.tls_ca_file},
            {"local_resolver_port", given.local_resolver_port}};
}

// In the process itself: these are its settings from now on, and its host is not pinned.
inline void take_program_settings(const Json& given) {
    Settings taken = settings();
    taken.woc_base = json_text(given, "woc_base");
    taken.woc_site = json_text(given, "woc_site");
    taken.ordinals_api_base = json_text(given, "ordinals_api_base");
    taken.ordinals_content_base = json_text(given, "ordinals_content_base");
    taken.arc_tx_endpoint = json_text(given, "arc_tx_endpoint");
    taken.home_host = json_text(given, "home_host");
    taken.home_host_pin.clear();
    taken.home_domain = json_text(given, "home_domain");
    taken.tls_ca_file = json_text(given, "tls_ca_file");
    taken.local_resolver_port = static_cast<int>(json_int(given, "local_resolver_port"));
    override_settings(taken);
}

// The same by way of a file.
inline bool write_program_settings(const std::string& path, const Settings& given) {
    return write_text_file(path, dump_json(program_settings(given), 2));
}
inline bool use_program_settings(const std::string& path) {
    Json file;
    if (!read_json_file(path, file)) return false;
    take_program_settings(file);
    return true;
}
