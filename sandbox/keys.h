// Keys of the sandbox: BIP-39 and BIP-32 over libsecp256k1 and OpenSSL's digests, addresses, signatures and
// their checks. Written apart from the product's own key code, so that each can find the other's mistakes.
// Pure; a key or a path that cannot be is a mistake of the caller and throws, while checks of foreign bytes
// answer false.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/bytes.h"

namespace sandbox {

struct KeyPair {
    Bytes priv;  // 32 bytes
    Bytes pub;   // 33 bytes
    Hash160 hash160{};
    std::string address;
};

Hash256 sha256d(const Bytes& bytes);
Hash160 hash160_of(const Bytes& bytes);
std::string address_of(const Hash160& hash160);
bool hash160_of_address(std::string_view address, Hash160& out);
Bytes p2pkh_script(const Hash160& hash160);

// Twelve words from 16 bytes of entropy.
std::string mnemonic_from_entropy(const std::array<std::uint8_t, 16>& entropy);
// A key of the wallet on a path such as "m/44'/236'/1'/0/0".
KeyPair derive(const std::string& mnemonic, const std::string& path);
KeyPair key_from_priv(const Bytes& priv);

// DER signature (low S, deterministic) and its check, which refuses high S and any DER but the strict form.
Bytes sign_der(const KeyPair& key, const Hash256& digest);
bool verify_der(const Bytes& pub, const Hash256& digest, const Bytes& der);
// The two halves of that check which a node reports apart. DER here is without the hash-type byte.
bool is_strict_der(const Bytes& der);
bool has_low_s(const Bytes& der);
// A point of the curve, as 33 or 65 bytes.
bool is_public_key(const Bytes& pub);
// r and s as 64 bytes, as the paymail claim carries them.
Bytes sign_compact(const KeyPair& key, const Hash256& digest);
bool verify_compact(const Bytes& pub, const Hash256& digest, const Bytes& rs64);
// The public key of a 65-byte recoverable signature (header 31 plus the recovery id); empty if it does not
// recover.
Bytes recover_pub(const Hash256& digest, const Bytes& signature65);
// The digest of a "Bitcoin Signed Message".
Hash256 message_digest(std::string_view text);

}  // namespace sandbox
