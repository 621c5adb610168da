// Coins that sibling applications of the family have set aside: their reserve files and offer locks under the
// data root. A missing or unreadable file reserves nothing. Callers hold the wallet mutex.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>

// What the three reserve files and the offer locks say at one moment.
struct SiblingReserves {
    std::unordered_set<std::string> keys;  // lower-case txid, "_", output number
};
// Reads the files anew; once for each collection of coins, which takes no longer than the reading.
SiblingReserves read_sibling_reserves();
bool is_reserved_by_sibling(const SiblingReserves& reserves, std::string_view txid, std::uint32_t vout);
// Drops the offer locks whose coin is spent, and rewrites that file if any was dropped.
void prune_offer_locks();
