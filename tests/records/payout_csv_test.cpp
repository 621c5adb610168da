#include "records/payout_csv.h"

#include <gtest/gtest.h>

#include <ctime>

#include "tests/support/test_home.h"

TEST(PayoutCsv, TheFileByteForByte) {
    std::tm local{};
    local.tm_year = 126;
    local.tm_mday = 31;
    local.tm_hour = 3;
    local.tm_min = 59;
    local.tm_isdst = -1;
    const std::int64_t unix = std::mktime(&local);
    const std::string txid(64, 'a');
    const std::vector<PayoutRow> rows = {
        {"tok_0", "", "alice@bursaria.test", "1alice", txid, "payout", 150'000'000, unix},
        {"tok_1", "Grün, \"Wiese\"", "a\rb\nc", "", "", "", 0, 0},
        {"", "", "", "1 b;'=", "t", "odd", -1, -1},
    };
    const TokenNames names = {{"tok_0", "Meadow"}};
    const std::string expected =
        "\xef\xbb\xbfWhen,Who,Amount BSV,Amount sats,Pay to,Tx,Token,Kind\r\n"
        "2026-01-31 03:59,alice@bursaria.test,1.50000000,150000000,1alice," +
        txid +
        ",Meadow,payout\r\n"
        "-,\"a\rb\nc\",0.00000000,0,,,\"Grün, \"\"Wiese\"\"\",payout\r\n"
        "-,,-0.00000001,-1,1 b;'=,t,token,odd\r\n";
    EXPECT_EQ(payout_csv(rows, names), expected);
    EXPECT_EQ(payout_csv_name(unix), "bursaria-payouts-2026-01-31.csv");

    const TestHome home;
    home.write("/out.csv", expected + "longer than what comes");
    std::string text;
    EXPECT_TRUE(write_payout_csv(home.root() + "/out.csv", rows, names, text));
    EXPECT_EQ(text, "Saved 3 rows.");
    EXPECT_EQ(home.read("/out.csv"), expected);
    EXPECT_FALSE(write_payout_csv(home.root() + "/no/folder/out.csv", rows, names, text));
    EXPECT_EQ(text, "Could not write that file.");
}
