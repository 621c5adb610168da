#include "program/vault_reader.h"

#include "spend/chain_readers.h"

bool read_address_coins(const std::string& address, std::vector<std::int64_t>& sats_out,
                        std::string& error_out) {
    sats_out.clear();
    std::vector<QvClaspUtxo> coins;
    bool any_ok = false;
    if (!qv_clasp_fetch_utxos(address, coins, error_out, any_ok)) return false;
    for (const QvClaspUtxo& coin : coins) sats_out.push_back(coin.sats);
    return true;
}
