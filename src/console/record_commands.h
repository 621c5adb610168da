// The commands on the local records: the payout history, the vaults and the notes on holders. They read and
// write files and touch no network; what must be asked of a service comes in as an argument. On the main
// thread. Every answer has all its keys, also after a failure.
#pragma once

#include <string>

#include "console/console_answers.h"
#include "console/console_arguments.h"
#include "records/vault_lookup.h"

// The ledger by token and range; with a CSV file, exports what is listed.
ConsoleAnswer answer_history(const ConsoleRequest& request, const TokenNames& tokens);

// `vault list`, `vault save` and `vault add`.
ConsoleAnswer answer_vaults(const ConsoleRequest& request);
// The same when vaults may not be shown, with the reason.
ConsoleAnswer no_vaults(const std::string& failure);
// `vault value`, from a look-up or from a failure before it (a negative value with a text).
ConsoleAnswer answer_vault_value(const VaultLookupResult& result);
ConsoleAnswer no_vault_value(const std::string& failure);

// Reads the note of the named row of the board, or writes it first.
ConsoleAnswer answer_note(const ConsoleRequest& request, const HolderBoard& board);
ConsoleAnswer no_note(const std::string& failure);
