// BIP-39 seed and BIP-32 private derivation as pure functions of a mnemonic: the word check, the seed and the
// master, one child step, one path of five elements. What is done with a derived key is the caller's
// business. Sources: BIP-39 (English word list, no pass phrase), BIP-32.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "wallet/secret.h"

inline constexpr std::uint32_t HARDENED = 0x80000000U;

// Five elements; a hardened one has the top bit set.
struct QvClaspKeyPath {
    std::array<std::uint32_t, 5> elements{};
};

struct QvClaspExtKey {
    SecretBytes<32> key;
    SecretBytes<32> chain_code;
    void wipe() {
        key.wipe();
        chain_code.wipe();
    }
};

// Twelve words of the list with the right checksum. Words are separated by blanks and tabs only; capitals
// pass.
bool mnemonic_words_valid(std::string_view mnemonic);

// PBKDF2 with HMAC-SHA-512 over the text byte for byte, salt "mnemonic", 2048 rounds.
bool seed_from_mnemonic(std::string_view mnemonic, SecretBytes<64>& seed);
bool master_from_seed(const SecretBytes<64>& seed, QvClaspExtKey& master);

// One step of private derivation. False, with `child_out` wiped, if the result would be no key.
bool qv_clasp_ckd_priv(const QvClaspExtKey& parent, std::uint32_t element, QvClaspExtKey& child_out);

// The public key of an extended key, compressed.
using PublicKey = std::array<std::uint8_t, 33>;
bool public_key_of(const QvClaspExtKey& key, PublicKey& pub_out);

// The same step for one who knows the parent's public key already: a normal element then costs no curve
// arithmetic.
bool ckd_priv_below(const QvClaspExtKey& parent, const PublicKey& parent_pub, std::uint32_t element,
                    QvClaspExtKey& child_out);

// Several steps, one after the other; every key in between is wiped. False, with `end_out` wiped, if one
// fails.
bool ckd_priv_path(const QvClaspExtKey& start, std::span<const std::uint32_t> elements,
                   QvClaspExtKey& end_out);

// The key as 64 lower-case hexadecimal characters; no copy is made elsewhere.
void private_key_hex(const SecretBytes<32>& key, SecretText& hex_out);
