#include "base/text.h"

#include <gtest/gtest.h>

#include "base/decimal_text.h"
#include "base/hex.h"

using namespace std::string_literals;

TEST(Text, ConvertsWellFormedTextBothWays) {
    for (const std::string& text :
         {""s, "plain"s, "Gr\xC3\xBC\xC3\x9F"s, "\xE6\xBC\xA2\xE5\xAD\x97"s, "\xF0\x9F\x8C\xB1 seed"s,
          "a\0b"s, "\xEF\xBF\xBF"s, "\xF4\x8F\xBF\xBF"s}) {
        EXPECT_EQ(utf8_from_utf16(utf16_from_utf8(text)), text);
    }
    EXPECT_EQ(utf16_from_utf8("\xF0\x9F\x8C\xB1"), u"\xD83C\xDF31");
}

TEST(Text, GivesNothingForTextThatIsNotWellFormed) {
    for (const std::string& text :
         {"\x80"s, "\xC0\xAF"s, "\xC3"s, "\xE0\x80\x80"s, "\xE2\x82"s, "\xED\xA0\x80"s, "\xF0\x80\x80\x80"s,
          "\xF4\x90\x80\x80"s, "\xF8\x88\x80\x80\x80"s, "good\xFF"s, "\xC3("s}) {
        EXPECT_TRUE(utf16_from_utf8(text).empty());
        EXPECT_FALSE(utf16_from_utf8(shown_text(text)).empty());
    }
    const std::u16string lone_high(1, static_cast<char16_t>(0xD83C));
    const std::u16string lone_low(1, static_cast<char16_t>(0xDF31));
    EXPECT_TRUE(utf8_from_utf16(lone_high).empty());
    EXPECT_TRUE(utf8_from_utf16(lone_low).empty());
    EXPECT_TRUE(utf8_from_utf16(lone_high + u"x").empty());
}

TEST(Text, TrimsAndTellsForms) {
    EXPECT_EQ(trim("\"\n abc \r\n\"", "\" \n", "\" \n\r"), "abc");
    EXPECT_EQ(trim("   ", " ", " "), "");
    EXPECT_EQ(trim_white("\t a b \r\n"), "a b");
    EXPECT_TRUE(is_hex64(std::string(64, 'A')));
    EXPECT_FALSE(is_hex64(std::string(63, 'a')));
    EXPECT_FALSE(is_hex64(std::string(63, 'a') + "g"));
    unsigned long long value = 5;
    EXPECT_TRUE(parse_u64("18446744073709551615", value));
    EXPECT_EQ(value, 18446744073709551615ULL);
    for (const char* text : {"", "18446744073709551616", "-1", "1 ", "1x"})
        EXPECT_FALSE(parse_u64(text, value));
}

TEST(Text, IsShownWithMarksForWhatNoScreenCanShow) {
    const std::string kept = "Paid 2.\n\tGr\xC3\xBC\xC3\x9F \xE2\x80\x93 \xF0\x9F\x8C\xB1\r\n";
    EXPECT_EQ(shown_text(kept), kept);
    EXPECT_EQ(shown_text("cut \xE2\x80"), "cut \xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(shown_text("a\x1B[2J\x7F"), "a\xEF\xBF\xBD[2J\xEF\xBF\xBD");
    EXPECT_EQ(shown_text("a\0b"s), "a\xEF\xBF\xBD"s + "b");
    EXPECT_EQ(shown_text("\xFFz"), "\xEF\xBF\xBDz");
}

TEST(Hex, AcceptsBothCasesAndRefusesTheRest) {
    EXPECT_EQ(qv_clasp_hex_encode(Bytes{0x00, 0xAB, 0xff}), "00abff");
    EXPECT_EQ(qv_clasp_hex_decode("00aBFf"), (Bytes{0x00, 0xAB, 0xff}));
    for (const char* text : {"", "0", "0g", "zz", "0 ", "00a"})
        EXPECT_TRUE(qv_clasp_hex_decode(text).empty()) << text;
}

TEST(DecimalText, NormalisesDigitsOnly) {
    EXPECT_EQ(dec_norm("000"), "0");
    EXPECT_EQ(dec_norm(" 12\t"), "12");
    EXPECT_EQ(dec_norm("00000000000000000000000000000000010"), "10");
    for (const char* text : {"1.5", "-3", "", "  ", "1 2", "\n1"}) EXPECT_EQ(dec_norm(text), "") << text;
}

TEST(DecimalText, AddsAndSubtractsBeyondAnyMachineNumber) {
    const std::string nines(40, '9');
    EXPECT_EQ(dec_add(nines, "1"), "1" + std::string(40, '0'));
    EXPECT_EQ(dec_add("", "5"), "5");
    EXPECT_EQ(dec_add("x", ""), "0");
    EXPECT_EQ(dec_add("00099", "1"), "100");
    EXPECT_EQ(dec_sub("1" + std::string(40, '0'), "1"), nines);
    EXPECT_EQ(dec_sub("10", "010"), "0");
    EXPECT_EQ(dec_sub("", "3"), "0");
    EXPECT_EQ(dec_sub("7", ""), "7");
    // What lies below zero drops its last borrow.
    EXPECT_EQ(dec_sub("3", "5"), "8");
}
