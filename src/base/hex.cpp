#include "base/hex.h"

static int digit_value(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::string qv_clasp_hex_encode(const std::uint8_t* bytes, std::size_t count) {
    static constexpr char DIGITS[] = "0123456789abcdef";
    std::string text(count * 2, '0');
    for (std::size_t i = 0; i < count; ++i) {
        text[2 * i] = DIGITS[bytes[i] >> 4];
        text[2 * i + 1] = DIGITS[bytes[i] & 15U];
    }
    return text;
}

bool qv_clasp_hex_decode_into(std::string_view text, std::uint8_t* bytes, std::size_t count) {
    if (text.size() % 2 != 0 || text.size() / 2 != count) return false;
    for (std::size_t i = 0; i < count; ++i) {
        const int high = digit_value(text[2 * i]);
        const int low = digit_value(text[2 * i + 1]);
        if (high < 0 || low < 0) return false;
        bytes[i] = static_cast<std::uint8_t>(high * 16 + low);
    }
    return true;
}

Bytes qv_clasp_hex_decode(std::string_view text) {
    Bytes bytes(text.size() / 2);
    if (!qv_clasp_hex_decode_into(text, bytes.data(), bytes.size())) bytes.clear();
    return bytes;
}
