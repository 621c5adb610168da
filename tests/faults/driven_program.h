// The console program as a process of its own, on the endpoints of a sandbox.
#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "base/settings.h"

struct ProgramEnd {
    bool killed = false;
    int exit_status = -1;
    std::string out;
    std::string err;
};

// Writes the endpoints to a file for the program to read.
void write_program_settings(const std::string& path, const Settings& settings);

// Runs it to its end; `started` is told its process id at once. One that has not ended after two minutes is
// killed, and its exit status is -2.
ProgramEnd run_program(const std::string& settings_path, const std::vector<std::string>& arguments,
                       const std::map<std::string, std::string>& environment,
                       const std::function<void(pid_t)>& started = {});
