// Public keys and signatures on secp256k1, over OpenSSL. Signatures are low-S; the nonce is drawn by OpenSSL,
// so two signatures of one digest differ. Pure; intermediate numbers are cleared and freed on every path.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/bytes.h"
#include "wallet/secret.h"

// The compressed public key, as 66 hexadecimal characters, of a private key of 64; false, with empty output,
// for a text of another length or a number that is no key.
bool qv_clasp_pub_from_priv(std::string_view priv_hex, std::string& pub_hex_out);

// The same on bytes: the compressed point of a private key, and the sum of a key and a number below the
// order, modulo the order. False, with zero outputs, where a key would be zero or not below the order.
bool compressed_public_key(const SecretBytes<32>& priv, std::array<std::uint8_t, 33>& pub_out);
bool add_to_private_key(const SecretBytes<32>& priv, const std::uint8_t* number32, SecretBytes<32>& sum_out);

// The DER form of a signature over a 32-byte digest.
bool qv_clasp_ecdsa_sign(std::string_view priv_hex, const Hash256& digest32, Bytes& der_out);

// The same as r and s, 32 bytes each.
bool qv_clasp_ecdsa_sign_compact(std::string_view priv_hex, const Hash256& digest32,
                                 std::array<std::uint8_t, 64>& rs_out);

// The digest of a "Bitcoin Signed Message": double SHA-256 of the byte 24, the magic text, the length and the
// text. The length is one byte below 253, otherwise the byte 253 and two bytes, low byte first; no longer
// form exists.
Hash256 bitcoin_message_digest(std::string_view text);
