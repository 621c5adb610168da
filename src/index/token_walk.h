// Walking a token forward over the chain, from an output to those that its spender made. The walks run on the
// caller's thread without the wallet mutex, and stop within one step when the generation moves (zero: never).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "wallet/wallet_session.h"

// One holding as a source sees it.
struct HolderTxo {
    std::string outpoint;  // empty for an indexer row, as the five after it
    std::string txid;
    std::uint32_t vout = 0;
    std::string lots;  // normalised
    std::string op;
    std::string name;
    std::string icon;
    std::string owner;  // P2PKH address
    Hash160 owner_hash{};
};

// The unspent outputs of a token, as far as 256 steps reach.
void qv_clasp_trace_token_rows(const std::string& token_id, std::vector<HolderTxo>& rows,
                               std::uint64_t generation);
// The same for outputs of watch addresses only, within 48 steps; climbs to the deploy only if `climb` is set.
void qv_clasp_trace_owned(const std::string& origin, const std::vector<std::string>& watch,
                          std::vector<LocalOrd>& found_inout, bool climb, std::uint64_t generation);
