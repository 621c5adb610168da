// Folding the rows of a snapshot into one entry for each person, with what the local and the remote paymail
// directories know of him. Blocks on the network, without the wallet mutex.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "index/token_walk.h"

// What a snapshot has read of the wallet at its start.
struct SnapshotWallet {
    std::set<Hash160> own_hashes;
    std::string identity_pub;  // lower case
    std::string ord_address;   // the current ordinal address; empty in a wallet without a mnemonic
    std::string scope;
    std::uint64_t generation = 0;

    bool owns(const HolderTxo& row) const {
        return own_hashes.count(row.owner_hash) > 0 || (!ord_address.empty() && row.owner == ord_address);
    }
};

struct HolderEntry {
    std::string lots;         // normalised, never "0"
    std::string pubkey;       // lower case; may be empty, as the three after it
    std::string alias;        // lower case
    std::string pay_address;  // the directory's payment address
    std::string owner;        // the first address seen
    bool wallet_owned = false;
    bool token_address = false;  // known for receiving tokens, not payments
};

// One entry for each public key, or for each owner without one, in the order of the rows. Each owner is asked
// of the remote directory once. False if the wallet's generation moves meanwhile.
bool aggregate_holders(const std::vector<HolderTxo>& rows, const SnapshotWallet& wallet,
                       std::vector<HolderEntry>& entries_out);
