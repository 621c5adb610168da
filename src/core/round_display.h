// What the main window shows of a round: the token box, the wallet card, the board with its summary. Computes
// the texts and hands them to the window. On the window's thread; reads the ledger and the notes once for
// each redraw of the board.
#pragma once

#include <string>
#include <vector>

#include "core/round.h"

// The token that Snapshot takes: the origin edit, trimmed, if it holds a full token id, else the selected
// token of the box, else empty.
std::string selected_token_id(const Round& round);
// Writes the selected token id to the origin edit, if there are both.
void write_selected_origin(Round& round);

// "name  12 lots", "name  minted" or "name  ".
std::string token_item_text(const TokenRow& token);
// Fills the token box; keeps the typed token selected, otherwise selects the first, and fills a short origin
// edit.
void refresh_token_list(Round& round);

// The label and the balance of the wallet card.
WalletSummary wallet_summary(const RoundWallet& wallet);
// "Connected" or "Connect".
std::string connect_caption(const RoundWallet& wallet);
// Shows the summary and the Connect button's caption, and starts a status worker if a wallet is connected and
// none is running.
void refresh_wallet_summary(Round& round);

// The lines of the board list, in board order.
std::vector<BoardLine> board_lines(const RoundState& state);
// Resizes and clears the exclusions if their number differs from the rows'.
void fit_excluded(RoundState& state);
// Shows the board and the summary pane.
void refresh_board(Round& round);
