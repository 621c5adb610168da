// The console program as a process of its own, on the endpoints of a sandbox.
#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tests/support/program_settings.h"

struct ProgramEnd {
    bool killed = false;
    int exit_status = -1;
    std::string out;
    std::string err;
};

// Runs it to its end; `started` is told its process id at once. One that has not ended after two minutes is
// killed, and its exit status is -2.
ProgramEnd run_program(const std::string& settings_path, const std::vector<std::string>& arguments,
                       const std::map<std::string, std::string>& environment,
                       const std::function<void(pid_t)>& started = {});
