// Answers of the chain service, the indexer's listings, the family's host and ARC, on the road of a payment.
#include "fuzz/fuzz.h"
#include "program/vault_reader.h"
#include "spend/chain_readers.h"
#include "spend/coin_guard.h"
#include "spend/ordinal_reader.h"
#include "spend/send.h"
#include "wallet/wallet_session.h"

namespace {

constexpr const char* STRANGER = "1BvBMSEYstWetqTFn5Au4m4GFg7xJaNVN2";

void read_all(const std::string& address) {
    std::vector<QvClaspUtxo> coins;
    std::string error;
    bool any_ok = false;
    if (!qv_clasp_fetch_utxos(address, coins, error, any_ok))
        promise(!error.empty(), "a failure has its text");
    for (const QvClaspUtxo& coin : coins) {
        promise(coin.sats > 0 && coin.txid.size() == 64, "a coin is worth something");
        qv_clasp_tx_probe(coin.txid);
    }
    OutpointSet outpoints;
    OutpointSet plain;
    bool complete = false;
    qv_clasp_read_ordinal_outpoints(address, outpoints, plain, complete);
    coins.clear();
    qv_clasp_read_index_coins(address, coins);
    std::vector<std::int64_t> values;
    read_address_coins(address, values, error);
}

void pay(const std::string& dest) {
    const std::int64_t fee = qv_clasp_estimate_send_fee(dest, 1000);
    promise(fee >= -2, "a fee is a fee");
    const std::string result = qv_clasp_send(dest, 1000, "");
    promise(result.starts_with("success: ") || result.starts_with("error: "),
            "a send ends in one of two ways");
    // The next one begins with what the first has left.
    qv_clasp_send(dest, 100, "a memo");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    start_afresh();
    script_services({reinterpret_cast<const char*>(data), size});
    std::string address;
    {
        const WalletLock lock = qv_clasp_lock_wallet();
        address = qv_clasp_session().address;
        qv_clasp_ingest_own_outputs(fuzz_txid('a'));
    }
    read_all(address);
    pay(STRANGER);
    {
        WalletLock lock = qv_clasp_lock_wallet();
        qv_clasp_resync_from_index(lock);
    }
    pay(address);
    return 0;
}
