#include "spend/balance.h"

#include <gtest/gtest.h>

#include <functional>
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
};

QvClaspUtxo coin(int number, std::int64_t sats) {
    return {txid_of(number), 0, sats};
}

// A cached read of an address of the receive chain, or a pending coin of it.
struct CachedRead {
    unsigned index;
    std::vector<QvClaspUtxo> coins;
    bool valid = true;
};
struct PendingCoin {
    unsigned index;
    int number;
    std::int64_t sats;
};

void expect_balance(const std::string& what, std::int64_t balance, const std::vector<CachedRead>& reads,
                    const std::vector<PendingCoin>& pending = {}, const std::function<void()>& arrange = {}) {
    const LoadedWallet wallet;
    QvClaspCoinRecords& records = qv_clasp_coin_records();
    for (const CachedRead& read : reads) {
        records.coin_cache.push_back({receive_address(read.index), read.coins, monotonic_ns(), read.valid});
    }
    for (const PendingCoin& row : pending) {
        QvClaspPendingCoin& added = records.pending_coins.emplace_back();
        added.txid = txid_of(row.number);
        added.sats = row.sats;
        added.hash160 = one_wallet_key("1'/0/" + std::to_string(row.index)).hash160;
    }
    if (arrange) arrange();
    EXPECT_EQ(qv_clasp_balance_estimate(), balance) << what;
}

void list_as_ordinal(unsigned index, int number) {
    OutpointSet outpoints;
    add_outpoint(outpoints, txid_of(number), 0);
    qv_clasp_ord_store(receive_address(index), outpoints, true);
}

}  // namespace

// Index 0 is the current address; 1 to 3 are others of the wallet, 4 is not.
TEST(BalanceEstimate, CountsEachSpendableCoinOnce) {
    expect_balance("nothing known", -1, {});
    expect_balance("an empty wallet that was read", 0, {{0, {}}});
    expect_balance("a failed read", -1, {{0, {coin(1, 5000)}, false}});
    expect_balance("small coins of the current address", 5002, {{0, {coin(1, 5000), coin(2, 2)}}});
    expect_balance("one satoshi may be an ordinal", 5000, {{0, {coin(1, 5000), coin(2, 1)}}});
    expect_balance("a good read clears one satoshi", 1, {{0, {coin(1, 1), coin(9, 7000)}}}, {},
                   [] { list_as_ordinal(0, 9); });
    expect_balance("spent coins, in either byte order", 70, {{0, {coin(1, 5000), coin(2, 600), coin(3, 70)}}},
                   {}, [] {
                       qv_clasp_mark_spent(txid_of(1), 0);
                       qv_clasp_mark_spent(qv_clasp_reversed_txid(txid_of(2)), 0);
                   });
    expect_balance("one coin in two places and two byte orders", 5000,
                   {{0, {coin(1, 5000), {qv_clasp_reversed_txid(txid_of(1)), 0, 5000}}}}, {{0, 1, 5000}});
    expect_balance("sums beyond an amount", MOST, {{0, {coin(1, MOST - 1), coin(2, MOST - 1)}}});
}

TEST(BalanceEstimate, TellsTheCurrentAddressFromOthers) {
    expect_balance("change of the current address, of any size", 5030, {{0, {coin(1, 5000)}}}, {{0, 2, 30}});
    expect_balance("change alone", 30, {}, {{0, 2, 30}});
    expect_balance("others from a thousand on", 1000, {{0, {}}, {2, {coin(1, 999), coin(2, 1000)}}});
    expect_balance("change of others from a thousand on", 1000, {{0, {}}}, {{2, 1, 999}, {2, 2, 1000}});
    expect_balance("another's address", 0, {{0, {}}, {4, {coin(1, 5000)}}});
    expect_balance("an invalid read of another", 0, {{0, {}}, {2, {coin(1, 5000)}, false}});
    expect_balance("only another was read", 5000, {{2, {coin(1, 5000)}}});
    expect_balance("a pending ordinal, at any age", 0, {{0, {}}}, {{0, 1, 6000}}, [] {
        list_as_ordinal(2, 1);
        FakeClock::advance_seconds(60);
    });
}

TEST(NoteSpend, ShowsAFigureThatDoesNotJump) {
    struct Figures {
        std::int64_t fresh, spent, shown, projected;
    };
    const auto expect = [](const std::string& what, std::int64_t cached, std::int64_t projected, int age_s,
                           const Figures& figures) {
        LoadedWallet wallet;
        QvClaspSession& session = qv_clasp_session();
        session.cached_balance = cached;
        session.projected_balance = projected;
        session.projected_at_ns = monotonic_ns();
        FakeClock::advance_seconds(age_s);
        EXPECT_EQ(qv_clasp_note_spend(figures.fresh, figures.spent), figures.shown) << what;
        EXPECT_EQ(session.projected_balance, figures.projected) << what;
        EXPECT_EQ(session.cached_balance, figures.fresh < 0 ? cached : figures.shown) << what;
        EXPECT_EQ(wallet.home.exists(FACE), figures.fresh >= 0) << what;
        EXPECT_EQ(json_int(wallet.home.read_json(FACE), "sats", -1), figures.shown) << what;
    };
    const std::int64_t M = 1'000'000;
    expect("nothing fresh is known", 5 * M, -1, 0, {-1, 2 * M, -1, -1});
    expect("nothing was known", -1, -1, 0, {7000, 2000, 7000, -1});
    expect("the read has not seen the payment", 5 * M, -1, 0, {5'008'001, 2 * M, 3 * M, 3 * M});
    expect("within the margin below", 5 * M, -1, 0, {2'992'000, 2 * M, 2'992'000, 3 * M});
    expect("below the margin", 5 * M, -1, 0, {2'991'999, 2 * M, 3 * M, 3 * M});
    expect("more spent than was known", 1000, -1, 0, {9001, 5000, 0, 0});
    expect("a read that jumps back up", 3 * M, 3 * M, 44, {5 * M, 0, 3 * M, 3 * M});
    expect("believed after a while", 3 * M, 3 * M, 45, {5 * M, 0, 5 * M, 3 * M});
    expect("just within the jump", 3 * M, 3 * M, 1, {4 * M, 0, 4 * M, 3 * M});
    expect("the largest figures", MOST, -1, 0, {MOST, 1, MOST, MOST - 1});
    expect("the largest projection", MOST, MOST, 1, {MOST, 0, MOST, MOST});
}
