#include "index/chain_view.h"

#include <gtest/gtest.h>

#include "tests/index/token_world.h"

namespace {

struct Spend {
    SpendStatus status;
    std::string spender;
};
Spend spend_of(unsigned number, unsigned vout = 0) {
    Spend spend{SpendStatus::Unknown, "stale"};
    spend.status = qv_clasp_spend_status(tx_number(number), vout, spend.spender);
    return spend;
}

}  // namespace

TEST(ChainView, SpendAnswers) {
    struct Case {
        const char* what;
        int http_status;
        std::string body;
        SpendStatus status;
    };
    const std::string spender = tx_number(0xABC);
    const Case cases[] = {
        {"spent", 200, R"({"txid":")" + spender + R"(","vin":0})", SpendStatus::Spent},
        {"not found", 404, "", SpendStatus::Unspent},
        {"itself", 200, R"({"txid":")" + tx_number(0x52) + "\"}", SpendStatus::Unspent},
        {"short", 200, R"({"txid":"abc"})", SpendStatus::Unspent},
        {"no JSON", 200, "<html>", SpendStatus::Unspent},
        {"down", 502, "<html>", SpendStatus::Unknown},
        {"refused, transaction known", 400, "bad", SpendStatus::Unknown},
    };
    TokenWorld world;
    unsigned number = 0x50;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const std::string path = TokenWorld::spent_path(number, 0);
        world.server.on("GET", path, c.body, c.http_status);
        world.server.on("GET", "/woc/tx/" + tx_number(number) + "/hex", std::string(60, '0'));
        for (int i = 0; i < 2; ++i) {
            const Spend spend = spend_of(number);
            EXPECT_EQ(spend.status, c.status);
            EXPECT_EQ(spend.spender, c.status == SpendStatus::Spent ? spender : "");
        }
        EXPECT_EQ(world.server.count("GET", path), c.status == SpendStatus::Spent ? 1U : 2U) << "kept";
        ++number;
    }
}

TEST(ChainView, ATransactionThatDoesNotExistIsKeptOnlyWhenTheServiceSaysSo) {
    TokenWorld world;
    const std::string path = TokenWorld::spent_path(1, 0);
    world.server.on("GET", path, "unknown", 400);
    world.server.otherwise({.status = 503, .body = ""});
    EXPECT_EQ(spend_of(1).status, SpendStatus::Unknown) << "no answer is no proof";
    world.server.otherwise({.status = 404, .body = ""});
    EXPECT_EQ(spend_of(1).status, SpendStatus::NoSuchTx);
    EXPECT_EQ(spend_of(1).status, SpendStatus::NoSuchTx);
    EXPECT_EQ(world.server.count("GET", path), 2U) << "kept the second time";
    qv_clasp_clear_spend_cache();
    world.server.on("GET", path, "", 404);
    EXPECT_EQ(spend_of(1).status, SpendStatus::Unspent);
}
