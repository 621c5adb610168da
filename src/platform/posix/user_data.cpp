#include "platform/user_data.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

static std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

// The first of the hints that is set. XDG_DATA_HOME counts only with an absolute path, as the
// rules of the desktop have it.
static std::string per_user_folder() {
    const std::string local = environment("LOCALAPPDATA");
    if (!local.empty()) return local;
    const std::string data_home = environment("XDG_DATA_HOME");
    if (data_home.starts_with('/')) return data_home;
    const std::string home = environment("HOME");
    return home.empty() ? "." : home + "/.local/share";
}

std::string family_data_folder() {
    return per_user_folder() + "/Quorvelle";
}

void create_private_folder(const std::string& path) {
    // It is nearly always there, and asked for before every file.
    if (::mkdir(path.c_str(), S_IRWXU) == 0 || errno == EEXIST) return;
    std::error_code error;
    const std::filesystem::path folder(path);
    if (folder.has_parent_path()) std::filesystem::create_directories(folder.parent_path(), error);
    ::mkdir(path.c_str(), S_IRWXU);
}
