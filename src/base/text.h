// Small functions on narrow UTF-8 text, and the one place where it is turned into UTF-16 and back. Pure; they
// know no locale: "letter" and "case" mean ASCII.
#pragma once

#include <string>
#include <string_view>

char ascii_lower(char c);
std::string ascii_lower(std::string_view text);
bool is_ascii_digit(char c);
bool is_ascii_alnum(char c);

// Every character of `text` is one of 0-9, a-f, A-F. True for the empty text.
bool is_hex(std::string_view text);
// Exactly 64 hexadecimal characters: the form of a transaction id.
bool is_hex64(std::string_view text);

bool contains(std::string_view text, std::string_view part);

// `text` without the characters of `from_start` at its start and those of `from_end` at its end.
std::string_view trim(std::string_view text, std::string_view from_start, std::string_view from_end);
// `text` without blanks, tabs, carriage returns and line feeds at either end.
std::string_view trim_white(std::string_view text);

// A text of decimal digits only, read into 64 bits. False, with `value` untouched, for anything else.
bool parse_u64(std::string_view text, unsigned long long& value);

// Strict conversions: text that is not well formed gives an empty result.
std::u16string utf16_from_utf8(std::string_view text);
std::string utf8_from_utf16(std::u16string_view text);

// True if `text` is well-formed UTF-8.
bool is_utf8(std::string_view text);
// What a screen can show of a text that others have written: U+FFFD in place of each byte that is no UTF-8
// and of each control character but tab and line end.
std::string shown_text(std::string_view text);

// Keeps ASCII letters, digits and the characters of `also_kept`; every other byte becomes "_".
std::string replace_unsafe(std::string_view text, std::string_view also_kept);
