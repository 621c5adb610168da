#include "base/json_file.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/test_home.h"

using namespace std::string_literals;

TEST(JsonFile, NeverThrowsForAnyText) {
    Json document;
    for (const std::string& text :
         {""s, "{"s, "nul"s, "[1,]"s, "\xff\xfe"s, "\"\xC3\""s, "{\"a\":1}{}"s, "[1e999]"s,
          std::string(100'000, '['), std::string(100'000, '{'), "[\"\\u"s, "\"\\ud800\""s}) {
        EXPECT_FALSE(parse_json(text, document)) << text.substr(0, 20);
        EXPECT_TRUE(document.is_null());
    }
    std::string deep;
    for (int i = 0; i < 100'000; ++i) deep += "{\"a\":";
    EXPECT_FALSE(parse_json(deep, document));
    EXPECT_TRUE(parse_json(std::string(512, '[') + std::string(512, ']'), document));
    EXPECT_FALSE(parse_json(std::string(513, '[') + std::string(513, ']'), document));
    // Brackets inside a text do not nest.
    EXPECT_TRUE(parse_json("[\"" + std::string(2000, '[') + "\\\"[\"]", document));
}

TEST(JsonFile, ReadsOnlyTheTypeThatIsAskedFor) {
    Json row;
    ASSERT_TRUE(parse_json(
        R"({"t":"x","n":5,"f":2.9,"b":true,"z":null,"o":{},"u":18446744073709551615,"m":-7})", row));
    EXPECT_EQ(json_text(row, "t"), "x");
    EXPECT_EQ(json_text(row, "n", "none"), "none");
    EXPECT_EQ(json_text(row, "z", "none"), "none");
    EXPECT_EQ(json_int(row, "n"), 5);
    EXPECT_EQ(json_int(row, "m"), -7);
    EXPECT_EQ(json_int(row, "f", -1), -1);
    EXPECT_EQ(json_int(row, "u", -1), -1);
    EXPECT_TRUE(json_bool(row, "b"));
    EXPECT_FALSE(json_bool(row, "n"));
    EXPECT_TRUE(json_member(row, "absent").is_null());
    EXPECT_TRUE(json_member(Json("text"), "t").is_null());
}

TEST(JsonFile, TakesWholeCountsFromFloatsThatFit) {
    std::int64_t count = 0;
    EXPECT_TRUE(json_whole(Json(2.9), count));
    EXPECT_EQ(count, 2);
    EXPECT_TRUE(json_whole(Json(-2.9), count));
    EXPECT_EQ(count, -2);
    for (const double number : {9.3e18, -9.3e18, std::numeric_limits<double>::infinity(),
                                std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_FALSE(json_whole(Json(number), count));
    }
    EXPECT_FALSE(json_whole(Json("5"), count));
    EXPECT_FALSE(json_whole(Json(9223372036854775808ULL), count));
}
