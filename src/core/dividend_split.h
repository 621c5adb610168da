// The split: from the board and the typed pot to the frozen list. Runs on the window's thread, where the
// wallet calls may block it. Writes nothing to disk.
#pragma once

#include <cstddef>
#include <string>

#include "core/round_state.h"
#include "core/round_wallet.h"

// How much of the amount edit is read.
inline constexpr std::size_t MOST_AMOUNT_CHARACTERS = 63;

// Splits the typed amount over the board's in-market rows, writes the frozen list and its figures, and fills
// `text` with the preview or with what to tell the user. True if at least one holder would be paid. After a
// failure `preview` is empty and the frozen figures are as before; a split of only skips is false too, but
// frozen.
bool compute_preview(RoundState& state, const std::string& amount_text, const RoundWallet& wallet,
                     std::string& text_out);
