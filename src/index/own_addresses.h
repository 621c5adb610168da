// Every address that the wallet treats as its own, beyond those it spends from. Callers hold the wallet
// mutex.
#pragma once

#include <string>
#include <vector>

// Spend addresses, current address and identity, the ordinal chain up to its counter, and the addresses of
// remembered ordinals that are not hidden; each once.
std::vector<std::string> qv_clasp_own_addresses();
// The addresses that a sweep asks the indexer about: current address and identity, the ordinal chain, and
// five change addresses of the ordinal account.
std::vector<std::string> qv_clasp_watch_addresses();
