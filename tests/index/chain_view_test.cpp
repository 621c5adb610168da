#include "index/chain_view.h"

#include <gtest/gtest.h>

#include "tests/index/token_world.h"
#include "tests/support/hostile_json.h"

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

Json history_rows(unsigned first, unsigned last) {
    Json rows = Json::array();
    for (unsigned i = first; i <= last; ++i) rows.push_back({{"tx_hash", tx_number(i)}, {"height", i}});
    return rows;
}

}  // namespace

TEST(ChainView, ATransactionIsFetchedOnce) {
    TokenWorld world;
    world.add_tx(1, {});
    Json tx;
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(qv_clasp_tx_json(tx_number(1), tx));
        EXPECT_EQ(json_text(tx, "txid"), tx_number(1));
    }
    EXPECT_EQ(qv_clasp_shared_tx(tx_number(1)), qv_clasp_shared_tx(tx_number(1)))
        << "one document, not copies";
    EXPECT_EQ(world.server.requests().size(), 1U);
}

TEST(ChainView, AFailedFetchIsNotKept) {
    TokenWorld world;
    Json tx = 1;
    for (const std::string& body : NO_OBJECTS) {
        world.server.on("GET", "/woc/tx/" + tx_number(2), body);
        EXPECT_FALSE(qv_clasp_tx_json(tx_number(2), tx)) << body;
        EXPECT_TRUE(tx.is_null());
    }
    world.add_tx(2, {});
    EXPECT_TRUE(qv_clasp_tx_json(tx_number(2), tx));
    const std::size_t asked = world.server.requests().size();
    EXPECT_FALSE(qv_clasp_tx_json("../" + tx_number(2).substr(3), tx)) << "only a txid becomes part of a URL";
    EXPECT_EQ(world.server.requests().size(), asked);
}

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

TEST(ChainView, HistoriesInBothFormsGiveTheNewestFirst) {
    TokenWorld world;
    const std::string base = "/woc/address/" + person(1);
    world.server.on("GET", base + "/a", dump_json(history_rows(1, 100), -1));
    world.server.on("GET", base + "/b", dump_json({{"result", history_rows(90, 110)}, {"error", ""}}, -1));
    world.server.on("GET", base + "/odd",
                    dump_json({{"tx_hash", "unconfirmed123"},
                               nullptr,
                               7,
                               {{"tx_hash", nullptr}, {"txid", tx_number(7)}},
                               {{"txid", std::string(64, 'z')}}},
                              -1));
    std::vector<std::string> list;
    std::unordered_set<std::string> seen;
    qv_clasp_history_txids(person(1), "/a", list, 24, seen);
    ASSERT_EQ(list.size(), 24U);
    EXPECT_EQ(list.front(), tx_number(100));
    EXPECT_EQ(list.back(), tx_number(77));
    qv_clasp_history_txids(person(1), "/b", list, 24, seen);
    EXPECT_EQ(world.server.count("GET", "/b"), 0U) << "a full list asks nothing";
    qv_clasp_history_txids(person(1), "/b", list, 30, seen);
    EXPECT_EQ((std::vector<std::string>(list.begin() + 24, list.end())),
              (std::vector<std::string>{tx_number(110), tx_number(109), tx_number(108), tx_number(107),
                                        tx_number(106), tx_number(105)}));
    qv_clasp_history_txids(person(1), "/missing", list, 99, seen);
    EXPECT_EQ(list.size(), 30U);
    list.clear();
    seen.clear();
    qv_clasp_history_txids(person(1), "/odd", list, 24, seen);
    EXPECT_EQ(list, std::vector<std::string>{tx_number(7)});
}
