#include "spend/balance.h"

#include <gtest/gtest.h>

#include <limits>

#include "base/clock.h"
#include "tests/support/fake_clock.h"
#include "tests/support/one_wallet.h"
#include "wallet/coin_records.h"
#include "wallet/wallet_document.h"

namespace {

constexpr std::int64_t MOST = std::numeric_limits<std::int64_t>::max();
const std::string FACE = "/tx_hist/" + ONE_WALLET_ID + "_face.json";

std::string txid_of(int number) {
    return std::string(62, 'a') + std::to_string(10 + number);
}

// The one wallet, loaded, with receive addresses up to index 3 and nothing known of its coins.
struct LoadedWallet {
    TestHome home;
    FakeClock clock;
    WalletLock lock;

    LoadedWallet() {
        Json document = one_wallet_document();
        document["recv"][1] = 3;
        bind_one_wallet(home, document);
        lock = qv_clasp_lock_wallet();
        EXPECT_TRUE(qv_clasp_load());
    }
    ~LoadedWallet() { qv_clasp_wipe_session(); }

    static void cache(const std::string& address, const std::vector<QvClaspUtxo>& coins, bool valid = true) {
        qv_clasp_coin_records().coin_cache.push_back({address, coins, monotonic_ns(), valid});
    }
    static void pending(const sandbox::KeyPair& key, int number, std::int64_t sats) {
        QvClaspPendingCoin coin;
        coin.txid = txid_of(number);
        coin.sats = sats;
        coin.hash160 = key.hash160;
        qv_clasp_coin_records().pending_coins.push_back(coin);
    }
    static void listed_as_ordinal(const std::string& address, int number) {
        OutpointSet outpoints;
        add_outpoint(outpoints, txid_of(number), 0);
        qv_clasp_ord_store(address, outpoints, true);
    }
    static QvClaspUtxo coin(int number, std::int64_t sats) { return {txid_of(number), 0, sats}; }
};

}  // namespace

TEST(BalanceEstimate, CountsEachSpendableCoinOnce) {
    struct Case {
        std::string what;
        std::function<void(LoadedWallet&)> arrange;
        std::int64_t balance;
    };
    using W = LoadedWallet;
    const std::string current = receive_address(0);
    const std::string other = receive_address(2);
    const std::string identity = one_wallet_key("100'/0/0").address;
    const sandbox::KeyPair current_key = one_wallet_key("1'/0/0");
    const sandbox::KeyPair other_key = one_wallet_key("1'/0/2");
    const std::vector<Case> cases = {
        {"nothing known", [](W&) {}, -1},
        {"an empty wallet that was read", [&](W&) { W::cache(current, {}); }, 0},
        {"a failed read", [&](W&) { W::cache(current, {W::coin(1, 5000)}, false); }, -1},
        {"small coins of the current address count",
         [&](W&) {
             W::cache(current, {W::coin(1, 5000), W::coin(2, 2)});
         },
         5002},
        {"a coin of one satoshi may be an ordinal",
         [&](W&) {
             W::cache(current, {W::coin(1, 5000), W::coin(2, 1)});
         },
         5000},
        {"a good read clears a coin of one satoshi",
         [&](W&) {
             W::listed_as_ordinal(current, 9);
             W::cache(current, {W::coin(1, 1), W::coin(9, 7000)});
         },
         1},
        {"spent coins are gone, in either byte order",
         [&](W&) {
             qv_clasp_mark_spent(txid_of(1), 0);
             qv_clasp_mark_spent(qv_clasp_reversed_txid(txid_of(2)), 0);
             W::cache(current, {W::coin(1, 5000), W::coin(2, 600), W::coin(3, 70)});
         },
         70},
        {"a coin in two places and two byte orders",
         [&](W&) {
             W::cache(current, {W::coin(1, 5000), {qv_clasp_reversed_txid(txid_of(1)), 0, 5000}});
             W::pending(current_key, 1, 5000);
         },
         5000},
        {"pending change of the current address, of any size",
         [&](W&) {
             W::cache(current, {W::coin(1, 5000)});
             W::pending(current_key, 2, 30);
         },
         5030},
        {"pending change alone", [&](W&) { W::pending(current_key, 2, 30); }, 30},
        {"other addresses count from a thousand on",
         [&](W&) {
             W::cache(current, {});
             W::cache(other, {W::coin(1, 999), W::coin(2, 1000)});
             W::cache(identity, {W::coin(3, 2000)});
         },
         3000},
        {"another's address does not count",
         [&](W&) { W::cache(current, {}), W::cache(receive_address(4), {W::coin(1, 5000)}); }, 0},
        {"an invalid row of another address does not count",
         [&](W&) { W::cache(current, {}), W::cache(other, {W::coin(1, 5000)}, false); }, 0},
        {"pending change of other addresses from a thousand on",
         [&](W&) {
             W::cache(current, {});
             W::pending(other_key, 1, 999);
             W::pending(other_key, 2, 1000);
         },
         1000},
        {"a pending ordinal does not count, at any age",
         [&](W&) {
             W::cache(current, {});
             W::listed_as_ordinal(other, 1);
             FakeClock::advance_seconds(60);
             W::pending(current_key, 1, 6000);
         },
         0},
        {"only another address was read", [&](W&) { W::cache(other, {W::coin(1, 5000)}); }, 5000},
        {"sums beyond an amount stay at the largest",
         [&](W&) {
             W::cache(current, {W::coin(1, MOST - 1), W::coin(2, MOST - 1)});
         },
         MOST},
    };
    for (const Case& row : cases) {
        LoadedWallet wallet;
        row.arrange(wallet);
        EXPECT_EQ(qv_clasp_balance_estimate(), row.balance) << row.what;
    }
}

TEST(NoteSpend, ShowsAFigureThatDoesNotJump) {
    struct Case {
        std::string what;
        std::int64_t cached;
        std::int64_t projected;
        std::int64_t projected_age_s;
        std::int64_t fresh;
        std::int64_t spent;
        std::int64_t shown;
        std::int64_t projected_after;
    };
    const std::vector<Case> cases = {
        {"nothing fresh is known", 5'000'000, -1, 0, -1, 2'000'000, -1, -1},
        {"nothing was known", -1, -1, 0, 7000, 2000, 7000, -1},
        {"the fresh figure has not seen the payment", 5'000'000, -1, 0, 5'008'001, 2'000'000, 3'000'000,
         3'000'000},
        {"within the margin above", 5'000'000, -1, 0, 5'008'000, 2'000'000, 5'008'000, 3'000'000},
        {"the fresh figure has seen it", 5'000'000, -1, 0, 3'000'000, 2'000'000, 3'000'000, 3'000'000},
        {"within the margin below", 5'000'000, -1, 0, 2'992'000, 2'000'000, 2'992'000, 3'000'000},
        {"below the margin", 5'000'000, -1, 0, 2'991'999, 2'000'000, 3'000'000, 3'000'000},
        {"more spent than was known", 1000, -1, 0, 9001, 5000, 0, 0},
        {"a read that jumps back up", 3'000'000, 3'000'000, 44, 5'000'000, 0, 3'000'000, 3'000'000},
        {"a read that is believed in time", 3'000'000, 3'000'000, 45, 5'000'000, 0, 5'000'000, 3'000'000},
        {"a read just within the jump", 3'000'000, 3'000'000, 1, 4'000'000, 0, 4'000'000, 3'000'000},
        {"no projection", 3'000'000, -1, 0, 5'000'000, 0, 5'000'000, -1},
        {"figures near the largest", MOST, -1, 0, MOST, 1, MOST, MOST - 1},
        {"a projection near the largest", MOST, MOST, 1, MOST, 0, MOST, MOST},
    };
    for (const Case& row : cases) {
        LoadedWallet wallet;
        QvClaspSession& session = qv_clasp_session();
        session.cached_balance = row.cached;
        session.projected_balance = row.projected;
        session.projected_at_ns = monotonic_ns();
        FakeClock::advance_seconds(row.projected_age_s);
        EXPECT_EQ(qv_clasp_note_spend(row.fresh, row.spent), row.shown) << row.what;
        EXPECT_EQ(session.projected_balance, row.projected_after) << row.what;
        EXPECT_EQ(session.cached_balance, row.fresh < 0 ? row.cached : row.shown) << row.what;
        if (row.fresh >= 0) {
            EXPECT_EQ(wallet.home.read_json(FACE)["sats"], row.shown) << row.what;
        }
    }
}

TEST(BalanceFace, IsOneLineAndServesTheFirstPaint) {
    const TestHome home;
    bind_one_wallet(home);
    EXPECT_EQ(qv_clasp_cached_balance(), -1) << "no address is known before a load";
    {
        const WalletLock lock = qv_clasp_lock_wallet();
        ASSERT_TRUE(qv_clasp_load());
        qv_clasp_show_balance(4321);
    }
    EXPECT_EQ(home.read(FACE), R"({"address":")" + receive_address(0) + R"(","sats":4321})");
    EXPECT_EQ(qv_clasp_cached_balance(), 4321);
    {
        const WalletLock lock = qv_clasp_lock_wallet();
        qv_clasp_session().cached_balance = -1;
    }
    EXPECT_EQ(qv_clasp_cached_balance(), 4321) << "from the file";

    const std::string own = receive_address(0);
    const std::vector<std::pair<std::string, std::int64_t>> faces = {
        {R"({"address":")" + own + R"(","sats":0})", 0},
        {R"({"address":")" + own + R"(","sats":7,"more":[]})", 7},
        {R"({"address":")" + receive_address(1) + R"(","sats":7})", -1},
        {R"({"address":")" + own + R"(","sats":7.0})", -1},
        {R"({"address":")" + own + R"(","sats":"7"})", -1},
        {R"({"address":")" + own + R"(","sats":-5})", -1},
        {R"({"address":")" + own + R"(","sats":18446744073709551615})", -1},
        {R"({"sats":7})", -1},
        {R"([7])", -1},
        {"{", -1},
        {"", -1}};
    for (const auto& [content, sats] : faces) {
        home.write(FACE, content);
        EXPECT_EQ(qv_clasp_cached_balance(), sats) << content;
    }
}

TEST(BalanceFace, IsNotWrittenForAnUnknownBalance) {
    LoadedWallet wallet;
    qv_clasp_show_balance(-1);
    EXPECT_FALSE(wallet.home.exists(FACE));
}
