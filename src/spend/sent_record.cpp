#include "spend/sent_record.h"

#include <algorithm>

#include "base/clock.h"
#include "base/text.h"
#include "wallet/address.h"
#include "wallet/coin_records.h"
#include "wallet/session_keys.h"
#include "wallet/wallet_session.h"

namespace {

constexpr std::int64_t SPENT_FROM_KEPT_NS = 60'000'000'000;

struct OwnAddress {
    Hash160 hash160{};
    std::string address;
};

void add_own_address(std::vector<OwnAddress>& addresses, const std::string& address) {
    OwnAddress own;
    if (!qv_clasp_address_to_hash160(address, own.hash160)) return;
    own.address = address;
    addresses.push_back(std::move(own));
}

// The addresses that an output can come home to: the current one, and in a mnemonic wallet the receive chain
// and the identity.
std::vector<OwnAddress> own_addresses() {
    const QvClaspSession& session = qv_clasp_session();
    std::vector<OwnAddress> addresses;
    add_own_address(addresses, session.address);
    if (!session.hd) return addresses;
    const std::uint64_t count = std::uint64_t{session.recv[RECEIVE_ACCOUNT]} + 1;
    for (std::uint64_t i = 0; i < count; ++i) {
        add_own_address(addresses, qv_clasp_account_address(RECEIVE_ACCOUNT, static_cast<std::uint32_t>(i)));
    }
    add_own_address(addresses, session.identity_address);
    return addresses;
}

const OwnAddress* find_own(const std::vector<OwnAddress>& addresses, const Hash160& hash160) {
    for (const OwnAddress& own : addresses) {
        if (own.hash160 == hash160) return &own;
    }
    return nullptr;
}

const QvClaspCoin* coin_with_hash(const std::vector<QvClaspCoin>& coins, const Hash160& hash160,
                                  bool with_key) {
    for (const QvClaspCoin& coin : coins) {
        if (coin.hash160 == hash160 && !(with_key && coin.priv.empty())) return &coin;
    }
    return nullptr;
}

// Tells the status report what was spent from, and when.
void note_spent_from(const std::vector<QvClaspCoin>& coins) {
    QvClaspCoinRecords& records = qv_clasp_coin_records();
    const std::int64_t now = monotonic_ns();
    records.last_send_at_ns = now;
    std::vector<Hash160> hashes;
    for (const QvClaspCoin& coin : coins) hashes.push_back(coin.hash160);
    std::sort(hashes.begin(), hashes.end());
    hashes.erase(std::unique(hashes.begin(), hashes.end()), hashes.end());
    for (const Hash160& hash160 : hashes) {
        const std::string address = qv_clasp_address_from_hash160(hash160);
        std::erase_if(records.spent_from, [&](const auto& row) {
            return row.first == address || now - row.second > SPENT_FROM_KEPT_NS;
        });
        records.spent_from.emplace_back(address, now);
    }
}

void add_to_cache(const std::string& address, const QvClaspUtxo& utxo) {
    QvClaspCoinCacheRow* row = qv_clasp_cache_row(address);
    if (!row) {
        qv_clasp_coin_records().coin_cache.push_back({address, {}, 0, false});
        row = &qv_clasp_coin_records().coin_cache.back();
    }
    const bool there = std::any_of(row->coins.begin(), row->coins.end(), [&](const QvClaspUtxo& coin) {
        return qv_clasp_same_outpoint(coin.txid, coin.vout, utxo.txid, utxo.vout);
    });
    if (!there) row->coins.push_back(utxo);
    row->read_at_ns = monotonic_ns();
    row->valid = true;
}

// The address of an own output: one of the wallet's, or that of a cache row.
std::string address_of_output(const OwnAddress* own, const Hash160& hash160) {
    if (own) return own->address;
    const std::string address = qv_clasp_address_from_hash160(hash160);
    return qv_clasp_cache_row(address) ? address : "";
}

void take_output(const QvClaspUtxo& utxo, const Hash160& hash160, const OwnAddress* own,
                 const std::vector<QvClaspCoin>& coins) {
    const QvClaspSession& session = qv_clasp_session();
    QvClaspPendingCoin pending;
    pending.txid = utxo.txid;
    pending.vout = utxo.vout;
    pending.sats = utxo.sats;
    pending.hash160 = hash160;
    const QvClaspCoin* keyed = coin_with_hash(coins, hash160, true);
    pending.priv = keyed ? keyed->priv : session.priv;
    pending.pub = keyed ? keyed->pub : session.pub;
    qv_clasp_coin_records().pending_coins.push_back(std::move(pending));

    const std::string address = address_of_output(own, hash160);
    if (!address.empty()) add_to_cache(address, utxo);
}

}  // namespace

void write_off_coins(const std::vector<QvClaspCoin>& coins) {
    std::vector<QvClaspUtxo> outpoints;
    outpoints.reserve(coins.size());
    for (const QvClaspCoin& coin : coins) outpoints.push_back({coin.txid, coin.vout, coin.sats});
    qv_clasp_mark_all_spent(outpoints);
    qv_clasp_prune_spent_from_cache();
}

void qv_clasp_record_sent(const std::vector<QvClaspCoin>& coins, const std::vector<QvClaspTxOutput>& outputs,
                          const std::string& txid, const Hash160& change_hash160) {
    // A collection takes pending coins out of the list; they have to stand in it again before it is saved.
    qv_clasp_load_change();
    if (is_hex64(txid)) qv_clasp_coin_records().last_sent_txid = txid;
    write_off_coins(coins);
    std::erase_if(qv_clasp_coin_records().pending_coins,
                  [](const QvClaspPendingCoin& coin) { return qv_clasp_is_spent(coin.txid, coin.vout); });
    note_spent_from(coins);
    qv_clasp_raise_generation();

    const std::vector<OwnAddress> addresses = own_addresses();
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        Hash160 hash160{};
        if (outputs[i].sats < 1 || !p2pkh_script_hash(outputs[i].script, hash160)) continue;
        const OwnAddress* own = find_own(addresses, hash160);
        if (!own && hash160 != change_hash160 && !coin_with_hash(coins, hash160, false)) continue;
        const auto vout = static_cast<std::uint32_t>(i);
        if (qv_clasp_is_pending(txid, vout)) continue;
        take_output({txid, vout, outputs[i].sats}, hash160, own, coins);
    }
    qv_clasp_save_change();
}

std::string qv_clasp_finish_known_tx(const std::vector<QvClaspCoin>& coins,
                                     const std::vector<QvClaspTxOutput>& outputs, const std::string& txid,
                                     const Hash160& change_hash160) {
    if (!is_hex64(txid)) return "";
    qv_clasp_coin_records().last_broadcast_txid = txid;
    if (coins.empty()) {
        qv_clasp_ingest_own_outputs(txid);
    } else {
        qv_clasp_record_sent(coins, outputs, txid, change_hash160);
    }
    return "success: " + txid;
}
