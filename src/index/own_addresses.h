// Every address that the wallet treats as its own, beyond those it spends from, and the few other questions
// that the index asks of the wallet. Callers hold the wallet mutex unless stated; a change of wallet between
// two calls is theirs to notice.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "wallet/wallet_session.h"

struct Bsv20Meta;

// Spend addresses, current address and identity, the ordinal chain up to its counter, and the addresses of
// remembered ordinals that are not hidden; each once.
std::vector<std::string> qv_clasp_own_addresses();
// The addresses that a sweep asks the indexer about: current address and identity, the ordinal chain, and
// five change addresses of the ordinal account.
std::vector<std::string> qv_clasp_watch_addresses();

// What the operations of the index answer when there is no wallet to work for.
inline constexpr const char* ERROR_NOT_CONNECTED = "error: connect a Clasp wallet first.";
inline constexpr const char* ERROR_NO_WALLET = "error: no Clasp wallet.";
inline constexpr const char* ERROR_WALLET_CHANGED = "error: wallet changed.";

// A wallet is bound, loads, and is a mnemonic wallet. Takes the wallet mutex itself.
bool qv_clasp_wallet_ready();
// The generation is no longer the one noted; a noted 0 never counts as moved. Needs no mutex.
bool generation_moved(std::uint64_t noted);

// Addresses under their hash160; a text that is no address is left out. Pure.
using AddressesByHash = std::map<Hash160, std::string>;
AddressesByHash addresses_by_hash(const std::vector<std::string>& addresses);
// A token output on the chain as a remembered ordinal; `token_id` is the record's own `id`, perhaps empty. An
// output that was only found is not one that this wallet made. Pure.
LocalOrd token_ord(const std::string& txid, std::uint32_t vout, const Bsv20Meta& meta,
                   const std::string& address);
