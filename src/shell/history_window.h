// The payout history: the ledger of the bound wallet as a table and a chart, with an export. It reads the
// ledger and never writes it.
#pragma once

#include "shell/shell.h"

// Opens the window, or brings the open one to the front.
void open_history_window(Shell& shell);
// Reads the ledger again for a window that is open.
void reload_history(Shell& shell);
