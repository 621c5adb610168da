#include "wallet/coin_records.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "base/hex.h"
#include "tests/support/fake_clock.h"
#include "tests/support/hostile_json.h"
#include "tests/support/one_wallet.h"
#include "wallet/address.h"
#include "wallet/wallet_document.h"
#include "wallet/wallet_session.h"

namespace {

const std::string SPENT_PATH = "/ord_snap/" + ONE_WALLET_ID + "_spent.json";
const std::string CHANGE_PATH = "/ord_snap/" + ONE_WALLET_ID + "_change.json";
const std::string TXID = "00112233445566778899aabbccddeeff00112233445566778899aabbccddee01";
const std::string REVERSED = "01eeddccbbaa99887766554433221100ffeeddccbbaa99887766554433221100";
const std::string OTHER = std::string(63, 'c') + "d";

// A loaded wallet with three receive addresses and a clock that stands still.
struct RecordsWorld {
    TestHome home;
    FakeClock clock;
    WalletLock lock = qv_clasp_lock_wallet();

    RecordsWorld() {
        Json document = one_wallet_document();
        document["recv"] = {0, 2, 0, 0, 0, 0};
        bind_one_wallet(home, document);
        EXPECT_TRUE(qv_clasp_load());
    }
    ~RecordsWorld() {
        qv_clasp_wipe_session();
        qv_clasp_set_active_wallet_id("");
    }
    static void restart() {
        qv_clasp_wipe_session();
        EXPECT_TRUE(qv_clasp_load());
    }
    void write_spent(const Json& outpoints) const { home.write(SPENT_PATH, Json{{"outpoints", outpoints}}); }
};

QvClaspCoinRecords& records() {
    return qv_clasp_coin_records();
}

QvClaspPendingCoin pending_at(const std::string& txid, std::uint32_t vout, std::int64_t sats,
                              const std::string& address) {
    QvClaspPendingCoin coin{.txid = txid, .vout = vout, .sats = sats, .priv = {}, .pub = {}};
    EXPECT_TRUE(qv_clasp_address_to_hash160(address, coin.hash160)) << address;
    return coin;
}

std::string private_hex(const std::string& path) {
    return qv_clasp_hex_encode(one_wallet_key(path).priv);
}

std::vector<std::string> keys_of(const std::vector<QvClaspUtxo>& coins) {
    std::vector<std::string> keys;
    for (const QvClaspUtxo& coin : coins) keys.push_back(qv_clasp_outpoint_key(coin.txid, coin.vout));
    return keys;
}

TEST(OutpointKeys, MeetInEitherCaseAndByteOrder) {
    const std::string upper = "00112233445566778899AABBCCDDEEFF00112233445566778899AABBCCDDEE01";
    EXPECT_EQ(TXID + ":4294967295", qv_clasp_outpoint_key(upper, 4294967295U));
    EXPECT_EQ(REVERSED, qv_clasp_reversed_txid(upper));
    EXPECT_EQ("", qv_clasp_reversed_txid(TXID.substr(1)));
    struct Case {
        std::string txid;
        std::uint32_t vout;
        bool same;
    };
    for (const Case& c :
         {Case{TXID, 3, true}, Case{upper, 3, true}, Case{REVERSED, 3, true}, Case{TXID, 4, false},
          Case{OTHER, 3, false}, Case{"", 3, false}, Case{TXID.substr(2), 3, false}}) {
        EXPECT_EQ(c.same, qv_clasp_same_outpoint(upper, 3, c.txid, c.vout)) << c.txid << c.vout;
        OutpointSet set;
        set.insert(TXID + ":3");
        EXPECT_EQ(c.same, outpoint_in_set(set, c.txid, c.vout)) << c.txid << c.vout;
    }
}

TEST(SpentOutpoints, StandTwiceInTheFileAndOutliveARestart) {
    const RecordsWorld world;
    qv_clasp_mark_spent(TXID, 7);
    Json outpoints = world.home.read_json(SPENT_PATH)["outpoints"];
    std::sort(outpoints.begin(), outpoints.end());
    EXPECT_EQ(Json::array({TXID + ":7", REVERSED + ":7"}), outpoints);
    EXPECT_EQ(std::string::npos, world.home.read(SPENT_PATH).find('\n'));
    RecordsWorld::restart();
    EXPECT_TRUE(qv_clasp_is_spent(REVERSED, 7));
    EXPECT_FALSE(qv_clasp_is_spent(TXID, 0));
}

TEST(SpentOutpoints, FollowWhatAnotherProgramWrote) {
    const RecordsWorld world;
    qv_clasp_mark_spent(TXID, 0);
    world.write_spent({OTHER + ":1"});
    qv_clasp_load_spent();
    EXPECT_FALSE(qv_clasp_is_spent(TXID, 0));
    EXPECT_TRUE(qv_clasp_is_spent(OTHER, 1));
    world.write_spent({OTHER + ":1", OTHER + ":2"});
    qv_clasp_mark_all_spent({{TXID, 5, 10}, {TXID, 6, 10}});
    RecordsWorld::restart();
    for (const std::uint32_t vout : {1U, 2U}) EXPECT_TRUE(qv_clasp_is_spent(OTHER, vout)) << vout;
    for (const std::uint32_t vout : {5U, 6U}) EXPECT_TRUE(qv_clasp_is_spent(TXID, vout)) << vout;
}

TEST(SpentOutpoints, AFileOfTheSameSizeAndTimeIsKnownByItsEnd) {
    const RecordsWorld world;
    qv_clasp_mark_spent(TXID, 0);
    const std::filesystem::path path = utf8_path(world.home.root() + SPENT_PATH);
    const auto time = std::filesystem::last_write_time(path);
    std::string text = world.home.read(SPENT_PATH);
    const std::size_t last_digit = text.rfind(":0") + 1;
    text[last_digit] = '1';
    world.home.write(SPENT_PATH, text);
    std::filesystem::last_write_time(path, time);
    qv_clasp_load_spent();
    EXPECT_TRUE(qv_clasp_is_spent(TXID, 1));
}

TEST(SpentOutpoints, ADamagedFileLeavesMemoryAndIsReplaced) {
    std::vector<std::string> damaged = NO_OBJECTS;
    damaged.push_back(R"({"outpoints":{}})");
    for (const std::string& content : damaged) {
        const RecordsWorld world;
        qv_clasp_mark_spent(TXID, 0);
        world.home.write(SPENT_PATH, content);
        qv_clasp_load_spent();
        EXPECT_TRUE(qv_clasp_is_spent(TXID, 0)) << content;
        RecordsWorld::restart();
        EXPECT_FALSE(qv_clasp_is_spent(TXID, 0)) << content;
        qv_clasp_mark_spent(OTHER, 0);
        EXPECT_EQ(2U, world.home.read_json(SPENT_PATH)["outpoints"].size()) << content;
    }
}

TEST(SpentOutpoints, RowsThatAreNoOutpointsAreSkippedAndAHugeFileIsNotRead) {
    const RecordsWorld world;
    world.write_spent({1, nullptr, "", TXID, TXID + ":", TXID + ":-1", TXID + ":4294967296", TXID + ":1x",
                       TXID + "_1", "zz" + TXID.substr(2) + ":1", Json::object(), TXID + ":4294967295"});
    qv_clasp_load_spent();
    EXPECT_EQ(OutpointSet{TXID + ":4294967295"}, records().spent_set);

    std::filesystem::resize_file(utf8_path(world.home.root() + SPENT_PATH), 100U << 20U);
    qv_clasp_load_spent();
    EXPECT_TRUE(qv_clasp_is_spent(TXID, 4294967295U));
}

TEST(SpentOutpoints, AreTakenBackInBothByteOrdersAndOnlyThenWritten) {
    const RecordsWorld world;
    qv_clasp_mark_all_spent({{TXID, 0, 10}, {TXID, 1, 10}});
    qv_clasp_unmark_spent({{REVERSED, 0, 10}, {OTHER, 0, 10}});
    RecordsWorld::restart();
    EXPECT_FALSE(qv_clasp_is_spent(TXID, 0));
    EXPECT_TRUE(qv_clasp_is_spent(TXID, 1));
    const std::string indented = dump_json(world.home.read_json(SPENT_PATH), 4);
    world.home.write(SPENT_PATH, indented);
    qv_clasp_unmark_spent({{OTHER, 0, 10}});
    EXPECT_EQ(indented, world.home.read(SPENT_PATH));
}

TEST(CoinRecords, WhatCannotBeWrittenIsKeptInMemory) {
    for (const bool real_scope : {true, false}) {
        const RecordsWorld world;
        if (real_scope) world.home.write("/ord_snap", std::string("no folder"));
        if (!real_scope) qv_clasp_set_active_wallet_id("wallet");
        qv_clasp_mark_spent(TXID, 0);
        records().pending_coins = {pending_at(OTHER, 1, 500, receive_address(0))};
        qv_clasp_save_change();
        records().pending_coins.clear();
        qv_clasp_load_spent();
        qv_clasp_load_change();
        EXPECT_TRUE(qv_clasp_is_spent(TXID, 0));
        EXPECT_TRUE(qv_clasp_is_pending(OTHER, 1));
        EXPECT_EQ(world.home.exists("/ord_snap"), real_scope) << "a wallet without a scope has no files";
        if (!real_scope) continue;
        remove_file(world.home.root() + "/ord_snap");
        qv_clasp_mark_spent(OTHER, 0);
        RecordsWorld::restart();
        EXPECT_TRUE(qv_clasp_is_spent(TXID, 0)) << "written later";
    }
}

TEST(PendingCoins, AreWrittenWithoutKeysAndFindThemAgain) {
    const RecordsWorld world;
    const std::string identity = one_wallet_key("100'/0/0").address;
    records().pending_coins = {pending_at(TXID, 2, 600, receive_address(2)),
                               pending_at(TXID, 3, 700, identity)};
    records().pending_coins[0].priv.assign(std::string(64, 'a'));
    qv_clasp_save_change();
    const Json rows = Json::array({{{"txid", TXID}, {"vout", 2}, {"sats", 600}, {"addr", receive_address(2)}},
                                   {{"txid", TXID}, {"vout", 3}, {"sats", 700}, {"addr", identity}}});
    EXPECT_EQ(Json({{"coins", rows}}), world.home.read_json(CHANGE_PATH));
    RecordsWorld::restart();
    qv_clasp_load_change();
    ASSERT_EQ(2U, records().pending_coins.size());
    EXPECT_EQ(private_hex("1'/0/2"), records().pending_coins[0].priv.view());
    EXPECT_EQ(qv_clasp_hex_encode(one_wallet_key("1'/0/2").pub), records().pending_coins[0].pub);
    EXPECT_EQ(private_hex("100'/0/0"), records().pending_coins[1].priv.view());
    EXPECT_TRUE(qv_clasp_is_pending(REVERSED, 3));
}

TEST(PendingCoins, RowsThatAreNoCoinsOfThisWalletAreSkipped) {
    const RecordsWorld world;
    const Json good = {{"txid", TXID}, {"vout", 0}, {"sats", 1}, {"addr", receive_address(0)}};
    const std::vector<std::pair<const char*, std::vector<Json>>> bad = {
        {"txid", {5, TXID.substr(1), "zz" + TXID.substr(2)}},
        {"vout", {-1, 4294967296, "0", 0.5, nullptr}},
        {"sats", {0, -5, "1", 1.0, 1e300, 9223372036854775807}},
        {"addr", {nullptr, "1BitcoinEaterAddressDontSendf59kuE"}},
    };
    Json rows = Json::array({nullptr, 7, "x", Json::array(), Json::object(), good, good});
    for (const auto& [key, values] : bad) {
        for (const Json& value : values) {
            rows.push_back(good);
            rows.back()["txid"] = OTHER;
            rows.back()[key] = value;
        }
    }
    world.home.write(CHANGE_PATH, Json{{"coins", rows}});
    qv_clasp_load_change();
    ASSERT_EQ(1U, records().pending_coins.size());
    EXPECT_EQ(TXID, records().pending_coins[0].txid);
    world.home.write(CHANGE_PATH, std::string("{\"coins\": 3}"));
    qv_clasp_load_change();
    EXPECT_EQ(1U, records().pending_coins.size());
}

TEST(PendingCoins, GoWhenSpentOrNotShownUnlessTheyAreTheLastSends) {
    const RecordsWorld world;
    const std::string here = receive_address(0);
    const std::string last = std::string(63, 'e') + "1";
    const std::string unseen = std::string(63, 'f') + "1";
    qv_clasp_mark_spent(last, 9);
    records().last_sent_txid = last;
    records().pending_coins = {pending_at(TXID, 0, 10, here), pending_at(unseen, 0, 10, here),
                               pending_at(last, 0, 10, here), pending_at(last, 9, 10, here),
                               pending_at(unseen, 1, 10, receive_address(1))};
    qv_clasp_prune_pending(here, {{REVERSED, 0, 10}});
    EXPECT_EQ(3U, records().pending_coins.size());
    EXPECT_TRUE(qv_clasp_is_pending(TXID, 0));
    EXPECT_TRUE(qv_clasp_is_pending(last, 0));
    EXPECT_TRUE(qv_clasp_is_pending(unseen, 1));
    qv_clasp_prune_pending("no address", {});
    EXPECT_EQ(3U, records().pending_coins.size());
}

TEST(OrdinalJudgement, FollowsTheFreshRowOfTheAddress) {
    struct Case {
        const char* name;
        bool stored, read_ok;
        std::int64_t age_ms;
        bool failed_elsewhere;
        std::int64_t sats;
        bool listed, expected;
    };
    const std::vector<Case> cases = {
        {"no row, one satoshi", false, false, 0, false, 1, false, true},
        {"no row, more", false, false, 0, false, 2, false, false},
        {"good row, one satoshi, not listed", true, true, 19999, false, 1, false, false},
        {"good row, listed", true, true, 19999, false, 5000, true, true},
        {"good row, one satoshi, listed", true, true, 0, false, 1, true, true},
        {"row too old, one satoshi", true, true, 20000, false, 1, false, true},
        {"row too old, listed", true, true, 20000, false, 5000, true, false},
        {"failed row, one satoshi", true, false, 0, false, 1, false, true},
        {"failed row, more", true, false, 0, false, 5000, false, false},
        {"index failed elsewhere, one satoshi", true, true, 0, true, 1, false, true},
        {"index failed elsewhere, listed", true, true, 0, true, 5000, true, true},
        {"index failed elsewhere, more", true, true, 0, true, 5000, false, false},
    };
    for (const Case& c : cases) {
        const RecordsWorld world;
        OutpointSet listed;
        if (c.listed) listed.insert(qv_clasp_outpoint_key(REVERSED, 0));
        if (c.stored) qv_clasp_ord_store("here", listed, c.read_ok);
        if (c.failed_elsewhere) qv_clasp_ord_store("there", {}, false);
        FakeClock::advance_milliseconds(c.age_ms);
        EXPECT_EQ(c.expected, qv_clasp_is_ordinal_at("here", {TXID, 0, c.sats})) << c.name;
    }
}

TEST(OrdinalJudgement, WithoutAnAddressAnyRowCountsAtAnyAge) {
    const RecordsWorld world;
    qv_clasp_ord_store("here", {TXID + ":0"}, true);
    FakeClock::advance_seconds(3600);
    EXPECT_TRUE(qv_clasp_is_ordinal_anywhere({REVERSED, 0, 5000}));
    EXPECT_FALSE(qv_clasp_is_ordinal_anywhere({OTHER, 0, 1}));
    qv_clasp_ord_store("there", {}, false);
    EXPECT_TRUE(qv_clasp_is_ordinal_anywhere({OTHER, 0, 1})) << "the index has failed a moment ago";
    EXPECT_FALSE(qv_clasp_is_ordinal_anywhere({OTHER, 0, 2}));
    FakeClock::advance_seconds(20);
    EXPECT_FALSE(qv_clasp_is_ordinal_anywhere({OTHER, 0, 1}));
    qv_clasp_ord_store("here", {}, true);
    EXPECT_FALSE(qv_clasp_is_ordinal_anywhere({TXID, 0, 5000})) << "a later row replaces the one before";
}

TEST(CoinCache, KeepsOldCoinsIfToldAndAlwaysPendingOnes) {
    const RecordsWorld world;
    const std::string here = receive_address(0);
    const std::string spent = std::string(63, 'b') + "1";
    qv_clasp_mark_spent(spent, 0);
    qv_clasp_cache_store(here, {{TXID, 0, 10}, {spent, 0, 20}, {OTHER, 0, 30}}, true, false);
    records().pending_coins = {pending_at(OTHER, 1, 40, here), pending_at(spent, 0, 20, here),
                               pending_at(OTHER, 2, 50, receive_address(1)),
                               pending_at(REVERSED, 0, 10, here)};
    qv_clasp_cache_store(here, {{REVERSED, 0, 10}}, true, true);
    EXPECT_EQ((std::vector<std::string>{REVERSED + ":0", OTHER + ":0", OTHER + ":1"}),
              keys_of(qv_clasp_cache_row(here)->coins));
    qv_clasp_cache_store(here, {}, true, false);
    EXPECT_EQ((std::vector<std::string>{OTHER + ":1", REVERSED + ":0"}),
              keys_of(qv_clasp_cache_row(here)->coins));
    qv_clasp_mark_spent(REVERSED, 1);
    qv_clasp_mark_spent(TXID, 0);
    qv_clasp_prune_spent_from_cache();
    EXPECT_EQ((std::vector<std::string>{OTHER + ":1"}), keys_of(qv_clasp_cache_row(here)->coins));
}

}  // namespace
