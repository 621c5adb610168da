#include "platform/program.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

std::string program_folder() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    return error || !program.has_parent_path() ? "." : program.parent_path().string();
}

bool bring_window_forward(const std::string&) {
    return false;
}

// In the child, between fork and exec: only calls that are safe there. `report` tells the parent of a
// failure.
[[noreturn]] static void become_program(const char* file, const char* argument, const char* working_folder,
                                        int report) {
    const int nowhere = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    if (nowhere >= 0) ::dup2(nowhere, STDIN_FILENO);
    if (*working_folder == '\0' || ::chdir(working_folder) == 0) {
        ::execlp(file, file, argument, static_cast<char*>(nullptr));
    }
    const char failed = 1;
    const ssize_t written = ::write(report, &failed, 1);
    ::_exit(written == 1 ? 127 : 126);
}

static bool reap(pid_t child) {
    int status = 0;
    pid_t ended = 0;
    do {
        ended = ::waitpid(child, &status, 0);
    } while (ended < 0 && errno == EINTR);
    return ended == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// True when the pipe ends without a byte: the exec has closed it.
static bool nothing_reported(int descriptor) {
    char byte = 0;
    ssize_t count = 0;
    do {
        count = ::read(descriptor, &byte, 1);
    } while (count < 0 && errno == EINTR);
    return count == 0;
}

// The child is forked twice, so that nobody has to wait for the program that was started.
static bool start_detached(const char* file, const char* argument, const std::string& working_folder) {
    int report[2];
    if (::pipe2(report, O_CLOEXEC) != 0) return false;
    const pid_t child = ::fork();
    if (child == 0) {
        ::setsid();
        const pid_t grandchild = ::fork();
        if (grandchild != 0) ::_exit(grandchild < 0 ? 1 : 0);
        become_program(file, argument, working_folder.c_str(), report[1]);
    }
    ::close(report[1]);
    const bool started = child > 0 && reap(child) && nothing_reported(report[0]);
    ::close(report[0]);
    return started;
}

bool start_program(const std::string& path, const std::string& working_folder) {
    if (::access(path.c_str(), X_OK) != 0) return false;
    return start_detached(path.c_str(), nullptr, working_folder);
}

bool open_page(const std::string& url) {
    return start_detached("xdg-open", url.c_str(), "");
}

bool stdout_is_terminal() {
    return ::isatty(STDOUT_FILENO) == 1;
}
