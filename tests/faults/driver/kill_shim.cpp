// Ends this process with SIGKILL at one of its file operations under the family's folder. The linker takes
// these for the system's own calls; those stand behind them. Read from the environment:
//   KILL_AT      the number of the operation, from 1; 0 or nothing ends nothing
//   KILL_HALF    "1": a write still leaves the first half of its bytes
//   KILL_REPORT  a file that gets one line for each operation: its kind and its path
#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr const char* FAMILY_FOLDER = "/Quorvelle/";
std::atomic<long> operations{0};

template <typename Function>
Function real(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

bool is_ours(const char* path) {
    return path && std::strstr(path, FAMILY_FOLDER);
}

bool is_ours(int descriptor, char* path, std::size_t size) {
    char link[64];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    const ssize_t length = ::readlink(link, path, size - 1);
    if (length <= 0) return false;
    path[length] = '\0';
    return is_ours(path);
}

void report(const char* kind, const char* path) {
    const char* file = std::getenv("KILL_REPORT");
    if (!file) return;
    const long descriptor =
        ::syscall(SYS_openat, AT_FDCWD, file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (descriptor < 0) return;
    char line[4096];
    const int length = std::snprintf(line, sizeof line, "%s %s\n", kind, path);
    ::syscall(SYS_write, descriptor, line, static_cast<std::size_t>(length));
    ::syscall(SYS_close, descriptor);
}

// True if this is the last operation of the process.
bool is_the_moment(const char* kind, const char* path) {
    report(kind, path);
    const char* wish = std::getenv("KILL_AT");
    return ++operations == (wish ? std::atol(wish) : 0);
}

[[noreturn]] void end() {
    ::kill(::getpid(), SIGKILL);
    while (true) ::pause();
}

void before(const char* kind, const char* path) {
    if (is_ours(path) && is_the_moment(kind, path)) end();
}

bool writes_half() {
    const char* wish = std::getenv("KILL_HALF");
    return wish && *wish == '1';
}

bool opens_for_writing(int flags) {
    return (flags & (O_WRONLY | O_RDWR | O_CREAT | O_TRUNC)) != 0;
}

void before_fopen(const char* path, const char* mode) {
    if (std::strpbrk(mode, "wa+")) before(std::strchr(mode, 'w') ? "truncate-open" : "open", path);
}

int open_with(const char* name, const char* path, int flags, mode_t mode) {
    if (opens_for_writing(flags)) before("open", path);
    return real<int (*)(const char*, int, ...)>(name)(path, flags, mode);
}

}  // namespace

extern "C" {

FILE* fopen(const char* path, const char* mode) {
    before_fopen(path, mode);
    return real<FILE* (*)(const char*, const char*)>("fopen")(path, mode);
}
FILE* fopen64(const char* path, const char* mode) {
    before_fopen(path, mode);
    return real<FILE* (*)(const char*, const char*)>("fopen64")(path, mode);
}

int open(const char* path, int flags, ...) {
    std::va_list arguments;
    va_start(arguments, flags);
    const auto mode = static_cast<mode_t>(va_arg(arguments, unsigned));
    va_end(arguments);
    return open_with("open", path, flags, mode);
}
int open64(const char* path, int flags, ...) {
    std::va_list arguments;
    va_start(arguments, flags);
    const auto mode = static_cast<mode_t>(va_arg(arguments, unsigned));
    va_end(arguments);
    return open_with("open64", path, flags, mode);
}

ssize_t write(int descriptor, const void* bytes, size_t size) {
    static const auto write_on = real<ssize_t (*)(int, const void*, size_t)>("write");
    char path[4096];
    if (is_ours(descriptor, path, sizeof path) && is_the_moment("write", path)) {
        if (writes_half()) write_on(descriptor, bytes, size / 2);
        end();
    }
    return write_on(descriptor, bytes, size);
}
ssize_t writev(int descriptor, const struct iovec* parts, int count) {
    static const auto write_on = real<ssize_t (*)(int, const struct iovec*, int)>("writev");
    char path[4096];
    if (is_ours(descriptor, path, sizeof path) && is_the_moment("write", path)) {
        // All parts but the last, and half of that.
        if (writes_half() && count > 1) write_on(descriptor, parts, count - 1);
        if (writes_half() && count > 0) {
            const struct iovec& last = parts[count - 1];
            ::syscall(SYS_write, descriptor, last.iov_base, last.iov_len / 2);
        }
        end();
    }
    return write_on(descriptor, parts, count);
}

int rename(const char* from, const char* to) noexcept {
    before("rename", to);
    return real<int (*)(const char*, const char*)>("rename")(from, to);
}
int unlink(const char* path) noexcept {
    before("remove", path);
    return real<int (*)(const char*)>("unlink")(path);
}
int remove(const char* path) noexcept {
    before("remove", path);
    return real<int (*)(const char*)>("remove")(path);
}
int truncate(const char* path, off_t size) noexcept {
    before("truncate", path);
    return real<int (*)(const char*, off_t)>("truncate")(path, size);
}
int truncate64(const char* path, off64_t size) noexcept {
    before("truncate", path);
    return real<int (*)(const char*, off64_t)>("truncate64")(path, size);
}
int mkdir(const char* path, mode_t mode) noexcept {
    before("mkdir", path);
    return real<int (*)(const char*, mode_t)>("mkdir")(path, mode);
}
int fsync(int descriptor) {
    char path[4096];
    if (is_ours(descriptor, path, sizeof path) && is_the_moment("fsync", path)) end();
    return real<int (*)(int)>("fsync")(descriptor);
}

}  // extern "C"
