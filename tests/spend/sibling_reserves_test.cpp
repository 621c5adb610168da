#include "spend/sibling_reserves.h"

#include <gtest/gtest.h>

#include "base/clock.h"
#include "tests/support/fake_clock.h"
#include "tests/support/test_home.h"
#include "wallet/binds.h"
#include "wallet/coin_records.h"
#include "wallet/wallet_session.h"

namespace {

const std::string TXID = "00112233445566778899aabbccddeeff00112233445566778899aabbccddee01";
const std::string UPPER = "00112233445566778899AABBCCDDEEFF00112233445566778899AABBCCDDEE01";

struct SiblingWorld {
    TestHome home;
    FakeClock clock;
    WalletLock lock = qv_clasp_lock_wallet();
    explicit SiblingWorld(const std::string& wallet_id = "w1") { qv_clasp_set_active_wallet_id(wallet_id); }
    ~SiblingWorld() {
        qv_clasp_wipe_session();
        qv_clasp_set_active_wallet_id("");
    }
};

TEST(SiblingReserves, EachFileHasItsOwnWayOfNamingACoin) {
    const std::string bazaar = "/bazaar/reserves_w1.json";
    const std::string atelier = "/atelier/reserves_w1.json";
    const std::string swapfloor = "/swapfloor/reserves_w1.json";
    const std::string locks = "/atelier/offer_locks_w1.json";
    const std::int64_t now = 1'790'000'000;
    const auto reserves = [](const Json& row) { return Json{{"reserves", {5, nullptr, row}}}; };
    const auto holds = [](const Json& row) { return Json{{"holds", {row}}}; };
    struct Case {
        const char* name;
        std::string path;
        Json document;
        bool reserved;
    };
    const std::vector<Case> cases = {
        {"bazaar", bazaar, reserves({{"utxo", TXID + "_2"}}), true},
        {"bazaar, capitals and colon", bazaar, reserves({{"utxo", UPPER + ":2"}}), true},
        {"bazaar, expired", bazaar, reserves({{"utxo", TXID + "_2"}, {"exp", 1}}), true},
        {"bazaar, other output", bazaar, reserves({{"utxo", TXID + "_20"}}), false},
        {"bazaar, wrong root", bazaar, holds({{"utxo", TXID + "_2"}}), false},
        {"atelier, picture", atelier, reserves({{"pic_utxo", UPPER + ":2"}}), true},
        {"atelier, certificate", atelier, reserves({{"cert_utxo", UPPER + "_2"}, {"exp", 0}}), true},
        {"atelier, not a coin", atelier, reserves({{"pic", TXID + "_2"}, {"cert", TXID + "_2"}}), false},
        {"atelier, just expired", atelier, reserves({{"pic_utxo", TXID + "_2"}, {"exp", now - 1}}), false},
        {"atelier, expires now", atelier, reserves({{"pic_utxo", TXID + "_2"}, {"exp", now}}), true},
        {"atelier, expiry of another type", atelier, reserves({{"pic_utxo", TXID + "_2"}, {"exp", "1"}}),
         true},
        {"swapfloor", swapfloor, holds({{"utxo", TXID + "_2"}}), true},
        {"swapfloor, capitals", swapfloor, holds({{"utxo", UPPER + "_2"}}), false},
        {"swapfloor, colon", swapfloor, holds({{"utxo", TXID + ":2"}}), false},
        {"lock", locks, {{"utxos", {5, TXID + "_2"}}}, true},
        {"lock, capitals", locks, {{"utxos", {UPPER + "_2"}}}, true},
        {"lock, colon", locks, {{"utxos", {TXID + ":2"}}}, false},
        {"lock, wrong root", locks, Json::array({TXID + "_2"}), false},
    };
    for (const Case& c : cases) {
        const SiblingWorld world;
        EXPECT_FALSE(is_reserved_by_sibling(read_sibling_reserves(), UPPER, 2)) << c.name;
        world.home.write(c.path, c.document);
        EXPECT_EQ(c.reserved, is_reserved_by_sibling(read_sibling_reserves(), UPPER, 2)) << c.name;
        EXPECT_FALSE(is_reserved_by_sibling(read_sibling_reserves(), TXID, 3)) << c.name;
        world.home.write(c.path, std::string("{ damaged"));
        EXPECT_FALSE(is_reserved_by_sibling(read_sibling_reserves(), UPPER, 2)) << c.name;
    }
}

TEST(SiblingReserves, TheWalletIdIsMadeSafeInTwoWays) {
    const std::string long_id(70, 'x');
    struct Case {
        std::string id, reserves, locks;
    };
    const std::vector<Case> cases = {
        {"w1-a_B", "w1-a_B", "w1-a_B"},
        {"w 1/é", "w_1___", "w1"},
        {"", "none", "none"},
        {"/.", "__", "none"},
        {long_id, long_id.substr(0, 64), long_id.substr(0, 64)},
    };
    for (const Case& c : cases) {
        const SiblingWorld world(c.id);
        world.home.write("/bazaar/reserves_" + c.reserves + ".json",
                         Json{{"reserves", {{{"utxo", TXID + "_1"}}}}});
        world.home.write("/atelier/offer_locks_" + c.locks + ".json", Json{{"utxos", {TXID + "_2"}}});
        EXPECT_TRUE(is_reserved_by_sibling(read_sibling_reserves(), TXID, 1)) << c.id;
        EXPECT_TRUE(is_reserved_by_sibling(read_sibling_reserves(), TXID, 2)) << c.id;
    }
}

TEST(OfferLocks, OfSpentCoinsAreDroppedAndTheRestIsWrittenInLowerCase) {
    const SiblingWorld world;
    const std::string path = "/atelier/offer_locks_w1.json";
    const Json kept = {TXID + "_2", TXID + "_x", TXID, "free text", TXID + "_4294967297"};
    Json all = kept;
    all[0] = UPPER + "_2";
    world.home.write(path, Json{{"utxos", all}});
    const std::string before = world.home.read(path);
    prune_offer_locks();
    EXPECT_EQ(before, world.home.read(path));

    all.push_back(qv_clasp_reversed_txid(TXID) + "_1");
    world.home.write(path, Json{{"utxos", all}, {"other", 1}});
    qv_clasp_mark_spent(TXID, 1);
    prune_offer_locks();
    EXPECT_EQ(dump_json({{"other", 1}, {"utxos", kept}}, 2), world.home.read(path));
}

}  // namespace
