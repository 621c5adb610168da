#include "spend/chain_readers.h"

#include <gtest/gtest.h>

#include "tests/support/fake_clock.h"
#include "tests/support/scripted_server.h"
#include "tests/support/test_home.h"

namespace {

const std::string ADDRESS = "1L2F8wYxTRagCZLnsm2engg8ngGECSeuE5";
const std::string ALL = "/woc/address/" + ADDRESS + "/unspent/all";
const std::string UNSPENT = "/woc/address/" + ADDRESS + "/unspent";
const std::string UNCONFIRMED = "/woc/address/" + ADDRESS + "/unconfirmed/unspent";
const std::string HISTORY = "/woc/address/" + ADDRESS + "/unconfirmed/history";

// 64 characters that end in a number, all different in either byte order.
std::string txid_of(unsigned number) {
    std::string text = std::to_string(number);
    return "a1b2" + std::string(60 - text.size(), '0') + text;
}

Json coin(const std::string& txid, std::uint32_t vout, std::int64_t sats) {
    return {{"tx_hash", txid}, {"tx_pos", vout}, {"value", sats}, {"height", 1}};
}

struct ReaderWorld {
    ScriptedServer server;
    TestHome home;
    FakeClock clock;
    std::vector<QvClaspUtxo> utxos;
    std::string error;
    bool any_ok = false;

    ReaderWorld() { home.use_settings(settings_on(server.base(), "home.invalid")); }
    void list(const std::string& path, const Json& rows) { server.on("GET", path, dump_json(rows, -1)); }
    bool fetch() { return qv_clasp_fetch_utxos(ADDRESS, utxos, error, any_ok); }
    std::vector<std::string> found() const {
        std::vector<std::string> rows;
        for (const QvClaspUtxo& utxo : utxos) {
            rows.push_back(qv_clasp_outpoint_key(utxo.txid, utxo.vout) + "=" + std::to_string(utxo.sats));
        }
        return rows;
    }
};

std::string row(const std::string& txid, std::uint32_t vout, std::int64_t sats) {
    return txid + ":" + std::to_string(vout) + "=" + std::to_string(sats);
}

TEST(UtxoList, ReadsEveryRecordedFormOfTheAnswer) {
    const Json recorded = test_data("api_whatsonchain.json")["answers"];
    struct Case {
        const char* path;
        std::vector<std::string> rows;
    };
    const std::vector<Case> cases = {
        {"/address/1L2F8wYxTRagCZLnsm2engg8ngGECSeuE5/unspent/all",
         {row("ab0f76f957662335f98ee430a665f924c28310ec5126c2aede56086f9233326f", 1, 154),
          row("54e27d08c371b67746fd3088b78eecb9acef91f497f7e776d11d605635b9dc20", 99, 1000)}},
        {"/address/12drYTV2c9nZMrxep9ewpWPdLrV5bNcWF2/unconfirmed/unspent",
         {row("bdcfb99b692a3418f79471ca970a201149d19ba97d0ca5c0b89949bdb627a1c9", 0, 85),
          row("575e01c3ef02809308c835308a643199e56c3eb80816a28c1db51f31968c413d", 0, 17000)}},
        // The hashes of this recording are cut short.
        {"/address/mirdE7PihEkLD3NVT7XoqaVrf7jVo7heVQ/unspent/all", {}},
        {"/address/1LY2M3RCkEVKo82ym1SQ1iZGQhM5Lf5Pkf/unspent/all",
         {row("137614ec60dba6aad2f37c469bb3f70d455964f10f565cb9a1874a85b5199466", 0, 312542128)}},
        {"/address/1FeexV6bAHb8ybZjqQMjJrcCrHGW9sb6uF/unspent/all?token=next",
         {row("8b334f90f231fd0a666c68f491ff59b0492122daec8d23302925befe11e3e981", 3, 500)}},
        {"…/16ZqP5Tb22KJuvSAbjNkoiZs13mmRmexZA/confirmed/unspent",
         {row("6b22c47e7956e5404e05c3dc87dc9f46e929acfd46c8dd7813a34e1218d2f9d1", 0, 100000)}},
        {"…/1NfHy82RqJVGEau9u5DwFRyGc6QKwDuQeT/unspent/all", {}},
    };
    for (const Case& c : cases) {
        ReaderWorld world;
        const auto is_it = [&](const Json& answer) { return json_text(answer, "path") == c.path; };
        const auto answer = std::find_if(recorded.begin(), recorded.end(), is_it);
        ASSERT_NE(recorded.end(), answer) << c.path;
        world.server.on("GET", "/list", json_text(*answer, "body"));
        EXPECT_TRUE(qv_clasp_read_utxo_list(world.server.base() + "/list", world.utxos, world.error))
            << c.path;
        EXPECT_EQ(c.rows, world.found()) << c.path;
    }
}

TEST(UtxoList, SkipsWhatIsNoCoinAndRefusesWhatIsNoList) {
    const std::string id = txid_of(1);
    struct Case {
        std::string element;
        std::vector<std::string> rows;
    };
    const auto with = [&](const std::string& rest) { return R"({"tx_hash":")" + id + "\"," + rest + "}"; };
    const std::vector<Case> cases = {
        {with(R"("tx_pos":2,"vout":3,"value":5)"), {row(id, 2, 5)}},
        {with(R"("tx_pos":"2","vout":3,"value":5)"), {row(id, 3, 5)}},
        {with(R"("value":5)"), {row(id, 0, 5)}},
        {with(R"("tx_pos":4294967295,"value":5)"), {row(id, 4294967295U, 5)}},
        {with(R"("tx_pos":0,"value":5.9)"), {row(id, 0, 5)}},
        {with(R"("tx_pos":0,"value":2100000000000000)"), {row(id, 0, 2'100'000'000'000'000)}},
        {with(R"("value":5,"isSpentInMempoolTx":true)"), {}},
        {with(R"("value":5,"isSpentInMempoolTx":"true")"), {row(id, 0, 5)}},
        {R"({"txid":")" + id + R"(","value":5})", {row(id, 0, 5)}},
        {R"({"tx_hash":7,"txid":")" + id + R"(","value":5})", {row(id, 0, 5)}},
        {R"({"tx_hash":"","txid":")" + id + R"(","value":5})", {}},
        {R"({"tx_hash":")" + id.substr(1) + R"(","value":5})", {}},
        {R"({"tx_hash":"g)" + id.substr(1) + R"(","value":5})", {}},
        {R"({"value":5})", {}},
    };
    std::vector<Case> all = cases;
    for (const char* pos : {"4294967296", "-1"})
        all.push_back({with(std::string(R"("value":5,"tx_pos":)") + pos), {}});
    for (const char* value :
         {"0.9", "0", "-7", "\"5\"", "true", "2100000000000001", "18446744073709551615", "1e300", "null"})
        all.push_back({with(std::string(R"("tx_pos":0,"value":)") + value), {}});
    for (const char* element : {"7", "null", "[]", "\"x\""}) all.push_back({element, {}});
    for (const Case& c : all) {
        ReaderWorld world;
        for (const std::string& list :
             {"[" + c.element + "]", R"({"error":"x","result":[)" + c.element + "]}"}) {
            Json document;
            ASSERT_TRUE(parse_json(list, document)) << list;
            world.utxos.clear();
            EXPECT_TRUE(qv_clasp_parse_utxo_list(document, world.utxos)) << list;
            EXPECT_EQ(c.rows, world.found()) << list;
        }
    }
    for (const char* body : {"", "{}", "null", "7", "\"[]\"", "[", R"({"result":{}})", "\xff"}) {
        ReaderWorld world;
        world.server.on("GET", "/list", body);
        EXPECT_FALSE(qv_clasp_read_utxo_list(world.server.base() + "/list", world.utxos, world.error))
            << body;
        EXPECT_EQ("bad utxo list", world.error) << body;
    }
}

TEST(FetchUtxos, MergesThreeListsLargestFirstAndEachCoinOnce) {
    ReaderWorld world;
    const std::string reversed = qv_clasp_reversed_txid(txid_of(1));
    world.list(ALL, {coin(txid_of(1), 0, 10), coin(txid_of(2), 0, 30)});
    world.list(UNSPENT, {{"result", {coin(txid_of(1), 1, 20), coin(txid_of(2), 0, 30)}}});
    world.list(UNCONFIRMED, {coin(reversed, 0, 10), coin(txid_of(3), 0, 40)});
    EXPECT_TRUE(world.fetch());
    EXPECT_TRUE(world.any_ok);
    const std::vector<std::string> found = world.found();
    ASSERT_EQ(4U, found.size());
    EXPECT_EQ(
        (std::vector<std::string>{row(txid_of(3), 0, 40), row(txid_of(2), 0, 30), row(txid_of(1), 1, 20)}),
        std::vector<std::string>(found.begin(), found.begin() + 3));
    EXPECT_EQ(10, world.utxos[3].sats);
}

TEST(FetchUtxos, TellsWhichListsAnsweredAndAsksAllThreeEachTime) {
    const ScriptedAnswer good{.status = 200, .body = "[]"};
    const ScriptedAnswer bad{.status = 200, .body = "{}"};
    const ScriptedAnswer busy{.status = 429, .body = ""};
    const ScriptedAnswer down{.status = 500, .body = "down"};
    const std::string throttled =
        "HTTP 429 – WhatsOnChain is rate-limiting. Wait a few seconds and try again.";
    // Of the three lists: what comes of it, and whether one of the main two answered.
    const auto expect = [](const std::vector<ScriptedAnswer>& lists, bool any_ok, const std::string& error) {
        SCOPED_TRACE(lists[0].body + lists[1].body + lists[2].body);
        ReaderWorld world;
        world.utxos = {{txid_of(9), 0, 9}};
        world.server.on("GET", ALL, {lists[0]});
        world.server.on("GET", UNSPENT, {lists[1]});
        world.server.on("GET", UNCONFIRMED, {lists[2]});
        EXPECT_EQ(error.empty(), world.fetch());
        EXPECT_EQ(any_ok, world.any_ok);
        EXPECT_EQ(error, world.error);
        EXPECT_TRUE(world.utxos.empty());
        for (const std::string& path : {ALL, UNCONFIRMED}) EXPECT_LE(1U, world.server.count("GET", path));
        EXPECT_EQ(0U, world.server.count("GET", HISTORY));
    };
    expect({good, good, good}, true, "");
    expect({down, good, bad}, true, "");
    expect({down, bad, good}, false, "");
    expect({bad, down, busy}, false, throttled);
    expect({busy, busy, bad}, false, "bad utxo list");
}

struct TracingWorld : ReaderWorld {
    // Transaction number N of the mempool spends output N of one funding transaction.
    void fill_mempool(unsigned count) {
        Json rows = Json::array();
        Json coins = Json::array();
        for (unsigned i = 1; i <= count; ++i) {
            rows.push_back({{"tx_hash", txid_of(i)}});
            coins.push_back(coin(txid_of(1000), i, 100 - static_cast<int>(i)));
            spend(txid_of(i), {{"txid", txid_of(1000)}, {"vout", i}});
        }
        list(HISTORY, {{"result", rows}});
        list(ALL, coins);
    }
    void spend(const std::string& txid, const Json& input) {
        list("/woc/tx/" + txid, {{"vin", {7, {{"coinbase", "00"}}, input}}});
    }
};

TEST(MempoolTracing, LooksAtTheSixteenNewestTransactions) {
    TracingWorld world;
    world.fill_mempool(18);
    EXPECT_TRUE(world.fetch());
    EXPECT_EQ((std::vector<std::string>{row(txid_of(1000), 1, 99), row(txid_of(1000), 2, 98)}),
              world.found());
    EXPECT_EQ(16U, world.server.count("GET", "/woc/tx/"));
}

TEST(MempoolTracing, MeetsEitherByteOrderAndGoesOnAfterAFailure) {
    TracingWorld world;
    world.fill_mempool(6);
    world.spend(txid_of(1), {{"txid", qv_clasp_reversed_txid(txid_of(1000))}, {"vout", 1}});
    world.server.on("GET", "/woc/tx/" + txid_of(2), "busy", 500);
    world.server.on("GET", "/woc/tx/" + txid_of(3), "not json");
    world.server.on("GET", "/woc/tx/" + txid_of(4), R"({"vin":{}})");
    world.spend(txid_of(5), {{"txid", txid_of(1000)}, {"vout", -1}});
    EXPECT_TRUE(world.fetch());
    EXPECT_EQ((std::vector<std::string>{row(txid_of(1000), 2, 98), row(txid_of(1000), 3, 97),
                                        row(txid_of(1000), 4, 96), row(txid_of(1000), 5, 95)}),
              world.found());
}

TEST(TransactionProbes, KnowMissingUnknownAndSilentApart) {
    const std::string id = txid_of(5);
    const ScriptedAnswer hex{.status = 200, .body = std::string(21, '0')};
    const ScriptedAnswer shorter{.status = 200, .body = std::string(20, '0')};
    const ScriptedAnswer record{.status = 200, .body = R"({"txid":"x"})"};
    const ScriptedAnswer other{.status = 200, .body = "{}"};
    const ScriptedAnswer missing{.status = 404, .body = ""};
    const ScriptedAnswer down{.status = 503, .body = "down"};
    struct Case {
        const char* name;
        std::string txid;
        ScriptedAnswer hex, record;
        bool exists;
        TxProbe probe;
        std::size_t requests;
    };
    for (const Case& c : {Case{"bytes", id, hex, down, true, TxProbe::Known, 1},
                          Case{"short bytes, record", id, shorter, record, true, TxProbe::Known, 2},
                          Case{"short bytes, no record", id, shorter, other, false, TxProbe::NoAnswer, 2},
                          Case{"missing", id, missing, missing, false, TxProbe::NotFound, 1},
                          Case{"missing bytes, record", id, missing, record, true, TxProbe::NotFound, 1},
                          Case{"down, missing", id, down, missing, false, TxProbe::NotFound, 2},
                          Case{"down", id, down, down, false, TxProbe::NoAnswer, 2},
                          Case{"no txid", "z" + id.substr(1), hex, record, false, TxProbe::NotFound, 0}}) {
        ReaderWorld world;
        world.server.on("GET", "/woc/tx/" + c.txid + "/hex", {c.hex});
        world.server.on("GET", "/woc/tx/" + c.txid, {c.record});
        EXPECT_EQ(c.exists, qv_clasp_tx_exists(c.txid)) << c.name;
        world.server.clear_requests();
        EXPECT_EQ(c.probe, qv_clasp_tx_probe(c.txid)) << c.name;
        EXPECT_EQ(c.requests, world.server.count("GET")) << c.name;
    }
}

}  // namespace
