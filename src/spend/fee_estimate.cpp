#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/text.h"
#include "spend/coin_guard.h"
#include "spend/send.h"
#include "spend/transaction.h"
#include "wallet/address.h"
#include "wallet/coin_records.h"
#include "wallet/wallet_document.h"
#include "wallet/wallet_session.h"

namespace {

constexpr std::int64_t NO_WALLET = -1;
constexpr std::int64_t NO_COINS_READ = -2;
constexpr std::int64_t PICTURE_LIFE_NS = 5'000'000'000;
// A payment is the one output that the selection knows of.
constexpr std::size_t PAYMENT_OUTPUTS = 1;
constexpr std::size_t P2PKH_SCRIPT_SIZE = 25;

// The candidates of a send without their keys, in a form in which the selection of any amount is one search.
struct CoinPicture {
    std::string scope;
    std::uint64_t generation = 0;  // 0: none was taken yet
    std::int64_t taken_at_ns = 0;
    bool coins_read = false;
    std::vector<std::int64_t> totals;  // of the first coins, one more at each place
    std::vector<std::int64_t> reach;   // the largest amount that so many coins, or fewer, cover
    bool adds_up = true;               // false: the coin after the last one would overflow an amount
};

// Guarded by the wallet mutex.
CoinPicture& shared_picture() {
    static CoinPicture picture;
    return picture;
}

std::int64_t payment_size() {
    return tx_output_size(P2PKH_SCRIPT_SIZE);
}

bool is_current(const CoinPicture& picture) {
    return picture.generation == qv_clasp_generation() && picture.scope == qv_clasp_scope_key() &&
           monotonic_ns() - picture.taken_at_ns < PICTURE_LIFE_NS;
}

void add_candidates(CoinPicture& picture, const std::vector<QvClaspCoin>& coins) {
    std::int64_t total = 0;
    for (const QvClaspCoin& coin : coins) {
        if (!is_hex64(coin.txid)) continue;
        picture.adds_up = coin.sats >= 0 && coin.sats <= std::numeric_limits<std::int64_t>::max() - total;
        if (!picture.adds_up) return;
        total += coin.sats;
        picture.totals.push_back(total);
        const std::int64_t covers =
            total - selection_fee(picture.totals.size(), PAYMENT_OUTPUTS, payment_size());
        picture.reach.push_back(picture.reach.empty() ? covers : std::max(covers, picture.reach.back()));
    }
}

bool any_address_read() {
    const std::vector<std::string> addresses = qv_clasp_spend_addresses();
    return std::any_of(addresses.begin(), addresses.end(), [](const std::string& address) {
        const QvClaspCoinCacheRow* row = qv_clasp_cache_row(address);
        return row && row->valid;
    });
}

CoinPicture take_picture(WalletLock& wallet_lock) {
    CoinPicture picture;
    // As they are before the lock is free: what happens meanwhile makes the picture an old one.
    picture.scope = qv_clasp_scope_key();
    picture.generation = qv_clasp_generation();
    std::string error;
    if (qv_clasp_refresh_coins(wallet_lock, error)) {
        std::vector<QvClaspCoin> coins;
        std::int64_t total = 0;
        picture.coins_read = qv_clasp_collect_coins(coins, total, error) || any_address_read();
        add_candidates(picture, coins);
        // The collection takes pending coins out of their list, and this one leads to no send.
        qv_clasp_load_change();
    }
    picture.taken_at_ns = monotonic_ns();
    return picture;
}

// The fee of the transaction that the selection makes of these coins.
std::int64_t fee_from(const CoinPicture& picture, std::int64_t sats) {
    const auto enough = std::lower_bound(picture.reach.begin(), picture.reach.end(), sats);
    const bool covered = enough != picture.reach.end();
    const std::size_t inputs =
        covered ? static_cast<std::size_t>(enough - picture.reach.begin()) + 1 : picture.totals.size();
    if (!covered && !picture.adds_up) {
        return qv_clasp_fee_for_size(estimated_tx_size(inputs, PAYMENT_OUTPUTS, payment_size()));
    }
    const std::int64_t total = inputs == 0 ? 0 : picture.totals[inputs - 1];
    return plan_tx(inputs, total, sats, PAYMENT_OUTPUTS, payment_size()).fee;
}

}  // namespace

std::int64_t qv_clasp_estimate_send_fee(const std::string& /*dest*/, std::int64_t sats) {
    WalletLock wallet_lock = qv_clasp_lock_wallet();
    Hash160 own_hash160{};
    if (!qv_clasp_load() || !qv_clasp_address_to_hash160(qv_clasp_session().address, own_hash160)) {
        return NO_WALLET;
    }
    if (!is_current(shared_picture())) {
        // Taken on the side: the lock is free during the reads.
        CoinPicture picture = take_picture(wallet_lock);
        shared_picture() = std::move(picture);
    }
    if (!shared_picture().coins_read) return NO_COINS_READ;
    return fee_from(shared_picture(), std::max<std::int64_t>(sats, 1));
}
