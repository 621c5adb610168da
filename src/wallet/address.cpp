#include "wallet/address.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "base/hex.h"
#include "wallet/hashes.h"

namespace {

constexpr std::string_view ALPHABET = "123456789ABCDEFGHJKLMNPQRSTUVWXYZabcdefghijkmnopqrstuvwxyz";
constexpr std::size_t HASH_END = 21;  // the version byte and the hash
constexpr std::size_t PAYLOAD_SIZE = 25;
constexpr std::uint8_t MAIN_NET_VERSION = 0;
constexpr std::uint8_t OP_DUP = 0x76;
constexpr std::uint8_t OP_HASH160 = 0xa9;
constexpr std::uint8_t PUSH_20 = 0x14;
constexpr std::uint8_t OP_EQUALVERIFY = 0x88;
constexpr std::uint8_t OP_CHECKSIG = 0xac;

using Payload = std::array<std::uint8_t, PAYLOAD_SIZE>;

std::array<std::uint8_t, 4> checksum(const Payload& payload) {
    const Hash256 digest = double_sha256(payload.data(), HASH_END);
    return {digest[0], digest[1], digest[2], digest[3]};
}

// Big-endian division of the whole payload by 58; the remainder is returned.
std::size_t divide_by_58(Payload& number) {
    std::uint32_t remainder = 0;
    for (std::uint8_t& byte : number) {
        const std::uint32_t value = remainder * 256 + byte;
        byte = static_cast<std::uint8_t>(value / 58);
        remainder = value % 58;
    }
    return remainder;
}

// The payload as a number, its lowest 32 bits first; the highest 8 have the last place to themselves.
using Number = std::array<std::uint32_t, PAYLOAD_SIZE / 4 + 1>;

// number * 58 + digit; false if it does not fit into a payload.
bool multiply_by_58(Number& number, std::uint32_t digit) {
    std::uint64_t carry = digit;
    for (std::uint32_t& part : number) {
        const std::uint64_t value = std::uint64_t{part} * 58 + carry;
        part = static_cast<std::uint32_t>(value);
        carry = value >> 32;
    }
    return number.back() <= 0xFF;
}

Payload payload_of(const Number& number) {
    Payload payload{};
    for (std::size_t i = 0; i < PAYLOAD_SIZE; ++i)
        payload[PAYLOAD_SIZE - 1 - i] = static_cast<std::uint8_t>(number[i / 4] >> (8 * (i % 4)));
    return payload;
}

// The value of each character; 58 for one that is no digit.
constexpr std::array<std::uint8_t, 256> digit_values() {
    std::array<std::uint8_t, 256> values{};
    values.fill(58);
    for (std::size_t digit = 0; digit < ALPHABET.size(); ++digit)
        values[static_cast<std::uint8_t>(ALPHABET[digit])] = static_cast<std::uint8_t>(digit);
    return values;
}
constexpr std::array<std::uint8_t, 256> DIGIT_VALUES = digit_values();

bool is_zero(const Payload& number) {
    return std::all_of(number.begin(), number.end(), [](std::uint8_t byte) { return byte == 0; });
}

template <typename Range, typename Value>
std::size_t leading_count(const Range& range, Value value) {
    const auto end = std::find_if(range.begin(), range.end(), [value](auto item) { return item != value; });
    return static_cast<std::size_t>(end - range.begin());
}

}  // namespace

std::string qv_clasp_address_from_hash160(const Hash160& hash160) {
    Payload payload{MAIN_NET_VERSION};
    std::copy(hash160.begin(), hash160.end(), payload.begin() + 1);
    const auto sum = checksum(payload);
    std::copy(sum.begin(), sum.end(), payload.begin() + HASH_END);

    const std::size_t leading_zeros = leading_count(payload, std::uint8_t{0});
    std::string digits;
    while (!is_zero(payload)) digits.push_back(ALPHABET[divide_by_58(payload)]);
    digits.append(leading_zeros, ALPHABET[0]);
    std::reverse(digits.begin(), digits.end());
    return digits;
}

bool qv_clasp_address_to_hash160(std::string_view address, Hash160& hash160_out) {
    if (address.size() < 26 || address.size() > 35) return false;
    Number number{};
    for (const char c : address) {
        const std::uint8_t digit = DIGIT_VALUES[static_cast<std::uint8_t>(c)];
        if (digit == 58 || !multiply_by_58(number, digit)) return false;
    }
    const Payload payload = payload_of(number);
    // A number that is shorter than its place must be filled up by exactly as many leading "1".
    if (leading_count(address, ALPHABET[0]) != leading_count(payload, std::uint8_t{0})) return false;
    if (payload[0] != MAIN_NET_VERSION) return false;
    const auto sum = checksum(payload);
    if (!std::equal(sum.begin(), sum.end(), payload.begin() + HASH_END)) return false;
    std::copy(payload.begin() + 1, payload.begin() + HASH_END, hash160_out.begin());
    return true;
}

std::string qv_clasp_address_from_pub(std::string_view pub_hex) {
    const Bytes pub = qv_clasp_hex_decode(pub_hex);
    if (pub.size() != 33) return "";
    return qv_clasp_address_from_hash160(hash160(pub.data(), pub.size()));
}

Bytes qv_clasp_p2pkh_script(const Hash160& hash160) {
    Bytes script{OP_DUP, OP_HASH160, PUSH_20};
    script.insert(script.end(), hash160.begin(), hash160.end());
    script.push_back(OP_EQUALVERIFY);
    script.push_back(OP_CHECKSIG);
    return script;
}

bool p2pkh_script_hash(const Bytes& script, Hash160& hash160_out) {
    if (script.size() != 25) return false;
    Hash160 hash{};
    std::copy(script.begin() + 3, script.begin() + 23, hash.begin());
    if (script != qv_clasp_p2pkh_script(hash)) return false;
    hash160_out = hash;
    return true;
}
