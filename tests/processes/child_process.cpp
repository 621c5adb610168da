#include "tests/processes/child_process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/program_settings.h"

ChildProcess::ChildProcess(const TestHome& home, const Settings& endpoints, const std::string& name)
    : log_path_(home.folder() + "/" + name + ".log") {
    const std::string settings_path = home.folder() + "/" + name + ".settings.json";
    EXPECT_TRUE(write_program_settings(settings_path, endpoints));
    const std::string instance = home.folder() + "/" + name;
    int to[2];
    int from[2];
    EXPECT_EQ(::pipe2(to, O_CLOEXEC), 0);
    EXPECT_EQ(::pipe2(from, O_CLOEXEC), 0);
    const int log = ::open(log_path_.c_str(), O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0600);
    pid_ = ::fork();
    if (pid_ == 0) {
        ::dup2(to[0], 0);
        ::dup2(from[1], 1);
        ::dup2(log, 2);
        ::execl(WALLET_PROCESS, WALLET_PROCESS, settings_path.c_str(), instance.c_str(), nullptr);
        ::_exit(127);
    }
    ::close(to[0]);
    ::close(from[1]);
    ::close(log);
    to_child_ = to[1];
    from_child_ = from[0];
}

ChildProcess::~ChildProcess() {
    kill();
    ::close(to_child_);
    ::close(from_child_);
}

void ChildProcess::kill() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
    pid_ = -1;
}

void ChildProcess::tell(const std::string& command) const {
    const std::string line = command + "\n";
    EXPECT_EQ(::write(to_child_, line.data(), line.size()), static_cast<ssize_t>(line.size()));
}

bool ChildProcess::hear(std::string& answer, int timeout_ms) {
    for (;;) {
        const std::size_t end = pending_.find('\n');
        if (end != std::string::npos) {
            answer = pending_.substr(0, end);
            pending_.erase(0, end + 1);
            return true;
        }
        pollfd poll_one{from_child_, POLLIN, 0};
        if (::poll(&poll_one, 1, timeout_ms) <= 0) return false;
        char block[4096];
        const ssize_t count = ::read(from_child_, block, sizeof block);
        if (count <= 0) return false;
        pending_.append(block, static_cast<std::size_t>(count));
    }
}

std::string ChildProcess::ask(const std::string& command) {
    std::string answer;
    tell(command);
    EXPECT_TRUE(hear(answer)) << "no answer to: " << command;
    return answer;
}
