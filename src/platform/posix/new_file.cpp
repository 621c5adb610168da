#include "platform/new_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

static bool write_all(int descriptor, std::string_view content) {
    while (!content.empty()) {
        const ssize_t written = ::write(descriptor, content.data(), content.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        content.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

NewFile make_new_file(const std::string& path, std::string_view content) {
    const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0) return errno == EEXIST ? NewFile::StoodThere : NewFile::Failed;
    const bool whole = write_all(descriptor, content);
    const bool closed = ::close(descriptor) == 0;
    if (whole && closed) return NewFile::Made;
    ::unlink(path.c_str());
    return NewFile::Failed;
}
