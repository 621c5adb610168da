// The signature hash of the network (BIP-143 with the fork flag), and signing with it. Only the hash type
// SIGHASH_ALL with the fork flag (0x41) is known here; the chain refuses every other. Pure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/bytes.h"
#include "sandbox/chain.h"
#include "sandbox/keys.h"

namespace sandbox {

inline constexpr std::uint32_t SIGHASH_ALL_FORKID = 0x41;

// The parts of the hash that all inputs of a transaction share.
struct SighashParts {
    Hash256 prevouts{};
    Hash256 sequences{};
    Hash256 outputs{};
};
SighashParts sighash_parts(const Transaction& tx);

// The digest that an input signs: `script_code` is the whole locking script of the output that it spends. All
// four bytes of the hash type go into the preimage.
Hash256 signature_hash(const Transaction& tx, const SighashParts& parts, std::size_t input,
                       const Bytes& script_code, std::int64_t sats,
                       std::uint32_t hash_type = SIGHASH_ALL_FORKID);

// Signs the inputs of a transaction in their order, one coin and one key each, and fills raw and txid.
struct SpentCoin {
    Coin coin;
    KeyPair key;
};
void add_input(Transaction& tx, const Coin& coin);
void sign_transaction(Transaction& tx, const std::vector<SpentCoin>& spent);

}  // namespace sandbox
