#include "spend/coin_guard.h"

#include <algorithm>
#include <limits>

#include "base/settings.h"
#include "base/text.h"
#include "wallet/address.h"
#include "wallet/session_keys.h"

namespace {

constexpr const char* ORACLE_CHANGE_TEXT = "change would land on a house oracle.";

// How many indices of the receive chain are in use.
std::uint64_t receive_count() {
    return std::uint64_t{qv_clasp_session().recv[RECEIVE_ACCOUNT]} + 1;
}

std::string receive_address(std::uint64_t index) {
    return qv_clasp_account_address(RECEIVE_ACCOUNT, static_cast<std::uint32_t>(index));
}

void add_address(std::vector<std::string>& addresses, const std::string& address) {
    if (!address.empty() && std::ranges::find(addresses, address) == addresses.end())
        addresses.push_back(address);
}

bool is_ordinal(const std::string& address, const QvClaspUtxo& utxo, const Hash160& hash160) {
    if (!address.empty()) return qv_clasp_is_ordinal_at(address, utxo);
    if (qv_clasp_is_ordinal_anywhere(utxo)) return true;
    // A token that another program of the family moved within the wallet is a pending coin like any change,
    // so a single satoshi needs the word of the index here as well.
    return utxo.sats == 1 && qv_clasp_is_ordinal_at(qv_clasp_address_from_hash160(hash160), utxo);
}

bool is_candidate(CoinAdmission& context, const QvClaspUtxo& utxo) {
    if (context.keys.size() != context.coins->size()) {
        context.keys.clear();
        for (const QvClaspCoin& coin : *context.coins) {
            context.keys.insert(qv_clasp_outpoint_key(coin.txid, coin.vout));
        }
    }
    return outpoint_in_set(context.keys, utxo.txid, utxo.vout);
}

// The coin has become a candidate; the file still holds it until the next save.
void drop_pending(const QvClaspUtxo& utxo) {
    std::erase_if(qv_clasp_coin_records().pending_coins, [&](const QvClaspPendingCoin& coin) {
        return qv_clasp_same_outpoint(coin.txid, coin.vout, utxo.txid, utxo.vout);
    });
}

std::int64_t saturated_sum(std::int64_t a, std::int64_t b) {
    constexpr std::int64_t MOST = std::numeric_limits<std::int64_t>::max();
    return b > MOST - a ? MOST : a + b;
}

void admit_pending_coins(CoinAdmission& context) {
    const QvClaspSession& session = qv_clasp_session();
    const std::vector<QvClaspPendingCoin> pending = qv_clasp_coin_records().pending_coins;
    for (const QvClaspPendingCoin& coin : pending) {
        qv_clasp_admit_coin(context, {coin.txid, coin.vout, coin.sats},
                            coin.priv.empty() ? session.priv : coin.priv,
                            coin.pub.empty() ? session.pub : coin.pub, coin.hash160, "");
    }
}

void admit_row(CoinAdmission& context, const QvClaspCoinCacheRow& row, const SecretText& priv,
               const std::string& pub) {
    Hash160 hash160{};
    if (!qv_clasp_address_to_hash160(row.address, hash160)) return;
    for (const QvClaspUtxo& coin : row.coins)
        qv_clasp_admit_coin(context, coin, priv, pub, hash160, row.address);
}

// The cache row of an address, if it says anything.
const QvClaspCoinCacheRow* usable_row(const std::string& address) {
    const QvClaspCoinCacheRow* row = address.empty() ? nullptr : qv_clasp_cache_row(address);
    return row != nullptr && row->valid && !row->coins.empty() ? row : nullptr;
}

void admit_legacy_coins(CoinAdmission& context) {
    const QvClaspSession& session = qv_clasp_session();
    if (const QvClaspCoinCacheRow* row = usable_row(session.address)) {
        admit_row(context, *row, session.priv, session.pub);
    }
}

// Keys are derived only where there is a coin for them.
void admit_hd_coins(CoinAdmission& context) {
    SecretText priv;
    std::string pub;
    std::string address;
    for (std::uint64_t index = 0; index < receive_count(); ++index) {
        const QvClaspCoinCacheRow* row = usable_row(receive_address(index));
        if (row == nullptr) continue;
        const auto account_index = static_cast<std::uint32_t>(index);
        if (qv_clasp_derive_account(RECEIVE_ACCOUNT, account_index, priv, pub, address)) {
            admit_row(context, *row, priv, pub);
        }
    }
    const QvClaspCoinCacheRow* row = usable_row(qv_clasp_session().identity_address);
    if (row != nullptr && qv_clasp_derive_identity(priv, pub, address)) admit_row(context, *row, priv, pub);
}

// After a restart or a failed record: the last transactions are read back.
bool ingest_last_transactions() {
    const std::string sent = qv_clasp_coin_records().last_sent_txid;
    const std::string broadcast = qv_clasp_coin_records().last_broadcast_txid;
    return qv_clasp_ingest_own_outputs(sent) || qv_clasp_ingest_own_outputs(broadcast);
}

}  // namespace

std::vector<std::string> qv_clasp_spend_addresses() {
    const QvClaspSession& session = qv_clasp_session();
    std::vector<std::string> addresses;
    if (!session.hd) {
        add_address(addresses, session.address);
    } else {
        for (std::uint64_t index = 0; index < receive_count(); ++index)
            add_address(addresses, receive_address(index));
        add_address(addresses, session.identity_address);
    }
    for (const HouseOracle& oracle : settings().house_oracles) {
        for (const std::string* address : {&oracle.oracle_c, &oracle.oracle_a, &oracle.oracle_b}) {
            if (qv_clasp_owns_address(*address)) add_address(addresses, *address);
        }
    }
    return addresses;
}

void qv_clasp_admit_coin(CoinAdmission& context, const QvClaspUtxo& utxo, const SecretText& priv,
                         const std::string& pub, const Hash160& hash160, const std::string& address) {
    if (!is_hex64(utxo.txid)) return;
    if (qv_clasp_is_spent(utxo.txid, utxo.vout)) return;
    if (is_ordinal(address, utxo, hash160)) return;
    if (!context.reserves) context.reserves = read_sibling_reserves();
    if (is_reserved_by_sibling(*context.reserves, utxo.txid, utxo.vout)) return;
    if (is_candidate(context, utxo)) return;
    drop_pending(utxo);
    context.keys.insert(qv_clasp_outpoint_key(utxo.txid, utxo.vout));
    context.coins->push_back({.txid = utxo.txid,
                              .vout = utxo.vout,
                              .sats = utxo.sats,
                              .script_sig = {},
                              .prev_script = {},
                              .priv = priv,
                              .pub = pub,
                              .hash160 = hash160});
    context.total = saturated_sum(context.total, utxo.sats);
}

bool qv_clasp_collect_coins(std::vector<QvClaspCoin>& coins_out, std::int64_t& total_out,
                            std::string& error_out) {
    coins_out.clear();
    error_out.clear();
    CoinAdmission context{.coins = &coins_out};
    qv_clasp_load_spent();
    qv_clasp_load_change();
    prune_offer_locks();
    admit_pending_coins(context);
    if (qv_clasp_session().hd) {
        admit_hd_coins(context);
    } else {
        admit_legacy_coins(context);
    }
    admit_pending_coins(context);
    if (coins_out.empty() && ingest_last_transactions()) {
        context.reserves.reset();  // the network may have taken a while
        admit_pending_coins(context);
    }
    total_out = context.total;
    if (coins_out.empty()) error_out = qv_clasp_coin_records().read_error;
    return !coins_out.empty();
}

bool qv_clasp_change_target(Hash160& hash160_out, std::string& error_out) {
    const QvClaspSession& session = qv_clasp_session();
    error_out.clear();
    if (!qv_clasp_address_to_hash160(session.address, hash160_out)) {
        error_out = "clasp address decode failed.";
        return false;
    }
    if (!qv_clasp_is_house_oracle(session.address)) return true;
    for (std::uint64_t index = 0; session.hd && index < receive_count(); ++index) {
        const std::string address = receive_address(index);
        if (!qv_clasp_is_house_oracle(address) && qv_clasp_address_to_hash160(address, hash160_out))
            return true;
    }
    error_out = ORACLE_CHANGE_TEXT;
    return false;
}

bool qv_clasp_is_house_oracle(const std::string& address) {
    if (address.empty()) return false;
    return std::ranges::any_of(settings().house_oracles, [&](const HouseOracle& oracle) {
        return address == oracle.oracle_c || address == oracle.oracle_a;
    });
}
