#include "spend/sent_record.h"

#include <gtest/gtest.h>

#include "base/clock.h"
#include "tests/spend/play_network.h"
#include "wallet/coin_records.h"
#include "wallet/wallet_document.h"

namespace {

const std::string SENT = std::string(62, 'd') + "01";
const std::string MONEY = std::string(62, 'e') + "02";

QvClaspTxOutput pays(const sandbox::KeyPair& key, std::int64_t sats) {
    return {sats, sandbox::p2pkh_script(key.hash160)};
}

QvClaspCoin coin_of(const sandbox::KeyPair& key, std::uint32_t vout) {
    QvClaspCoin coin;
    coin.txid = MONEY;
    coin.vout = vout;
    coin.sats = 9000;
    coin.hash160 = key.hash160;
    coin.priv.assign("key of the coin");
    coin.pub = "pub of the coin";
    return coin;
}

const QvClaspPendingCoin* pending_at(std::uint32_t vout) {
    for (const QvClaspPendingCoin& coin : qv_clasp_coin_records().pending_coins) {
        if (coin.txid == SENT && coin.vout == vout) return &coin;
    }
    return nullptr;
}

// The one wallet, loaded, with receive addresses up to index 2.
struct LoadedWallet {
    PlayNetwork net{[] {
        Json document = one_wallet_document();
        document["recv"][1] = 2;
        return document;
    }()};
    WalletLock lock = qv_clasp_lock_wallet();
    sandbox::KeyPair current = one_wallet_key("1'/0/0");
    LoadedWallet() { EXPECT_TRUE(qv_clasp_load()); }
};

}  // namespace

TEST(SentRecord, TakesTheOutputsThatComeHome) {
    LoadedWallet wallet;
    const sandbox::KeyPair chain = one_wallet_key("1'/0/2");
    const sandbox::KeyPair identity = one_wallet_key("100'/0/0");
    const sandbox::KeyPair beyond = one_wallet_key("1'/0/3");
    const sandbox::KeyPair oracle = sandbox::key_from_priv(Bytes(32, 0x55));
    const sandbox::KeyPair change = sandbox::key_from_priv(Bytes(32, 0x56));
    const sandbox::KeyPair stranger = sandbox::key_from_priv(Bytes(32, 0x57));
    qv_clasp_coin_records().coin_cache.push_back({oracle.address, {}, 5, false});
    QvClaspTxOutput long_script = pays(wallet.current, 60);
    long_script.script.push_back(0x6a);

    qv_clasp_record_sent(
        {coin_of(oracle, 0), coin_of(oracle, 1)},
        {pays(stranger, 10), pays(wallet.current, 20), pays(chain, 30), pays(identity, 40), pays(beyond, 50),
         long_script, pays(wallet.current, 0), pays(oracle, 70), pays(change, 80)},
        SENT, change.hash160);

    std::map<std::uint32_t, std::int64_t> taken;
    for (const QvClaspPendingCoin& coin : qv_clasp_coin_records().pending_coins) taken[coin.vout] = coin.sats;
    EXPECT_EQ(taken, (std::map<std::uint32_t, std::int64_t>{{1, 20}, {2, 30}, {3, 40}, {7, 70}, {8, 80}}));
    EXPECT_EQ(pending_at(7)->priv.view(), "key of the coin");
    EXPECT_EQ(pending_at(1)->priv.view(), qv_clasp_session().priv.view());
    EXPECT_EQ(pending_at(1)->pub, qv_clasp_session().pub);
    // In the cache under their addresses, fresh and valid; the change target has no row and gets none.
    for (const auto& [address, sats] : {std::pair{wallet.current.address, 20}, std::pair{chain.address, 30},
                                        std::pair{identity.address, 40}, std::pair{oracle.address, 70}}) {
        const QvClaspCoinCacheRow* row = qv_clasp_cache_row(address);
        ASSERT_TRUE(row && row->coins.size() == 1) << address;
        EXPECT_EQ(row->coins[0].sats, sats);
        EXPECT_TRUE(qv_clasp_cache_fresh(address));
    }
    EXPECT_EQ(qv_clasp_cache_row(change.address), nullptr);
    const Json coins = wallet.net.record("_change.json")["coins"];
    ASSERT_EQ(coins.size(), 5U);
    EXPECT_EQ(coins[0], (Json{{"txid", SENT}, {"vout", 1}, {"sats", 20}, {"addr", wallet.current.address}}));
}

TEST(SentRecord, WritesOffTheCoinsAndMovesThePictureOn) {
    LoadedWallet wallet;
    QvClaspCoinRecords& records = qv_clasp_coin_records();
    records.coin_cache.push_back(
        {wallet.current.address, {{MONEY, 0, 9000}, {MONEY, 1, 9000}, {MONEY, 2, 9000}}, 1, true});
    QvClaspPendingCoin pending;
    pending.txid = MONEY;
    pending.sats = 9000;
    pending.hash160 = wallet.current.hash160;
    for (pending.vout = 0; pending.vout < 4; ++pending.vout) records.pending_coins.push_back(pending);
    qv_clasp_save_change();
    records.pending_coins.clear();  // as a collection leaves it
    const std::uint64_t generation = qv_clasp_generation();

    qv_clasp_record_sent({coin_of(wallet.current, 0), coin_of(wallet.current, 1)},
                         {pays(wallet.current, 500)}, SENT, wallet.current.hash160);

    EXPECT_EQ(wallet.net.record("_spent.json")["outpoints"].size(), 4U) << "both byte orders of two coins";
    EXPECT_EQ(records.last_sent_txid, SENT);
    EXPECT_GT(qv_clasp_generation(), generation);
    EXPECT_EQ(records.last_send_at_ns, monotonic_ns());
    ASSERT_EQ(records.spent_from.size(), 1U);
    EXPECT_EQ(records.spent_from[0].first, wallet.current.address);
    std::vector<std::int64_t> cached;
    for (const QvClaspUtxo& coin : qv_clasp_cache_row(wallet.current.address)->coins)
        cached.push_back(coin.sats);
    EXPECT_EQ(cached, (std::vector<std::int64_t>{9000, 500}));
    // The file's coins came back, without the spent ones.
    EXPECT_EQ(wallet.net.record("_change.json")["coins"].size(), 3U);

    // A second record of the same transaction adds nothing.
    qv_clasp_record_sent({coin_of(wallet.current, 0)}, {pays(wallet.current, 500)}, SENT,
                         wallet.current.hash160);
    EXPECT_EQ(wallet.net.record("_change.json")["coins"].size(), 3U);
    EXPECT_EQ(qv_clasp_cache_row(wallet.current.address)->coins.size(), 2U);
    EXPECT_EQ(records.spent_from.size(), 1U);
}

TEST(FinishKnownTx, RecordsWhatItKnowsOrReadsItBack) {
    LoadedWallet wallet;
    EXPECT_EQ(qv_clasp_finish_known_tx({coin_of(wallet.current, 0)}, {}, "no txid", {}), "");
    EXPECT_FALSE(qv_clasp_is_spent(MONEY, 0));
    EXPECT_EQ(qv_clasp_finish_known_tx({coin_of(wallet.current, 0)}, {}, SENT, {}), "success: " + SENT);
    EXPECT_TRUE(qv_clasp_is_spent(MONEY, 0));
    EXPECT_EQ(qv_clasp_coin_records().last_broadcast_txid, SENT);

    const std::string money = wallet.net.fund(wallet.current.address, {700, 800});
    EXPECT_EQ(qv_clasp_finish_known_tx({}, {}, money, {}), "success: " + money);
    EXPECT_TRUE(qv_clasp_is_pending(money, 0));
    EXPECT_TRUE(qv_clasp_is_pending(money, 1));
}
