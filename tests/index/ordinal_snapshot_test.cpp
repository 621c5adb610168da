#include "index/ordinal_snapshot.h"

#include <gtest/gtest.h>

#include "tests/index/token_world.h"
#include "tests/support/hostile_json.h"

TEST(OrdinalSnapshot, HowAFileIsRead) {
    const TestHome home;
    const Json odd = {{"lots",
                       {{{"origin", out(1, 3)}},
                        {{"origin", out(2)}, {"txid", tx_number(9)}, {"vout", -1}},
                        {{"origin", tx_number(3)}, {"txid", "short"}},
                        {{"txid", tx_number(4)}},
                        17}},
                      {"txids", {"short", tx_number(6), 17}},
                      {"token_ids", {"any text", nullptr}}};
    home.write("/ord_snap/w1.json", odd);
    OrdSnapshot read;
    ASSERT_TRUE(qv_clasp_ord_snap_load("w1", read));
    ASSERT_EQ(read.lots.size(), 2U);
    EXPECT_EQ(read.lots[0].txid + std::to_string(read.lots[0].vout), tx_number(1) + "3") << "from the origin";
    EXPECT_EQ(read.lots[1].txid + std::to_string(read.lots[1].vout), tx_number(9) + "0");
    EXPECT_EQ(read.txids, std::vector<std::string>{tx_number(6)});
    EXPECT_EQ(read.token_ids, std::vector<std::string>{"any text"});
    std::vector<std::string> contents = NO_OBJECTS;
    for (const char* content : {"{}", R"({"token_ids":["x"]})", R"({"lots":{},"txids":["x"]})"})
        contents.emplace_back(content);
    for (const std::string& content : contents) {
        home.write("/ord_snap/w1.json", content);
        EXPECT_FALSE(qv_clasp_ord_snap_load("w1", read)) << content;
        EXPECT_TRUE(read.token_ids.empty()) << content;
    }
}
