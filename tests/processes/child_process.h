// A process of the wallet library beside the test, driven line by line. It is killed with the object.
#pragma once

#include <sys/types.h>

#include <string>

#include "base/settings.h"
#include "tests/support/test_home.h"

class ChildProcess {
 public:
    // On the data folder of the home, as the installation `instance`; its reports go to "<folder>/NAME.log".
    ChildProcess(const TestHome& home, const Settings& endpoints, const std::string& name);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    void tell(const std::string& command) const;
    // The next line of its answers; false if none came in time, or the process has ended.
    bool hear(std::string& answer, int timeout_ms = 120'000);
    // Both.
    std::string ask(const std::string& command);
    void kill();

    pid_t pid() const { return pid_; }
    const std::string& log_path() const { return log_path_; }

 private:
    pid_t pid_ = -1;
    int to_child_ = -1;
    int from_child_ = -1;
    std::string pending_;
    std::string log_path_;
};
