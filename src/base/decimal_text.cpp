#include "base/decimal_text.h"

#include <algorithm>

#include "base/text.h"

std::string dec_norm(std::string_view text) {
    text = trim(text, " \t", " \t");
    if (text.empty() || !std::all_of(text.begin(), text.end(), is_ascii_digit)) return "";
    const std::size_t first = std::min(text.find_first_not_of('0'), text.size() - 1);
    return std::string(text.substr(first));
}

static int digit_from_right(const std::string& digits, std::size_t place) {
    return place < digits.size() ? digits[digits.size() - 1 - place] - '0' : 0;
}

static std::string normalised_or_zero(std::string_view text) {
    std::string digits = dec_norm(text);
    return digits.empty() ? "0" : digits;
}

std::string dec_add(std::string_view a, std::string_view b) {
    const std::string left = normalised_or_zero(a);
    const std::string right = normalised_or_zero(b);
    std::string sum(std::max(left.size(), right.size()) + 1, '0');
    int carry = 0;
    for (std::size_t place = 0; place < sum.size(); ++place) {
        const int digit = digit_from_right(left, place) + digit_from_right(right, place) + carry;
        sum[sum.size() - 1 - place] = static_cast<char>('0' + digit % 10);
        carry = digit / 10;
    }
    return dec_norm(sum);
}

std::string dec_sub(std::string_view a, std::string_view b) {
    if (a.empty()) return "0";
    const std::string left = normalised_or_zero(a);
    const std::string right = normalised_or_zero(b);
    std::string difference(left.size(), '0');
    int borrow = 0;
    for (std::size_t place = 0; place < difference.size(); ++place) {
        int digit = digit_from_right(left, place) - digit_from_right(right, place) - borrow;
        borrow = digit < 0 ? 1 : 0;
        if (digit < 0) digit += 10;
        difference[difference.size() - 1 - place] = static_cast<char>('0' + digit);
    }
    return normalised_or_zero(difference);
}

int dec_cmp(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
    const int order = a.compare(b);
    return order < 0 ? -1 : (order > 0 ? 1 : 0);
}
