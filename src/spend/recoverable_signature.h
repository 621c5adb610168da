// Bitcoin signed messages whose signature tells the signer's public key (SEC 1, 4.1.6). Pure apart from the
// nonce of a signature.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/bytes.h"

// The compressed public key, as 66 hexadecimal characters, that a signature of r and s belongs to under a
// recovery id from 0 to 3; empty if it recovers to none.
std::string recover_public_key(const Hash256& digest32, const std::array<std::uint8_t, 64>& rs,
                               int recovery_id);

// A signed message of 65 bytes (31 plus the recovery id, r, s) in Base64; empty on failure. `pub_hex` is the
// signer's compressed public key.
std::string sign_recoverable_message(std::string_view priv_hex, std::string_view pub_hex,
                                     std::string_view text);
