#include "base/amounts.h"

#include <limits>

#include "base/text.h"

namespace {

constexpr std::uint64_t LARGEST_WHOLE_BSV = 92'233'720'368ULL;
constexpr std::size_t MOST_LOT_DIGITS = 20;
constexpr std::size_t FRACTION_DIGITS = 8;
constexpr std::uint64_t MOST_U64 = std::numeric_limits<std::uint64_t>::max();

// Appends one digit; false, with the value kept, if it would not fit.
bool push_digit(std::uint64_t& value, char c) {
    const auto digit = static_cast<std::uint64_t>(c - '0');
    if (value > (MOST_U64 - digit) / 10) return false;
    value = value * 10 + digit;
    return true;
}

}  // namespace

std::string format_bsv(std::int64_t sats) {
    // Negating in unsigned arithmetic also holds for the smallest amount.
    const std::uint64_t size =
        sats < 0 ? 0 - static_cast<std::uint64_t>(sats) : static_cast<std::uint64_t>(sats);
    std::string fraction = std::to_string(size % SATS_PER_BSV);
    fraction.insert(0, FRACTION_DIGITS - fraction.size(), '0');
    return (sats < 0 ? "-" : "") + std::to_string(size / SATS_PER_BSV) + "." + fraction;
}

std::string trim_text(std::string_view text) {
    return std::string(trim(text, " \t", " \t\r\n"));
}

bool parse_bsv_amount(std::string_view text, std::int64_t& sats) {
    // A whole part beyond this, met with a digit to come, is refused before it could wrap.
    constexpr std::uint64_t WHOLE_GUARD = 922'337'203'685'477'571ULL;
    std::size_t at = 0;
    std::uint64_t whole = 0;
    for (; at < text.size() && is_ascii_digit(text[at]); ++at) {
        if (whole > WHOLE_GUARD) return false;
        whole = whole * 10 + static_cast<std::uint64_t>(text[at] - '0');
    }
    bool any_digit = at > 0;
    std::uint64_t fraction = 0;
    std::size_t fraction_digits = 0;
    if (at < text.size() && text[at] == '.') {
        for (++at; at < text.size() && is_ascii_digit(text[at]); ++at) {
            any_digit = true;
            if (fraction_digits == FRACTION_DIGITS) continue;
            fraction = fraction * 10 + static_cast<std::uint64_t>(text[at] - '0');
            ++fraction_digits;
        }
    }
    for (; fraction_digits < FRACTION_DIGITS; ++fraction_digits) fraction *= 10;
    if (at != text.size() || !any_digit || whole > LARGEST_WHOLE_BSV) return false;
    // Above the largest pot the sum does not fit in 63 bits and comes out negative.
    const auto sum = static_cast<std::int64_t>(whole * static_cast<std::uint64_t>(SATS_PER_BSV) + fraction);
    if (sum <= 0) return false;
    sats = sum;
    return true;
}

bool read_lot_text_strict(std::string_view text, std::uint64_t& lots) {
    if (text.empty() || text.size() > MOST_LOT_DIGITS) return false;
    std::uint64_t value = 0;
    for (const char c : text) {
        if (!is_ascii_digit(c) || !push_digit(value, c)) return false;
    }
    lots = value;
    return true;
}

std::uint64_t read_lot_text_lenient(std::string_view text) {
    if (text.empty() || text.size() > MOST_LOT_DIGITS) return 0;
    std::uint64_t value = 0;
    for (const char c : text) {
        if (!is_ascii_digit(c) || !push_digit(value, c)) break;
    }
    return value;
}

std::int64_t pro_rata_sats(std::int64_t pot, std::string_view lots_text, std::string_view payable_text) {
    std::uint64_t lots = 0;
    std::uint64_t payable = 0;
    if (pot < 1 || !read_lot_text_strict(lots_text, lots) || !read_lot_text_strict(payable_text, payable) ||
        payable == 0) {
        return 0;
    }
    __extension__ using Wide = unsigned __int128;
    const Wide product = Wide{static_cast<std::uint64_t>(pot)} * lots;
    const Wide quotient = product / payable;
    return quotient > static_cast<Wide>(std::numeric_limits<std::int64_t>::max())
               ? 0
               : static_cast<std::int64_t>(quotient);
}
