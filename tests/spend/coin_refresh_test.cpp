#include <mutex>

#include "spend/coin_guard.h"
#include "tests/spend/guard_world.h"

namespace {

using Keys = std::vector<std::string>;

std::string index_path(const std::string& address) {
    return "/api/txos/address/" + address + "/unspent";
}

TEST(RefreshCoins, ReadsTheStaleAddressesAndNoIndex) {
    GuardWorld world;
    world.chain_lists(receive_address(0), {{txid_of(1), 0, 5000}, {txid_of(2), 0, 9000}});
    GuardWorld::cache(receive_address(1), {});
    qv_clasp_mark_spent(txid_of(1), 0);
    EXPECT_TRUE(world.refresh()) << world.error;
    EXPECT_TRUE(world.lock.owns_lock());
    EXPECT_EQ(0U, world.server.count("GET", receive_address(1)));
    EXPECT_EQ(1U, world.server.count("GET", identity_address() + "/unspent/all"));
    EXPECT_EQ(0U, world.server.count("GET", "/api/"));
    EXPECT_TRUE(world.collect());
    EXPECT_EQ(Keys{key(2)}, world.candidates());

    // Addresses that no list answered for are asked again at once, the others after eight seconds.
    world.server.clear_requests();
    EXPECT_TRUE(world.refresh());
    EXPECT_EQ(0U, world.server.count("GET", receive_address(0)));
    EXPECT_EQ(1U, world.server.count("GET", receive_address(2) + "/unspent/all"));
    FakeClock::advance_seconds(8);
    EXPECT_TRUE(world.refresh());
    EXPECT_EQ(1U, world.server.count("GET", receive_address(0) + "/unspent/all"));
}

TEST(RefreshCoins, HoldsBackEveryCoinOfOneSatoshiAfterwards) {
    GuardWorld world;
    world.chain_lists(receive_address(0), {{txid_of(1), 0, 1}, {txid_of(2), 0, 9000}});
    GuardWorld::cache(receive_address(1), {{txid_of(3), 0, 1}});
    for (const std::string& address : {receive_address(0), receive_address(1)})
        GuardWorld::index_says(address, {});
    EXPECT_TRUE(world.refresh());
    EXPECT_TRUE(world.collect());
    EXPECT_EQ(Keys{key(2)}, world.candidates());
    EXPECT_TRUE(GuardWorld::records().index_failed);
    for (const QvClaspOrdinalRow& row : GuardWorld::records().ordinal_rows) {
        EXPECT_EQ(row.address == receive_address(1), row.read_ok) << row.address;
    }
}

TEST(RefreshCoins, AReadWithoutTheMainListsKeepsOldCoinsAndPendingOnes) {
    GuardWorld world(document_with_receive(0));
    const std::string here = receive_address(0);
    GuardWorld::cache(here, {{txid_of(1), 0, 5000}});
    qv_clasp_expire_cache();
    GuardWorld::add_pending({txid_of(4), 0, 800}, here);
    world.server.on("GET", "/woc/address/" + here + "/unconfirmed/unspent",
                    R"([{"tx_hash":")" + txid_of(2) + R"(","tx_pos":0,"value":700}])");
    EXPECT_TRUE(world.refresh());
    EXPECT_TRUE(qv_clasp_is_pending(txid_of(4), 0));
    EXPECT_TRUE(world.collect());
    EXPECT_EQ((Keys{key(4), key(2), key(1)}), world.candidates());
}

TEST(RefreshCoins, ACompleteReadPrunesPendingCoinsThatItDoesNotShow) {
    GuardWorld world(document_with_receive(0));
    const std::string here = receive_address(0);
    for (unsigned number = 1; number <= 3; ++number) GuardWorld::add_pending({txid_of(number), 0, 800}, here);
    GuardWorld::records().last_sent_txid = txid_of(3);
    world.chain_lists(here, {{txid_of(1), 0, 800}});
    EXPECT_TRUE(world.refresh());
    EXPECT_TRUE(qv_clasp_is_pending(txid_of(1), 0));
    EXPECT_FALSE(qv_clasp_is_pending(txid_of(2), 0));
    EXPECT_TRUE(qv_clasp_is_pending(txid_of(3), 0));
}

TEST(RefreshCoins, TheMutexIsFreeDuringTheReadsAndAChangedWalletEndsThem) {
    enum class Change { None, OtherWallet, NoWallet };
    for (const Change change : {Change::None, Change::OtherWallet, Change::NoWallet}) {
        GuardWorld world;
        add_wallet(world.home, "w2", one_wallet_document(OTHER_WORDS));
        world.chain_lists(receive_address(0), {{txid_of(1), 0, 5000}});
        std::once_flag once;
        world.server.on_any([&](const ScriptedRequest&, ScriptedAnswer&) {
            std::call_once(once, [&] {
                const WalletLock lock = qv_clasp_lock_wallet();
                if (change == Change::None) return;
                qv_clasp_wipe_session();
                qv_clasp_set_active_wallet_id(change == Change::OtherWallet ? "w2" : "");
            });
            return false;
        });
        const bool is_same = change == Change::None;
        EXPECT_EQ(is_same, world.refresh());
        EXPECT_EQ(is_same ? "" : "wallet changed.", world.error);
        EXPECT_TRUE(world.lock.owns_lock());
        EXPECT_EQ(is_same, qv_clasp_cache_row(receive_address(0)) != nullptr);
    }
}

// 1 is a token, 2 a plain coin; the index has not seen 4 yet, and may know it for a token in a moment.
TEST(ReadAddresses, ASatoshiThatTheIndexDoesNotShowAsPlainIsNoCandidate) {
    for (const bool tokens_answer : {true, false}) {
        GuardWorld world(document_with_receive(0));
        const std::string here = receive_address(0);
        GuardWorld::cache(here, {{txid_of(5), 0, 1}});
        world.chain_lists(
            here, {{txid_of(1), 0, 1}, {txid_of(2), 0, 1}, {txid_of(3), 0, 5000}, {txid_of(4), 0, 1}});
        const std::string plain = R"([{"txid":")" + qv_clasp_reversed_txid(txid_of(2)) + R"(","vout":0}])";
        world.server.on("GET", index_path(here), plain);
        const std::string tokens = R"([{"txid":")" + txid_of(1) + R"(","vout":0,"spend":""}])";
        world.server.on("GET", "/api/bsv20/" + here + "/unspent", tokens_answer ? tokens : "busy",
                        tokens_answer ? 200 : 500);
        std::vector<QvClaspAddressRead> reads(1);
        reads[0].address = here;
        qv_clasp_read_addresses(reads, true, qv_clasp_generation());
        qv_clasp_commit_reads(reads);
        EXPECT_TRUE(world.collect());
        EXPECT_EQ(tokens_answer ? (Keys{key(3), key(2)}) : Keys{key(3)}, world.candidates());
    }
}

TEST(Resync, TheIndexTakesSpentCoinsBackAndPrunesPendingOnes) {
    GuardWorld world(document_with_receive(1));
    const std::string here = receive_address(0);
    GuardWorld::cache(here, {{txid_of(4), 0, 400}});
    GuardWorld::add_pending({txid_of(5), 0, 500}, here);
    GuardWorld::add_pending({txid_of(6), 0, 600}, receive_address(1));
    for (unsigned number = 1; number <= 3; ++number) qv_clasp_mark_spent(txid_of(number), 0);
    const Json rows = {{{"txid", qv_clasp_reversed_txid(txid_of(1))}, {"vout", 0}, {"satoshis", 9000}},
                       {{"txid", txid_of(2)}, {"vout", 0}, {"satoshis", 1}}};
    world.server.on("GET", index_path(here), dump_json(rows, -1));
    world.server.on("GET", index_path(receive_address(1)), "[]");
    qv_clasp_resync_from_index(world.lock);
    EXPECT_TRUE(world.lock.owns_lock());
    EXPECT_FALSE(qv_clasp_is_pending(txid_of(5), 0));
    EXPECT_TRUE(qv_clasp_is_pending(txid_of(6), 0));
    ASSERT_EQ(3U, qv_clasp_cache_row(here)->coins.size());
    EXPECT_EQ(9000, qv_clasp_cache_row(here)->coins[0].sats);
    GuardWorld::restart();
    EXPECT_FALSE(qv_clasp_is_spent(txid_of(1), 0));
    EXPECT_TRUE(qv_clasp_is_spent(txid_of(2), 0));
    EXPECT_TRUE(qv_clasp_is_spent(txid_of(3), 0));
}

}  // namespace
