// Unsigned integers of any length as ASCII decimal text: token amounts, which need not fit in 64 bits. Pure.
#pragma once

#include <string>
#include <string_view>

// The digits without blanks and tabs around them and without leading zeros (one digit stays); empty if
// anything but digits is left, or nothing.
std::string dec_norm(std::string_view text);
// The normalised sum; an operand that does not normalise counts as "0".
std::string dec_add(std::string_view a, std::string_view b);
// The normalised difference. `a` must not be smaller than `b`: a last borrow is dropped. An empty `a` gives
// "0".
std::string dec_sub(std::string_view a, std::string_view b);
// -1, 0 or 1 for two normalised texts.
int dec_cmp(std::string_view a, std::string_view b);
