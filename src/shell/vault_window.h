// The vault window: the watch-only vaults of the bound wallet, what their addresses hold, and what that would
// pay the present board.
#pragma once

#include "shell/shell.h"

// Opens the window, or brings the open one to the front; without a wallet it says so.
void open_vault_window(Shell& shell);
