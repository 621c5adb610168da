// The one window for text that must be read or confirmed, with links to transactions.
#pragma once

#include "shell/shell.h"

// Replaces an earlier one. Without `confirm` true at once; with it the main window is disabled and messages
// are handled here until the window has gone, and only the primary button gives true.
bool show_message_window(Shell& shell, const MessageWindow& message);

// The transaction's page in the browser; nothing for a text that is no transaction id.
void open_tx_page(const std::string& txid);
