// Coins that sibling applications of the family have set aside: their reserve files and offer locks under the
// data root. Read anew for each question; a missing or unreadable file reserves nothing. Callers hold the
// wallet mutex.
#pragma once

#include <cstdint>
#include <string_view>

// The coin stands in one of the three reserve files or in the offer locks.
bool is_reserved_by_sibling(std::string_view txid, std::uint32_t vout);
// Drops the offer locks whose coin is spent, and rewrites that file if any was dropped.
void prune_offer_locks();
