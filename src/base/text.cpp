#include "base/text.h"

#include <algorithm>
#include <cstdint>
#include <limits>

char ascii_lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string ascii_lower(std::string_view text) {
    std::string result(text);
    for (char& c : result) c = ascii_lower(c);
    return result;
}

bool is_ascii_digit(char c) {
    return c >= '0' && c <= '9';
}

bool is_ascii_alnum(char c) {
    const char lower = ascii_lower(c);
    return is_ascii_digit(c) || (lower >= 'a' && lower <= 'z');
}

bool is_hex(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) {
        const char lower = ascii_lower(c);
        return is_ascii_digit(c) || (lower >= 'a' && lower <= 'f');
    });
}

bool is_hex64(std::string_view text) {
    return text.size() == 64 && is_hex(text);
}

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

std::string_view trim(std::string_view text, std::string_view from_start, std::string_view from_end) {
    const std::size_t start = text.find_first_not_of(from_start);
    if (start == std::string_view::npos) return {};
    text.remove_prefix(start);
    const std::size_t last = text.find_last_not_of(from_end);
    return last == std::string_view::npos ? std::string_view{} : text.substr(0, last + 1);
}

std::string_view trim_white(std::string_view text) {
    return trim(text, " \t\r\n", " \t\r\n");
}

bool parse_u64(std::string_view text, unsigned long long& value) {
    constexpr unsigned long long MOST = std::numeric_limits<unsigned long long>::max();
    if (text.empty()) return false;
    unsigned long long read = 0;
    for (const char c : text) {
        if (!is_ascii_digit(c)) return false;
        const auto digit = static_cast<unsigned long long>(c - '0');
        if (read > (MOST - digit) / 10) return false;
        read = read * 10 + digit;
    }
    value = read;
    return true;
}

namespace {

// Reads one code point of well-formed UTF-8 (no overlong form, no surrogate, nothing above U+10FFFF).
bool next_code_point(std::string_view text, std::size_t& at, char32_t& code_point) {
    const auto byte = [&](std::size_t index) { return static_cast<std::uint8_t>(text[index]); };
    const std::uint8_t first = byte(at);
    if (first < 0x80) {
        code_point = first;
        ++at;
        return true;
    }
    std::size_t length = 0;
    char32_t smallest = 0;
    if (first >= 0xC2 && first <= 0xDF) {
        length = 2;
        code_point = first & 0x1FU;
        smallest = 0x80;
    } else if (first >= 0xE0 && first <= 0xEF) {
        length = 3;
        code_point = first & 0x0FU;
        smallest = 0x800;
    } else if (first >= 0xF0 && first <= 0xF4) {
        length = 4;
        code_point = first & 0x07U;
        smallest = 0x10000;
    } else {
        return false;
    }
    if (text.size() - at < length) return false;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xC0U) != 0x80U) return false;
        code_point = (code_point << 6) | (byte(at + i) & 0x3FU);
    }
    if (code_point < smallest || code_point > 0x10FFFF || (code_point >= 0xD800 && code_point <= 0xDFFF)) {
        return false;
    }
    at += length;
    return true;
}

void append_utf8(std::string& text, char32_t code_point) {
    const auto put = [&](char32_t byte) {
        text.push_back(static_cast<char>(static_cast<std::uint8_t>(byte)));
    };
    if (code_point < 0x80) {
        put(code_point);
    } else if (code_point < 0x800) {
        put(0xC0 | (code_point >> 6));
        put(0x80 | (code_point & 0x3F));
    } else if (code_point < 0x10000) {
        put(0xE0 | (code_point >> 12));
        put(0x80 | ((code_point >> 6) & 0x3F));
        put(0x80 | (code_point & 0x3F));
    } else {
        put(0xF0 | (code_point >> 18));
        put(0x80 | ((code_point >> 12) & 0x3F));
        put(0x80 | ((code_point >> 6) & 0x3F));
        put(0x80 | (code_point & 0x3F));
    }
}

}  // namespace

std::u16string utf16_from_utf8(std::string_view text) {
    std::u16string result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        char32_t code_point = 0;
        if (!next_code_point(text, at, code_point)) return {};
        if (code_point < 0x10000) {
            result.push_back(static_cast<char16_t>(code_point));
        } else {
            const char32_t rest = code_point - 0x10000;
            result.push_back(static_cast<char16_t>(0xD800 + (rest >> 10)));
            result.push_back(static_cast<char16_t>(0xDC00 + (rest & 0x3FF)));
        }
    }
    return result;
}

std::string utf8_from_utf16(std::u16string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        char32_t code_point = text[at];
        if (code_point >= 0xD800 && code_point <= 0xDBFF) {
            if (at + 1 == text.size() || text[at + 1] < 0xDC00 || text[at + 1] > 0xDFFF) return {};
            code_point = 0x10000 + ((code_point - 0xD800) << 10) + (char32_t{text[at + 1]} - 0xDC00);
            ++at;
        } else if (code_point >= 0xDC00 && code_point <= 0xDFFF) {
            return {};
        }
        append_utf8(result, code_point);
    }
    return result;
}

bool is_utf8(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        char32_t code_point = 0;
        if (!next_code_point(text, at, code_point)) return false;
    }
    return true;
}

std::string shown_text(std::string_view text) {
    constexpr std::string_view REPLACEMENT = "\xEF\xBF\xBD";
    std::string shown;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t start = at;
        char32_t code_point = 0;
        const bool is_character = next_code_point(text, at, code_point);
        if (!is_character) at = start + 1;
        const bool is_control = code_point == 0x7F || (code_point < 0x20 && code_point != U'\t' &&
                                                       code_point != U'\n' && code_point != U'\r');
        shown += is_character && !is_control ? text.substr(start, at - start) : REPLACEMENT;
    }
    return shown;
}

std::string replace_unsafe(std::string_view text, std::string_view also_kept) {
    std::string result(text);
    for (char& c : result) {
        if (!is_ascii_alnum(c) && also_kept.find(c) == std::string_view::npos) c = '_';
    }
    return result;
}
