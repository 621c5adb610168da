#include "platform/file_replace.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <system_error>

static bool sync_to_disk(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return false;
    const bool synced = ::fsync(descriptor) == 0;
    ::close(descriptor);
    return synced;
}

bool replace_file(const std::string& from, const std::string& to) {
    if (!sync_to_disk(from)) return false;
    if (std::rename(from.c_str(), to.c_str()) != 0) return false;
    const std::string folder = std::filesystem::path(to).parent_path().string();
    sync_to_disk(folder.empty() ? "." : folder);
    return true;
}

bool move_file(const std::string& from, const std::string& to) {
    if (std::rename(from.c_str(), to.c_str()) == 0) return true;
    std::error_code error;
    std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing, error);
    if (error) return false;
    return std::filesystem::remove(from, error);
}
