#include "spend/ordinal_reader.h"

#include <gtest/gtest.h>

#include "tests/support/fake_clock.h"
#include "tests/support/scripted_server.h"
#include "tests/support/test_home.h"

namespace {

const std::string ADDRESS = "1NVoMjzjAgskT5dqWtTXVjQXUns7RqYp2m";
const std::string OUTPUTS = "/api/txos/address/" + ADDRESS + "/unspent";
const std::string TOKENS = "/api/bsv20/" + ADDRESS + "/unspent";
const std::string TXID = "45d0b39a861f470dda4bd72a311b757384e5cc6ecdfdd93f9218d9357af29540";

struct IndexWorld {
    ScriptedServer server;
    TestHome home;
    FakeClock clock;
    OutpointSet outpoints{"left over"};
    OutpointSet plain{"left over"};
    bool complete = true;

    IndexWorld() {
        home.use_settings(settings_on(server.base(), "home.invalid"));
        server.on("GET", OUTPUTS, "[]");
        server.on("GET", TOKENS, "[]");
    }
    bool read() { return qv_clasp_read_ordinal_outpoints(ADDRESS, outpoints, plain, complete); }
    void outputs(const Json& rows) { server.on("GET", OUTPUTS, dump_json(rows, -1)); }
    void tokens(const Json& rows) { server.on("GET", TOKENS, dump_json(rows, -1)); }
};

Json output(std::uint32_t vout, const Json& more) {
    Json row = {{"txid", TXID}, {"vout", vout}, {"satoshis", 1}, {"origin", nullptr}, {"data", nullptr}};
    row.update(more);
    return row;
}

std::string recorded_body(std::size_t index) {
    return json_text(test_data("api_gorillapool.json")["answers"][index], "body");
}

TEST(OrdinalReader, TakesOutputsWithAnOriginOrTokenDataAndUnspentTokens) {
    IndexWorld world;
    world.outputs(
        {output(0, {{"origin", TXID + "_0"}}), output(1, {{"origin", {{"outpoint", TXID + "_0"}}}}),
         output(2, Json::object()), output(3, {{"origin", ""}}), output(4, {{"origin", {{"outpoint", ""}}}}),
         output(5, {{"data", {{"bsv20", {{"amt", "1"}}}}}}), output(6, {{"data", {{"insc", nullptr}}}}),
         output(7, {{"data", {{"map", {{"app", "x"}}}}}}), output(8, {{"origin", 5}}), 9, nullptr,
         output(10, {{"origin", "x"}, {"txid", TXID.substr(1)}}),
         output(11, {{"origin", "x"}, {"vout", 4294967296}}), output(12, {{"origin", "x"}, {"vout", "1"}}),
         output(13, {{"origin", "x"}, {"vout", 14.0}})});
    world.tokens({{{"txid", TXID}, {"vout", 20}, {"spend", ""}},
                  {{"txid", TXID}, {"vout", 21}, {"spend", nullptr}},
                  {{"txid", TXID}, {"vout", 22}, {"spend", TXID}},
                  {{"txid", TXID}, {"vout", 23}},
                  5});
    EXPECT_TRUE(world.read());
    EXPECT_TRUE(world.complete);
    OutpointSet expected;
    for (const unsigned vout : {0U, 1U, 5U, 6U, 14U, 20U, 21U, 23U}) {
        expected.insert(TXID + ":" + std::to_string(vout));
    }
    EXPECT_EQ(expected, world.outpoints);
    OutpointSet plain;
    for (const unsigned vout : {2U, 3U, 4U, 7U, 8U}) plain.insert(TXID + ":" + std::to_string(vout));
    EXPECT_EQ(plain, world.plain);
}

TEST(OrdinalReader, ReadsRecordedRows) {
    IndexWorld world;
    world.server.on("GET", OUTPUTS, recorded_body(0));
    world.server.on("GET", TOKENS, recorded_body(1));
    EXPECT_TRUE(world.read());
    EXPECT_EQ(OutpointSet{"69a5956ee1cad8056f0c4d6ca4f87766080b36a75f2192d2cf75f1f668f446d6:2"},
              world.outpoints);
    std::vector<QvClaspUtxo> coins;
    EXPECT_TRUE(qv_clasp_read_index_coins(ADDRESS, coins));
    ASSERT_EQ(1U, coins.size());
    EXPECT_EQ(TXID, coins[0].txid);
    EXPECT_EQ(10000000, coins[0].sats);
}

TEST(OrdinalReader, IsCompleteOnlyIfBothListsCameWhole) {
    const auto rows = [](std::size_t count) {
        return dump_json(Json(count, output(1, {{"origin", "x"}})), -1);
    };
    const std::string down = "down";
    const auto expect = [&](const std::string& outputs, const std::string& tokens, bool ok, bool complete) {
        IndexWorld world;
        world.server.on("GET", OUTPUTS, outputs, outputs == down ? 500 : 200);
        world.server.on("GET", TOKENS, tokens, tokens == down ? 500 : 200);
        EXPECT_EQ(ok, world.read()) << outputs << tokens;
        EXPECT_EQ(complete, world.complete) << outputs << tokens;
        EXPECT_EQ(ok ? 1U : 0U, world.outpoints.size()) << outputs << tokens;
    };
    expect(rows(99), "[]", true, true);
    expect(rows(99), down, true, false);
    expect(rows(100), "[]", true, false);  // a full page
    expect(rows(99), rows(100), true, false);
    expect(down, rows(99), false, false);
    expect(R"({"result":[]})", rows(99), false, false);
}

TEST(IndexCoins, AreThePlainOnesOfMoreThanOneSatoshi) {
    IndexWorld world;
    world.outputs({output(0, {{"satoshis", 2}}), output(1, Json::object()),
                   output(2, {{"satoshis", 5000}, {"origin", "x"}}),
                   output(3, {{"satoshis", 5000}, {"data", {{"bsv21", Json::object()}}}}),
                   output(4, {{"satoshis", 5000}, {"data", {{"bsv20", Json::object()}}}}),
                   output(5, {{"satoshis", 5000}, {"data", {{"insc", Json::object()}}}}),
                   output(6, {{"satoshis", 5000.7}, {"data", {{"map", Json::object()}}}}),
                   output(7, {{"satoshis", nullptr}, {"value", 300}}),
                   output(8, {{"satoshis", "5"}, {"value", "5"}}), output(9, {{"satoshis", 1.9}}),
                   output(10, {{"satoshis", 1e300}}), output(11, {{"satoshis", -5}}),
                   output(12, {{"satoshis", 9000000000000000}}), "x"});
    std::vector<QvClaspUtxo> coins{{TXID, 99, 9}};
    EXPECT_TRUE(qv_clasp_read_index_coins(ADDRESS, coins));
    std::vector<std::pair<std::uint32_t, std::int64_t>> found;
    for (const QvClaspUtxo& coin : coins) found.emplace_back(coin.vout, coin.sats);
    EXPECT_EQ((std::vector<std::pair<std::uint32_t, std::int64_t>>{{0, 2}, {6, 5000}, {7, 300}}), found);
    for (const char* body : {"[]", "{}", "", "[1,2]"}) {
        world.server.on("GET", OUTPUTS, body);
        EXPECT_FALSE(qv_clasp_read_index_coins(ADDRESS, coins)) << body;
        EXPECT_TRUE(coins.empty()) << body;
    }
}

}  // namespace
