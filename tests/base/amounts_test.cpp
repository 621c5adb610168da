#include "base/amounts.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr std::int64_t MOST = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t UNTOUCHED = -77;

struct Typed {
    const char* text;
    std::int64_t sats;
};

}  // namespace

TEST(Amounts, AreShownWithEightDecimalsAlways) {
    EXPECT_EQ(format_bsv(0), "0.00000000");
    EXPECT_EQ(format_bsv(100'000'001), "1.00000001");
    EXPECT_EQ(format_bsv(-1), "-0.00000001");
    EXPECT_EQ(format_bsv(MOST), "92233720368.54775807");
    EXPECT_EQ(format_bsv(std::numeric_limits<std::int64_t>::min()), "-92233720368.54775808");
}

TEST(Amounts, TypedAmountsAreReadToTheSatoshi) {
    for (const Typed& row :
         {Typed{"0.01", 1'000'000}, Typed{".5", 50'000'000}, Typed{"1.", 100'000'000},
          Typed{"00.10", 10'000'000}, Typed{"1.123456789", 112'345'678}, Typed{"0.00000001", 1},
          Typed{"21000000", 2'100'000'000'000'000}, Typed{"92233720368.54775807", MOST},
          Typed{"92233720368.547758079999", MOST}, Typed{"000000000000000000000000000001", 100'000'000}}) {
        std::int64_t sats = UNTOUCHED;
        EXPECT_TRUE(parse_bsv_amount(row.text, sats)) << row.text;
        EXPECT_EQ(sats, row.sats) << row.text;
    }
}

TEST(Amounts, EverythingElseIsRefusedAndLeavesTheOutputAlone) {
    for (const char* text : {"",
                             ".",
                             "0",
                             "0.000000001",
                             "-1",
                             "+1",
                             "1,5",
                             "1.5.",
                             "1..5",
                             "1e3",
                             "1 BSV",
                             " 1",
                             "1 ",
                             "0x1",
                             "92233720368.54775808",
                             "92233720369",
                             "184467440737.09551617",
                             "9223372036854775710",
                             "18446744073709551617",
                             "\xEF\xBC\x91",
                             "1\n"}) {
        std::int64_t sats = UNTOUCHED;
        EXPECT_FALSE(parse_bsv_amount(text, sats)) << text;
        EXPECT_EQ(sats, UNTOUCHED) << text;
    }
}

TEST(LotTexts, AreReadInTwoStrictnesses) {
    struct Row {
        const char* text;
        bool strict;
        std::uint64_t strict_value, lenient_value;
    };
    for (const Row& row :
         {Row{"0", true, 0, 0}, Row{"007", true, 7, 7},
          Row{"18446744073709551615", true, 18446744073709551615ULL, 18446744073709551615ULL},
          Row{"18446744073709551616", false, 0, 1844674407370955161ULL},
          Row{"000000000000000000001", false, 0, 0}, Row{"", false, 0, 0}, Row{"12x4", false, 0, 12},
          Row{"-1", false, 0, 0}, Row{" 1", false, 0, 0}}) {
        std::uint64_t value = 99;
        EXPECT_EQ(read_lot_text_strict(row.text, value), row.strict) << row.text;
        if (row.strict) {
            EXPECT_EQ(value, row.strict_value) << row.text;
        }
        EXPECT_EQ(read_lot_text_lenient(row.text), row.lenient_value) << row.text;
    }
}

TEST(ProRata, IsTheExactFloorWithoutOverflow) {
    EXPECT_EQ(pro_rata_sats(100'000, "3", "7"), 42'857);
    EXPECT_EQ(pro_rata_sats(100'000, "1", "7"), 14'285);
    EXPECT_EQ(pro_rata_sats(1, "3", "2"), 1);
    EXPECT_EQ(pro_rata_sats(1, "1", "2"), 0);
    EXPECT_EQ(pro_rata_sats(MOST, "18446744073709551615", "18446744073709551615"), MOST);
    EXPECT_EQ(pro_rata_sats(MOST, "18446744073709551614", "18446744073709551615"), MOST - 1);
    EXPECT_EQ(pro_rata_sats(MOST, "9223372036854775807", "18446744073709551615"), MOST / 2);
}

TEST(ProRata, IsZeroForWhateverDoesNotRead) {
    struct Row {
        std::int64_t pot;
        const char *lots, *payable;
    };
    for (const Row& row :
         {Row{0, "1", "1"}, Row{-5, "1", "1"}, Row{100, "", "1"}, Row{100, "1", ""}, Row{100, "1", "0"},
          Row{100, "000000000000000000001", "1"}, Row{100, "1", "18446744073709551616"}, Row{100, "1.0", "1"},
          Row{100, "1", "x"}, Row{MOST, "2", "1"}, Row{MOST, "18446744073709551615", "1"}}) {
        EXPECT_EQ(pro_rata_sats(row.pot, row.lots, row.payable), 0) << row.lots << " of " << row.payable;
    }
}
