#include <algorithm>

#include "base/parallel_for.h"
#include "spend/chain_readers.h"
#include "spend/coin_guard.h"
#include "spend/ordinal_reader.h"
#include "wallet/wallet_document.h"

namespace {

constexpr int REFRESH_ROUNDS = 3;

// One job: it touches its own row only.
void read_address(QvClaspAddressRead& read, bool with_ordinals) {
    read.started = true;
    read.read_ok = qv_clasp_fetch_utxos(read.address, read.coins, read.error, read.any_ok);
    if (!with_ordinals) return;
    // What an incomplete answer does not list may still carry a token, so it is stored as a failed read.
    bool is_complete = false;
    read.ordinals_ok =
        qv_clasp_read_ordinal_outpoints(read.address, read.ordinals, read.plain, is_complete) && is_complete;
}

// The index may lag behind the chain: a satoshi that it has not looked at may be a token that has just come.
void hold_back_unlisted(QvClaspAddressRead& read) {
    const QvClaspCoinCacheRow* row = qv_clasp_cache_row(read.address);
    if (!read.ordinals_ok || row == nullptr) return;
    for (const QvClaspUtxo& coin : row->coins) {
        if (coin.sats != 1 || outpoint_in_set(read.plain, coin.txid, coin.vout)) continue;
        read.ordinals.insert(qv_clasp_outpoint_key(coin.txid, coin.vout));
    }
}

std::vector<QvClaspAddressRead> stale_addresses() {
    std::vector<QvClaspAddressRead> reads;
    for (std::string& address : qv_clasp_spend_addresses()) {
        if (!qv_clasp_cache_fresh(address)) reads.emplace_back().address = std::move(address);
    }
    return reads;
}

// Nothing of the wallet may be assumed after the mutex was free.
bool is_same_wallet(const std::string& scope) {
    return qv_clasp_load() && qv_clasp_scope_key() == scope;
}

struct IndexCoins {
    std::string address;
    std::vector<QvClaspUtxo> coins{};
    bool found = false;
};

}  // namespace

void qv_clasp_read_addresses(std::vector<QvClaspAddressRead>& reads, bool with_ordinals,
                             std::uint64_t generation) {
    parallel_for(reads.size(), reads.size(), [&](std::size_t i) {
        if (qv_clasp_generation() == generation) read_address(reads[i], with_ordinals);
    });
}

void qv_clasp_commit_reads(std::vector<QvClaspAddressRead>& reads) {
    qv_clasp_coin_records().read_error.clear();
    for (QvClaspAddressRead& read : reads) {
        if (!read.error.empty() && !read.read_ok) qv_clasp_coin_records().read_error = read.error;
        std::erase_if(read.coins,
                      [](const QvClaspUtxo& coin) { return qv_clasp_is_spent(coin.txid, coin.vout); });
        qv_clasp_cache_store(read.address, read.coins, read.read_ok, !read.any_ok);
        if (read.read_ok && read.any_ok) qv_clasp_prune_pending(read.address, read.coins);
        hold_back_unlisted(read);
        qv_clasp_ord_store(read.address, read.ordinals, read.ordinals_ok);
    }
}

bool qv_clasp_refresh_coins(WalletLock& wallet_lock, std::string& error_out) {
    error_out.clear();
    if (!qv_clasp_load()) {
        error_out = "no wallet";
        return false;
    }
    const std::string scope = qv_clasp_scope_key();
    // A payment that another thread records meanwhile stops the reads; with a part of the coins this one
    // would pay from too few, and show too low a balance. The last round lets nobody come between.
    for (int round = 0; round < REFRESH_ROUNDS; ++round) {
        std::vector<QvClaspAddressRead> reads = stale_addresses();
        if (reads.empty()) return true;
        const std::uint64_t generation = qv_clasp_generation();
        const bool alone = round == REFRESH_ROUNDS - 1;
        if (!alone) wallet_lock.unlock();
        // A payment takes the coins, not the index: an address that is read here loses its ordinal row, and
        // every coin of one satoshi at it is held back.
        qv_clasp_read_addresses(reads, false, generation);
        if (!alone) wallet_lock.lock();
        if (!is_same_wallet(scope)) {
            error_out = "wallet changed.";
            return false;
        }
        qv_clasp_commit_reads(reads);
        if (std::ranges::all_of(reads, &QvClaspAddressRead::started)) return true;
    }
    return true;
}

void qv_clasp_resync_from_index(WalletLock& wallet_lock) {
    const std::string scope = qv_clasp_scope_key();
    std::vector<IndexCoins> reads;
    for (std::string& address : qv_clasp_spend_addresses()) reads.push_back({.address = std::move(address)});
    wallet_lock.unlock();
    for (IndexCoins& read : reads) read.found = qv_clasp_read_index_coins(read.address, read.coins);
    wallet_lock.lock();
    if (!is_same_wallet(scope)) return;
    for (const IndexCoins& read : reads) {
        if (!read.found) continue;
        qv_clasp_unmark_spent(read.coins);
        qv_clasp_cache_store(read.address, read.coins, true, true);
        qv_clasp_prune_pending(read.address, read.coins);
    }
}
