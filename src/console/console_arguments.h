// The command line of the console program. Pure.
#pragma once

#include <string>
#include <vector>

enum class ConsoleCommand { Connect, Unbind, Status, Tokens, Snapshot, Preview, Pay };

struct ConsoleRequest {
    ConsoleCommand command = ConsoleCommand::Status;
    std::string token;
    std::string amount;  // as typed in the window
    std::vector<std::string> excluded;
    bool yes = false;
    bool json = false;
};

// Reads the arguments behind the program's name. False for wrong usage, with `usage_out` the lines that tell
// it.
bool parse_console_arguments(const std::vector<std::string>& arguments, ConsoleRequest& request_out,
                             std::string& usage_out);

// The usage line of one command.
std::string usage_line(ConsoleCommand command);
