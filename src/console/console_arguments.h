// The command line of the console program. Pure.
#pragma once

#include <string>
#include <vector>

#include "records/payout_history.h"

enum class ConsoleCommand {
    Connect,
    Unbind,
    Status,
    Tokens,
    Snapshot,
    Preview,
    Pay,
    History,
    VaultList,
    VaultSave,
    VaultAdd,
    VaultValue,
    Note,
    Update,
};

struct ConsoleRequest {
    ConsoleCommand command = ConsoleCommand::Status;
    std::string token;
    std::string amount;  // as typed in the window
    std::vector<std::string> excluded;
    std::string name;                // of a vault or of a holder
    std::vector<std::string> texts;  // addresses of a vault; a note, if one is to be written
    std::size_t range = ALL_TIME;    // in HISTORY_RANGES
    std::string csv_file;            // empty: no export
    bool yes = false;
    bool json = false;
};

// Reads the arguments behind the program's name. False for wrong usage, with `usage_out` the lines that tell
// it.
bool parse_console_arguments(const std::vector<std::string>& arguments, ConsoleRequest& request_out,
                             std::string& usage_out);

// The usage line of one command.
std::string usage_line(ConsoleCommand command);
