// Hexadecimal text. Keys, hashes and scripts cross function borders in this form. Pure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/bytes.h"

// Lower-case hexadecimal of the bytes.
std::string qv_clasp_hex_encode(const std::uint8_t* bytes, std::size_t count);
template <typename ByteRange>
std::string qv_clasp_hex_encode(const ByteRange& bytes) {
    return qv_clasp_hex_encode(bytes.data(), bytes.size());
}

// The bytes of a text in either case; empty for an odd length or any other character.
Bytes qv_clasp_hex_decode(std::string_view text);
// The same into a buffer of exactly text.size() / 2 bytes, without a copy elsewhere (for secrets).
bool qv_clasp_hex_decode_into(std::string_view text, std::uint8_t* bytes, std::size_t count);
