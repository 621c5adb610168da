#include "platform/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

FileLock::FileLock(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (descriptor < 0) return;
    int result = 0;
    // Open file description locks would do as well; flock has the meaning wanted here: whole, exclusive,
    // blocking.
    do {
        result = ::flock(descriptor, LOCK_EX);
    } while (result != 0 && errno == EINTR);
    if (result != 0) {
        ::close(descriptor);
        return;
    }
    handle_ = descriptor;
    held_ = true;
}

FileLock::~FileLock() {
    if (handle_ < 0) return;
    ::flock(static_cast<int>(handle_), LOCK_UN);
    ::close(static_cast<int>(handle_));
}
