#include "platform/program.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

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

// The child is forked twice, so that nobody has to wait for the program that was started.
static bool start_detached(const char* file, const char* argument, const std::string& working_folder) {
    const pid_t child = ::fork();
    if (child < 0) return false;
    if (child == 0) {
        ::setsid();
        const pid_t grandchild = ::fork();
        if (grandchild != 0) ::_exit(grandchild < 0 ? 1 : 0);
        if (!working_folder.empty() && ::chdir(working_folder.c_str()) != 0) ::_exit(127);
        ::execlp(file, file, argument, static_cast<char*>(nullptr));
        ::_exit(127);
    }
    int status = 0;
    return ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
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
