// The export of the rows that the history shows: its question, the choice of a file, and what became of it.
#pragma once

#include "records/payout_history.h"
#include "shell/shell.h"

// `owner` is the window that the choice of a file belongs to. Handles messages while it asks: `owner` may be
// gone when it returns.
void export_payouts(Shell& shell, HWND owner, const std::vector<PayoutRow>& rows);

// The tokens that the token list knows, by id and name.
TokenNames token_names(const RoundState& state);
