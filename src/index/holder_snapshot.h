// The snapshot of a token's holders: who holds how many lots now, which are the wallet's own, and where each
// holder would be paid. Blocks on the network, without the wallet mutex; the wallet may be switched
// meanwhile, and the snapshot then ends with "error: wallet changed.".
#pragma once

#include <string>

#include "index/holder_board.h"

// Empty on success, otherwise a text that begins with "error: ", after which the board must not be shown.
std::string qv_clasp_snapshot_holders(const std::string& token_id, HolderBoard& board);
