// The digests that keys, addresses and transactions are made of, over OpenSSL. Pure; a failure of the library
// gives false or an all-zero digest, which no caller takes for an address.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "base/bytes.h"
#include "wallet/secret.h"

Hash256 sha256(const std::uint8_t* bytes, std::size_t count);
Hash256 sha256(const Bytes& bytes);
// SHA-256 of SHA-256.
Hash256 double_sha256(const std::uint8_t* bytes, std::size_t count);
Hash256 double_sha256(const Bytes& bytes);
// RIPEMD-160 of SHA-256.
Hash160 hash160(const std::uint8_t* bytes, std::size_t count);

// HMAC-SHA-512 of `data` under `key` into 64 bytes; false, with `digest` wiped, if it fails or has another
// length.
bool hmac_sha512(const std::uint8_t* key, std::size_t key_size, const std::uint8_t* data,
                 std::size_t data_size, SecretBytes<64>& digest);
