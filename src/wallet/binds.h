// Who this program is to the family, and the bind: the file that remembers which wallet this installation
// uses. The identity is set once at start-up; the active wallet id changes by an approved connect and an
// unbind only.
#pragma once

#include <string>
#include <string_view>

// At start-up, before any other wallet call. `instance` is the folder that holds the program ("." if empty),
// `app` its name ("App" if empty). Migrates, then takes the wallet id from the bind; with no bind and exactly
// one wallet in the registry, binds that one.
void qv_clasp_init(const std::string& instance, const std::string& app);

// True once qv_clasp_init has run.
bool qv_clasp_app_mode();
const std::string& qv_clasp_app_name();
const std::string& qv_clasp_app_instance();

// The selected wallet; empty while nothing is bound. Thread-safe.
std::string qv_clasp_active_wallet_id();
void qv_clasp_set_active_wallet_id(const std::string& wallet_id);

// The file name of the bind of an instance text: letters and digits in lower case, "_" for every other byte,
// the last 96 bytes, "default" for nothing.
std::string qv_clasp_bind_key(std::string_view instance);
// The path of this program's bind; creates its folder.
std::string qv_clasp_bind_path();
// The bound wallet id, empty if there is no readable bind.
std::string qv_clasp_read_bind();
// Selects the wallet and writes the bind. Does nothing for an empty id.
void qv_clasp_write_bind(const std::string& wallet_id);
// Removes the bind and clears the selection.
void qv_clasp_drop_bind();
