// A bound wallet, scripted services and a clock that stands still, for the tests of the coin guard.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "base/hex.h"
#include "spend/coin_guard.h"
#include "tests/support/fake_clock.h"
#include "tests/support/one_wallet.h"
#include "tests/support/scripted_server.h"
#include "wallet/address.h"
#include "wallet/session_keys.h"
#include "wallet/wallet_document.h"

// 64 characters that end in a number, all different in either byte order.
inline std::string txid_of(unsigned number) {
    const std::string text = std::to_string(number);
    return "a1b2" + std::string(60 - text.size(), '0') + text;
}

inline Json document_with_receive(unsigned highest) {
    Json document = one_wallet_document();
    document["recv"] = {0, highest, 0, 0, 0, 0};
    return document;
}

inline Json legacy_document(const std::string& path) {
    return {{"priv", qv_clasp_hex_encode(one_wallet_key(path).priv)}};
}

inline std::string identity_address() {
    return one_wallet_key("100'/0/0").address;
}

struct GuardWorld {
    ScriptedServer server;
    TestHome home;
    FakeClock clock;
    WalletLock lock = qv_clasp_lock_wallet();
    std::vector<QvClaspCoin> coins;
    std::int64_t total = 0;
    std::string error;

    explicit GuardWorld(const Json& document = document_with_receive(2)) {
        home.use_settings(settings_on(server.base(), "home.invalid"));
        bind_one_wallet(home, document);
        EXPECT_TRUE(qv_clasp_load());
    }
    ~GuardWorld() {
        if (!lock.owns_lock()) lock.lock();
        qv_clasp_wipe_session();
        qv_clasp_set_active_wallet_id("");
    }
    static QvClaspCoinRecords& records() { return qv_clasp_coin_records(); }
    static void restart() {
        qv_clasp_wipe_session();
        EXPECT_TRUE(qv_clasp_load());
    }
    // What a good read of the index leaves behind: every plain coin of the address may be spent.
    static void index_says(const std::string& address, const OutpointSet& ordinals) {
        qv_clasp_ord_store(address, ordinals, true);
    }
    static void cache(const std::string& address, const std::vector<QvClaspUtxo>& utxos) {
        qv_clasp_cache_store(address, utxos, true, false);
    }
    static void add_pending(const QvClaspUtxo& utxo, const std::string& address) {
        QvClaspPendingCoin coin{
            .txid = utxo.txid, .vout = utxo.vout, .sats = utxo.sats, .priv = {}, .pub = {}};
        EXPECT_TRUE(qv_clasp_address_to_hash160(address, coin.hash160)) << address;
        records().pending_coins.push_back(std::move(coin));
    }
    bool collect() { return qv_clasp_collect_coins(coins, total, error); }
    // The candidates as "txid number:vout" in their order.
    std::vector<std::string> candidates() const {
        std::vector<std::string> rows;
        for (const QvClaspCoin& coin : coins) rows.push_back(qv_clasp_outpoint_key(coin.txid, coin.vout));
        return rows;
    }
    // The chain service's list of an address, as rows of txid, vout and value.
    void chain_lists(const std::string& address, const std::vector<QvClaspUtxo>& utxos) {
        Json rows = Json::array();
        for (const QvClaspUtxo& utxo : utxos) {
            rows.push_back({{"tx_hash", utxo.txid}, {"tx_pos", utxo.vout}, {"value", utxo.sats}});
        }
        server.on("GET", "/woc/address/" + address + "/unspent/all", dump_json(rows, -1));
    }
    bool refresh() { return qv_clasp_refresh_coins(lock, error); }
};

inline std::string key(unsigned number, std::uint32_t vout = 0) {
    return txid_of(number) + ":" + std::to_string(vout);
}
