#include <cmath>
#include <limits>

#include "base/hex.h"
#include "base/json_file.h"
#include "base/settings.h"
#include "base/text.h"
#include "net/http_client.h"
#include "spend/coin_guard.h"
#include "wallet/address.h"
#include "wallet/session_keys.h"

namespace {

constexpr int TX_TIMEOUT_S = 25;
constexpr double SATS_PER_COIN = 100'000'000.0;
// A bare number up to this one is an amount in whole coins.
constexpr double MOST_COINS = 1000.0;

bool read_transaction(const std::string& txid, Json& transaction_out) {
    const std::string url = settings().woc_base + "/tx/" + txid;
    std::string body;
    std::string error;
    const bool answered = qv_clasp_http_get(url, body, error, TX_TIMEOUT_S) ||
                          qv_clasp_http_get(url + "/decoded", body, error, TX_TIMEOUT_S);
    return answered && parse_json(body, transaction_out);
}

// The nearest whole number; 0 for one that is no amount of money.
std::int64_t rounded_sats(double sats) {
    const bool is_amount = sats >= 0 && sats <= static_cast<double>(MOST_SATS);
    return is_amount ? static_cast<std::int64_t>(std::llround(sats)) : 0;
}

std::int64_t output_sats(const Json& output) {
    const Json& satoshis = json_member(output, "satoshis");
    if (satoshis.is_number()) return rounded_sats(satoshis.get<double>());
    const Json& value = json_member(output, "value");
    if (!value.is_number()) return 0;
    // Money has at most 16 digits, which a double holds, so rounding finds the exact count.
    const auto number = value.get<double>();
    return rounded_sats(number <= MOST_COINS ? number * SATS_PER_COIN : number);
}

bool output_index(const Json& output, std::size_t position, std::uint32_t& vout_out) {
    const Json& number = json_member(output, "n");
    auto vout = static_cast<std::int64_t>(position);
    if (number.is_number_integer() && !json_whole(number, vout)) return false;
    if (vout < 0 || vout > std::numeric_limits<std::uint32_t>::max()) return false;
    vout_out = static_cast<std::uint32_t>(vout);
    return true;
}

std::vector<std::string> output_addresses(const Json& script) {
    std::vector<std::string> addresses;
    const Json& listed = json_member(script, "addresses");
    if (listed.is_array()) {
        for (const Json& address : listed) {
            if (address.is_string()) addresses.push_back(address.get<std::string>());
        }
    }
    if (addresses.empty()) addresses.push_back(json_text(script, "address"));
    return addresses;
}

// An output with more in its script than the payment to the address, such as a token, is none that a plain
// signature spends. A service that leaves the script out is believed.
bool pays_plainly(const Json& script, const Hash160& hash160) {
    const std::string hex = json_text(script, "hex");
    Hash160 script_hash{};
    return hex.empty() ||
           (p2pkh_script_hash(qv_clasp_hex_decode(hex), script_hash) && script_hash == hash160);
}

bool ingest_address(const QvClaspUtxo& utxo, const std::string& address, const Json& script) {
    QvClaspPendingCoin coin{.txid = utxo.txid, .vout = utxo.vout, .sats = utxo.sats, .priv = {}, .pub = {}};
    if (!qv_clasp_address_to_hash160(address, coin.hash160) || !pays_plainly(script, coin.hash160))
        return false;
    if (!qv_clasp_find_key(address, coin.priv, coin.pub)) return false;
    if (qv_clasp_is_spent(utxo.txid, utxo.vout) || qv_clasp_is_pending(utxo.txid, utxo.vout)) return false;
    qv_clasp_coin_records().pending_coins.push_back(std::move(coin));
    return true;
}

}  // namespace

bool qv_clasp_ingest_own_outputs(const std::string& txid) {
    Json transaction;
    if (!is_hex64(txid) || !read_transaction(txid, transaction)) return false;
    const Json& outputs = json_member(transaction, "vout");
    if (!outputs.is_array()) return false;
    bool added = false;
    for (std::size_t position = 0; position < outputs.size(); ++position) {
        const Json& output = outputs[position];
        const Json& script = json_member(output, "scriptPubKey");
        QvClaspUtxo utxo{txid, 0, output_sats(output)};
        if (utxo.sats < 1 || !output_index(output, position, utxo.vout)) continue;
        for (const std::string& address : output_addresses(script)) {
            if (ingest_address(utxo, address, script)) added = true;
        }
    }
    return added;
}
