#include "platform/user_data.h"

#include <cstdlib>

static std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::string family_data_folder() {
    std::string folder = environment("LOCALAPPDATA");
    if (folder.empty()) folder = environment("XDG_DATA_HOME");
    if (folder.empty()) {
        const std::string home = environment("HOME");
        folder = home.empty() ? "." : home + "/.local/share";
    }
    return folder + "/Quorvelle";
}
