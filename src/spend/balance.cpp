#include "spend/balance.h"

#include <limits>
#include <string>

#include "base/clock.h"
#include "base/json_file.h"
#include "wallet/address.h"
#include "wallet/coin_records.h"
#include "wallet/data_root.h"
#include "wallet/session_keys.h"
#include "wallet/wallet_document.h"
#include "wallet/wallet_session.h"

namespace {

// Keeps ordinal-sized outputs on the wallet's other addresses out of the balance.
constexpr std::int64_t OTHER_ADDRESS_MIN_SATS = 1000;
// How far above the projection a figure may lie before it counts as one that has not seen the payment.
constexpr std::int64_t JUMP_SATS = 1'000'000;
// Covers the fees of a send.
constexpr std::int64_t FEE_MARGIN_SATS = 8000;
constexpr std::int64_t PROJECTION_LIFE_NS = 45'000'000'000;

std::int64_t add_held(std::int64_t a, std::int64_t b) {
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    return b > most - a ? most : a + b;
}

// A sum in which each outpoint counts once, and spent coins and ordinals not at all.
class BalanceSum {
 public:
    void add_cached(const std::string& address, const QvClaspUtxo& coin) {
        if (!qv_clasp_is_ordinal_at(address, coin)) add(coin);
    }
    void add_pending(const QvClaspPendingCoin& pending) {
        const QvClaspUtxo coin{pending.txid, pending.vout, pending.sats};
        if (!qv_clasp_is_ordinal_anywhere(coin)) add(coin);
    }
    std::int64_t sats() const { return sats_; }

 private:
    void add(const QvClaspUtxo& coin) {
        if (coin.sats < 1 || qv_clasp_is_spent(coin.txid, coin.vout)) return;
        if (outpoint_in_set(counted_, coin.txid, coin.vout)) return;
        add_outpoint(counted_, coin.txid, coin.vout);
        sats_ = add_held(sats_, coin.sats);
    }

    OutpointSet counted_;
    std::int64_t sats_ = 0;
};

std::string face_folder() {
    return qv_data_root() + "/tx_hist";
}

std::string face_path() {
    return face_folder() + "/" + qv_clasp_scope_key() + "_face.json";
}

void write_face() {
    const QvClaspSession& session = qv_clasp_session();
    if (session.cached_balance < 0 || session.address.empty()) return;
    make_folder(face_folder());
    write_text_file(face_path(),
                    dump_json({{"sats", session.cached_balance}, {"address", session.address}}, -1));
}

std::int64_t read_face(const std::string& address) {
    Json face;
    if (!read_json_file(face_path(), face) || json_text(face, "address") != address) return -1;
    const std::int64_t sats = json_int(face, "sats", -1);
    return sats < 0 ? -1 : sats;
}

bool projection_is_young(const QvClaspSession& session) {
    return session.projected_balance >= 0 && monotonic_ns() - session.projected_at_ns < PROJECTION_LIFE_NS;
}

}  // namespace

std::int64_t qv_clasp_balance_estimate() {
    const std::string& current = qv_clasp_session().address;
    const QvClaspCoinRecords& records = qv_clasp_coin_records();
    const QvClaspCoinCacheRow* current_row = qv_clasp_cache_row(current);
    const bool current_known = current_row && current_row->valid;
    Hash160 current_hash{};
    const bool has_current = qv_clasp_address_to_hash160(current, current_hash);
    const auto pays_current = [&](const QvClaspPendingCoin& coin) {
        return has_current && coin.hash160 == current_hash;
    };

    BalanceSum sum;
    if (current_known) {
        for (const QvClaspUtxo& coin : current_row->coins) sum.add_cached(current, coin);
    }
    for (const QvClaspPendingCoin& coin : records.pending_coins) {
        if (pays_current(coin)) sum.add_pending(coin);
    }
    for (const QvClaspCoinCacheRow& row : records.coin_cache) {
        if (!row.valid || row.address == current || !qv_clasp_owns_address(row.address)) continue;
        for (const QvClaspUtxo& coin : row.coins) {
            if (coin.sats >= OTHER_ADDRESS_MIN_SATS) sum.add_cached(row.address, coin);
        }
    }
    for (const QvClaspPendingCoin& coin : records.pending_coins) {
        if (!pays_current(coin) && coin.sats >= OTHER_ADDRESS_MIN_SATS) sum.add_pending(coin);
    }
    return !current_known && sum.sats() == 0 ? -1 : sum.sats();
}

std::int64_t qv_clasp_note_spend(std::int64_t fresh_total, std::int64_t spent_sats) {
    if (fresh_total < 0) return fresh_total;
    QvClaspSession& session = qv_clasp_session();
    std::int64_t shown = fresh_total;
    if (session.cached_balance >= 0 && spent_sats < 1) {
        if (projection_is_young(session) && fresh_total > add_held(session.projected_balance, JUMP_SATS)) {
            shown = session.projected_balance;
        }
    } else if (session.cached_balance >= 0) {
        const std::int64_t left = session.cached_balance - spent_sats;
        session.projected_balance = left < 0 ? 0 : left;
        session.projected_at_ns = monotonic_ns();
        if (fresh_total < session.projected_balance - FEE_MARGIN_SATS ||
            fresh_total > add_held(session.cached_balance, FEE_MARGIN_SATS)) {
            shown = session.projected_balance;
        }
    }
    qv_clasp_show_balance(shown);
    return shown;
}

std::int64_t qv_clasp_cached_balance() {
    std::string address;
    std::string paymail;
    bool hd = false;
    if (!qv_clasp_summary(address, paymail, hd) || address.empty()) return -1;
    const WalletLock lock = qv_clasp_lock_wallet();
    const QvClaspSession& session = qv_clasp_session();
    if (session.cached_balance >= 0 && session.address == address) return session.cached_balance;
    return read_face(address);
}

void qv_clasp_show_balance(std::int64_t sats) {
    qv_clasp_session().cached_balance = sats;
    write_face();
}
