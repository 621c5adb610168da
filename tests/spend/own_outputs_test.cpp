#include "spend/coin_guard.h"
#include "tests/spend/guard_world.h"

namespace {

struct OwnOutputsWorld : GuardWorld {
    bool ingest(const Json& outputs) {
        server.on("GET", "/woc/tx/" + txid_of(1), dump_json({{"txid", txid_of(1)}, {"vout", outputs}}, -1));
        return qv_clasp_ingest_own_outputs(txid_of(1));
    }
    static std::vector<std::pair<std::uint32_t, std::int64_t>> pending() {
        std::vector<std::pair<std::uint32_t, std::int64_t>> rows;
        for (const QvClaspPendingCoin& coin : records().pending_coins)
            rows.emplace_back(coin.vout, coin.sats);
        return rows;
    }
};

Json paying(const std::string& address) {
    return {{"addresses", {address}}};
}

TEST(OwnOutputs, AmountsAreReadToTheExactSatoshi) {
    struct Case {
        std::string amount;
        std::int64_t sats;
    };
    const std::vector<Case> cases = {
        {R"("value":9.998e-5)", 9998},
        {R"("value":0.00000001)", 1},
        {R"("value":0.29)", 29'000'000},
        {R"("value":999.99999999)", 99'999'999'999},
        {R"("value":1)", 100'000'000},
        {R"("value":1000)", 100'000'000'000},
        {R"("value":1001)", 1001},
        {R"("value":0.000000004)", 0},
        {R"("value":0)", 0},
        {R"("value":-1)", 0},
        {R"("value":"1")", 0},
        {R"("value":9223372036854775807)", 0},
        {R"("value":18446744073709551615)", 0},
        {R"("satoshis":9998,"value":5)", 9998},
        {R"("satoshis":0,"value":5)", 0},
        {R"("satoshis":9998.4)", 9998},
        {R"("satoshis":"9998","value":9.998e-5)", 9998},
        {R"("satoshis":2100000000000000)", 2'100'000'000'000'000},
        {R"("satoshis":9223372036854775807,"value":1)", 0},
        {R"("satoshis":1e19)", 0},
    };
    for (const Case& c : cases) {
        OwnOutputsWorld world;
        Json output;
        ASSERT_TRUE(parse_json("{" + c.amount + "}", output)) << c.amount;
        output["scriptPubKey"] = paying(receive_address(0));
        EXPECT_EQ(c.sats > 0, world.ingest(Json::array({output}))) << c.amount;
        const auto pending = OwnOutputsWorld::pending();
        EXPECT_EQ(c.sats, pending.empty() ? 0 : pending[0].second) << c.amount;
    }
}

TEST(OwnOutputs, AreThoseThatPayThisWalletPlainlyAndAreNew) {
    OwnOutputsWorld world;
    const auto script_hex = [](unsigned index, const std::string& more) {
        Hash160 hash160{};
        EXPECT_TRUE(qv_clasp_address_to_hash160(receive_address(index), hash160));
        return qv_clasp_hex_encode(qv_clasp_p2pkh_script(hash160)) + more;
    };
    const auto output = [](const Json& script, const Json& more = Json::object()) {
        Json made = {{"satoshis", 500}, {"scriptPubKey", script}};
        made.update(more);
        return made;
    };
    const std::string own = receive_address(0);
    qv_clasp_mark_spent(txid_of(1), 8);
    OwnOutputsWorld::add_pending({txid_of(1), 9, 500}, own);
    const Json outputs = {
        output(paying(own)),
        output({{"address", receive_address(1)}}),
        output({{"addresses", Json::array()}, {"address", identity_address()}}),
        output({{"addresses", {5, nullptr}}, {"address", own}}),
        output(paying("1BitcoinEaterAddressDontSendf59kuE")),
        output({{"addresses", {own}}, {"hex", script_hex(0, "")}}),
        output({{"addresses", {own}}, {"hex", script_hex(0, "0063036f7264")}}),
        output({{"addresses", {own}}, {"hex", script_hex(1, "")}}),
        output(paying(own)),
        output(paying(own)),
        output({{"addresses", {own, receive_address(1)}}}),
        output(paying(own), {{"n", 70}}),
        output(paying(own), {{"n", "x"}}),
        output(paying(own), {{"n", -1}}),
        output(paying(own), {{"n", 4294967296}}),
        output(Json()),
        output(Json("x")),
        nullptr,
        5,
        Json::array(),
    };
    EXPECT_TRUE(world.ingest(outputs));
    const std::vector<std::pair<std::uint32_t, std::int64_t>> expected = {
        {9, 500}, {0, 500}, {1, 500}, {2, 500}, {3, 500}, {5, 500}, {10, 500}, {70, 500}, {12, 500}};
    EXPECT_EQ(expected, OwnOutputsWorld::pending());
    const QvClaspPendingCoin& identity = OwnOutputsWorld::records().pending_coins[3];
    EXPECT_EQ(qv_clasp_hex_encode(one_wallet_key("100'/0/0").priv), identity.priv.view());
    EXPECT_EQ(qv_clasp_hex_encode(one_wallet_key("100'/0/0").pub), identity.pub);
    EXPECT_EQ(identity_address(), qv_clasp_address_from_hash160(identity.hash160));
    EXPECT_FALSE(world.ingest(outputs));
}

}  // namespace
