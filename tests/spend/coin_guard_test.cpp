#include "spend/coin_guard.h"

#include <functional>
#include <limits>

#include "tests/spend/guard_world.h"

namespace {

using Keys = std::vector<std::string>;

TEST(SpendAddresses, AreTheReceiveChainTheIdentityAndTheOwnOracles) {
    const GuardWorld world;
    Settings changed = settings();
    changed.house_oracles[1].oracle_b = one_wallet_key("3'/0/0").address;
    changed.house_oracles[1].oracle_c = one_wallet_key("4'/0/0").address;
    changed.house_oracles[2].oracle_a = receive_address(1);
    changed.house_oracles[2].oracle_c = receive_address(3);
    world.home.use_settings(changed);
    const Keys expected = {receive_address(0),
                           receive_address(1),
                           receive_address(2),
                           identity_address(),
                           one_wallet_key("4'/0/0").address,
                           one_wallet_key("3'/0/0").address};
    EXPECT_EQ(expected, qv_clasp_spend_addresses());
}

TEST(CoinAdmission, EachRuleAloneTurnsACoinAway) {
    const std::string here = receive_address(0);
    const QvClaspUtxo plain{txid_of(1), 2, 5000}, satoshi{txid_of(1), 2, 1};
    const Json reserve = {{"reserves", {{{"utxo", txid_of(1) + "_2"}, {"pic_utxo", txid_of(1) + "_2"}}}}};
    using Arrange = std::function<void(GuardWorld&)>;
    const auto write = [](const char* path, const Json& document) -> Arrange {
        return [=](GuardWorld& world) { world.home.write(path + ("_" + ONE_WALLET_ID + ".json"), document); };
    };
    const Arrange nothing = [](GuardWorld&) {};
    const Arrange listed = [&](GuardWorld&) { GuardWorld::index_says(here, {key(1, 2)}); };
    const Arrange good_read = [&](GuardWorld&) { GuardWorld::index_says(here, {}); };
    struct Case {
        const char* name;
        QvClaspUtxo utxo;
        std::string address;
        Arrange arrange;
        bool admitted;
    };
    const std::vector<Case> cases = {
        {"plain", plain, here, nothing, true},
        {"short txid", {txid_of(1).substr(1), 2, 5000}, here, nothing, false},
        {"bad txid", {"x" + txid_of(1).substr(1), 2, 5000}, here, nothing, false},
        {"spent", plain, here, [](GuardWorld&) { qv_clasp_mark_spent(txid_of(1), 2); }, false},
        {"one satoshi", satoshi, here, nothing, false},
        {"one satoshi after a good read", satoshi, here, good_read, true},
        {"one satoshi, without an address", satoshi, "", nothing, false},
        {"one satoshi, without an address, after a good read", satoshi, "", good_read, true},
        {"token of one satoshi", satoshi, here, listed, false},
        {"listed ordinal", plain, here, listed, false},
        {"listed ordinal, without an address", plain, "", listed, false},
        {"bazaar", plain, here, write("/bazaar/reserves", reserve), false},
        {"atelier", plain, here, write("/atelier/reserves", reserve), false},
        {"swapfloor", plain, here, write("/swapfloor/reserves", {{"holds", reserve["reserves"]}}), false},
        {"offer lock", plain, here, write("/atelier/offer_locks", {{"utxos", {txid_of(1) + "_2"}}}), false},
    };
    for (const Case& c : cases) {
        GuardWorld world;
        c.arrange(world);
        GuardWorld::add_pending(c.utxo, here);
        CoinAdmission context{.coins = &world.coins};
        Hash160 hash160{};
        ASSERT_TRUE(qv_clasp_address_to_hash160(here, hash160));
        qv_clasp_admit_coin(context, c.utxo, SecretText("aa"), "bb", hash160, c.address);
        ASSERT_EQ(c.admitted ? 1U : 0U, world.coins.size()) << c.name;
        EXPECT_EQ(c.admitted ? c.utxo.sats : 0, context.total) << c.name;
        EXPECT_EQ(c.admitted ? 0U : 1U, GuardWorld::records().pending_coins.size()) << c.name;
    }
}

TEST(CoinAdmission, TakesACoinOnceAndNeverLetsTheSumOverflow) {
    GuardWorld world;
    CoinAdmission context{.coins = &world.coins};
    world.coins.push_back({.txid = txid_of(9),
                           .vout = 0,
                           .sats = 1,
                           .script_sig = {},
                           .prev_script = {},
                           .priv = {},
                           .pub = {}});
    const auto admit = [&](const std::string& txid, std::uint32_t vout, std::int64_t sats) {
        qv_clasp_admit_coin(context, {txid, vout, sats}, SecretText("aa"), "bb", Hash160{}, "");
    };
    admit(txid_of(9), 0, 5);
    admit(txid_of(1), 0, 5000);
    admit(qv_clasp_reversed_txid(txid_of(1)), 0, 5000);
    EXPECT_EQ((Keys{key(9), key(1)}), world.candidates());
    EXPECT_EQ(5000, context.total);
    admit(txid_of(1), 1, std::numeric_limits<std::int64_t>::max());
    admit(txid_of(1), 2, std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(std::numeric_limits<std::int64_t>::max(), context.total);
    EXPECT_EQ("aa", world.coins[1].priv.view());
    EXPECT_TRUE(world.coins[1].script_sig.empty() && world.coins[1].prev_script.empty());
}

TEST(CollectCoins, PendingChangeComesFirstThenTheChainThenTheIdentity) {
    GuardWorld world;
    GuardWorld::add_pending({txid_of(1), 1, 700}, receive_address(2));
    GuardWorld::add_pending({txid_of(2), 0, 600}, identity_address());
    qv_clasp_save_change();
    GuardWorld::cache(identity_address(), {{txid_of(6), 0, 90}});
    GuardWorld::cache(receive_address(1), {{txid_of(4), 0, 500}, {txid_of(5), 0, 400}, {txid_of(1), 1, 700}});
    GuardWorld::cache(receive_address(0), {{txid_of(3), 0, 300}});
    GuardWorld::cache(one_wallet_key("5'/0/0").address, {{txid_of(7), 0, 80}});
    qv_clasp_cache_store(receive_address(2), {{txid_of(8), 0, 70}}, false, false);
    EXPECT_TRUE(world.collect());
    EXPECT_EQ((Keys{key(1, 1), key(2), key(3), key(4), key(5), key(6)}), world.candidates());
    EXPECT_EQ(700 + 600 + 300 + 500 + 400 + 90, world.total);
    const std::vector<std::string> paths = {"1'/0/2", "100'/0/0", "1'/0/0", "1'/0/1", "1'/0/1", "100'/0/0"};
    for (std::size_t i = 0; i < paths.size(); ++i) {
        const sandbox::KeyPair pair = one_wallet_key(paths[i]);
        EXPECT_EQ(qv_clasp_hex_encode(pair.priv), world.coins[i].priv.view()) << i;
        EXPECT_EQ(qv_clasp_hex_encode(pair.pub), world.coins[i].pub) << i;
        EXPECT_EQ(pair.address, qv_clasp_address_from_hash160(world.coins[i].hash160)) << i;
    }
    EXPECT_EQ(0U, world.server.count("GET"));
    // A candidate has left the list of pending coins; the file still holds it for the next collection.
    EXPECT_TRUE(GuardWorld::records().pending_coins.empty());
    EXPECT_TRUE(world.collect());
    EXPECT_EQ(key(1, 1), world.candidates()[0]);
}

TEST(CollectCoins, WithoutACandidateTheLastTransactionsAreReadBack) {
    const Json transaction = {
        {"vout", {{{"n", 1}, {"value", 9.998e-5}, {"scriptPubKey", {{"addresses", {receive_address(1)}}}}}}}};
    for (const bool sent_known : {true, false}) {
        GuardWorld world;
        GuardWorld::records().last_sent_txid = txid_of(1);
        GuardWorld::records().last_broadcast_txid = txid_of(2);
        world.server.on("GET", "/woc/tx/" + txid_of(sent_known ? 1 : 2), dump_json(transaction, -1));
        EXPECT_TRUE(world.collect()) << sent_known;
        EXPECT_EQ(Keys{key(sent_known ? 1 : 2, 1)}, world.candidates());
        EXPECT_EQ(9998, world.total);
        EXPECT_EQ(sent_known ? 0U : 1U, world.server.count("GET", txid_of(2)));
    }
    GuardWorld world;
    EXPECT_FALSE(world.collect());
    EXPECT_EQ(0, world.total);
    EXPECT_EQ("", world.error);
    EXPECT_EQ(0U, world.server.count("GET"));
}

TEST(ChangeTarget, AvoidsTheOraclesThatTheGuardKnows) {
    const std::string none, first = receive_address(0), second = receive_address(1),
                            third = receive_address(2);
    struct Case {
        std::string oracle_a, oracle_b, oracle_c, target;
    };
    for (const Case& c : {Case{none, none, none, first}, Case{none, first, none, first},
                          Case{none, none, first, second}, Case{first, third, second, third}}) {
        GuardWorld world;
        Settings changed = settings();
        changed.house_oracles[1].oracle_a = c.oracle_a;
        changed.house_oracles[2].oracle_b = c.oracle_b;
        changed.house_oracles[0].oracle_c = c.oracle_c;
        world.home.use_settings(changed);
        Hash160 hash160{};
        EXPECT_TRUE(qv_clasp_change_target(hash160, world.error)) << c.target;
        EXPECT_EQ(c.target, qv_clasp_address_from_hash160(hash160));
        EXPECT_FALSE(qv_clasp_is_house_oracle(""));
    }
}

}  // namespace
