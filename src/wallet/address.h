// Base58Check addresses of main net (version byte 0) and the pay-to-public-key-hash script. Pure.
#pragma once

#include <string>
#include <string_view>

#include "base/bytes.h"

// The address of a hash160.
std::string qv_clasp_address_from_hash160(const Hash160& hash160);
// Decodes a text of 26 to 35 characters; false for any other character, length, version or checksum, with
// `hash160_out` unspecified.
bool qv_clasp_address_to_hash160(std::string_view address, Hash160& hash160_out);
// The address of a compressed public key in hexadecimal (66 characters); empty on bad input.
std::string qv_clasp_address_from_pub(std::string_view pub_hex);

// The 25 bytes OP_DUP OP_HASH160 <hash160> OP_EQUALVERIFY OP_CHECKSIG.
Bytes qv_clasp_p2pkh_script(const Hash160& hash160);
// True, with the hash, if the script is exactly that form.
bool p2pkh_script_hash(const Bytes& script, Hash160& hash160_out);
