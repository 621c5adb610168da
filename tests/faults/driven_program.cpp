#include "tests/faults/driven_program.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "base/json_file.h"

namespace {

constexpr std::chrono::seconds LONGEST_RUN{120};
constexpr int HUNG = -2;

std::vector<std::string> environment_with(const std::map<std::string, std::string>& changes) {
    std::vector<std::string> all;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        if (!changes.contains(text.substr(0, text.find('=')))) all.push_back(text);
    }
    for (const auto& [name, value] : changes) all.push_back(name + "=" + value);
    return all;
}

std::vector<char*> pointers_to(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

// The status of waitpid; a program that hangs is killed.
int wait_for(pid_t program, bool& hung) {
    int status = 0;
    const auto end = std::chrono::steady_clock::now() + LONGEST_RUN;
    hung = false;
    while (::waitpid(program, &status, hung ? 0 : WNOHANG) != program) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        hung = std::chrono::steady_clock::now() > end;
        if (hung) ::kill(program, SIGKILL);
    }
    return status;
}

}  // namespace

ProgramEnd run_program(const std::string& settings_path, const std::vector<std::string>& arguments,
                       const std::map<std::string, std::string>& environment,
                       const std::function<void(pid_t)>& started) {
    std::vector<std::string> line{CONSOLE_DRIVER, settings_path};
    line.insert(line.end(), arguments.begin(), arguments.end());
    std::vector<std::string> variables = environment_with(environment);
    const std::string out_path = settings_path + ".out";
    const std::string err_path = settings_path + ".err";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0600);
    pid_t program = 0;
    const int failed = ::posix_spawn(&program, CONSOLE_DRIVER, &actions, nullptr, pointers_to(line).data(),
                                     pointers_to(variables).data());
    posix_spawn_file_actions_destroy(&actions);
    ProgramEnd end;
    if (failed != 0) return end;
    if (started) started(program);
    bool hung = false;
    const int status = wait_for(program, hung);
    end.killed = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    if (WIFEXITED(status)) end.exit_status = WEXITSTATUS(status);
    if (hung) end.exit_status = HUNG;
    read_text_file(out_path, end.out);
    read_text_file(err_path, end.err);
    return end;
}
