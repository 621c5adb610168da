// The one settings file of the application, shared by all wallets. Neither function reports a failure.
#pragma once

#include <string>

struct UiSettings {
    std::string theme = "gold-purple";
    std::string last_vault;  // name of the vault looked at last; empty for none
};

// A file that is missing or does not parse changes nothing.
void load_settings(UiSettings& settings);
// Writes both, the vault only if there is one.
void save_settings(const UiSettings& settings);
