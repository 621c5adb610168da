#include "sandbox/service_woc_forms.h"

#include <openssl/sha.h>

#include <algorithm>
#include <utility>

#include "base/amounts.h"
#include "base/hex.h"
#include "sandbox/keys.h"

namespace sandbox {

namespace {

// The service names a script by its SHA-256 in reverse byte order.
std::string script_hash(const Bytes& script) {
    Hash256 hash{};
    SHA256(script.data(), script.size(), hash.data());
    std::reverse(hash.begin(), hash.end());
    return qv_clasp_hex_encode(hash);
}

bool plain_p2pkh(const Bytes& script, Hash160& hash160) {
    if (script.size() != 25) return false;
    std::copy_n(script.begin() + 3, hash160.size(), hash160.begin());
    return script == p2pkh_script(hash160);
}

Json script_document(const Bytes& script, bool single_address) {
    Json document{{"hex", qv_clasp_hex_encode(script)}, {"isTruncated", false}, {"opReturn", nullptr}};
    Hash160 hash160{};
    if (plain_p2pkh(script, hash160)) {
        const std::string address = address_of(hash160);
        document["asm"] = "OP_DUP OP_HASH160 " + qv_clasp_hex_encode(hash160) + " OP_EQUALVERIFY OP_CHECKSIG";
        document["type"] = "pubkeyhash";
        document["reqSigs"] = 1;
        if (single_address) {
            document["address"] = address;
        } else {
            document["addresses"] = Json::array({address});
        }
        return document;
    }
    const bool data = (script.size() > 1 && script[0] == 0x6a) ||
                      (script.size() > 2 && script[0] == 0x00 && script[1] == 0x6a);
    document["asm"] = data ? "OP_RETURN" : "";
    document["type"] = data ? "nulldata" : "nonstandard";
    if (data)
        document["opReturn"] = {{"type", "OP_RETURN"}, {"action", ""}, {"text", ""}, {"parts", nullptr}};
    return document;
}

Json input_document(const TxInput& input) {
    return {{"coinbase", ""},
            {"txid", input.txid},
            {"vout", input.vout},
            {"scriptSig", {{"asm", ""}, {"hex", qv_clasp_hex_encode(input.script_sig)}}},
            {"sequence", input.sequence}};
}

}  // namespace

Json unspent_row(const Coin& coin, bool spent_in_mempool) {
    Json row{{"tx_pos", coin.vout},
             {"tx_hash", coin.txid},
             {"value", coin.sats},
             {"isSpentInMempoolTx", spent_in_mempool}};
    if (coin.height > 0) {
        row["height"] = coin.height;
        row["status"] = "confirmed";
    } else {
        row["hex"] = qv_clasp_hex_encode(coin.script);
        row["status"] = "unconfirmed";
    }
    return row;
}

Json short_unspent_row(const Coin& coin) {
    return {{"height", coin.height}, {"tx_pos", coin.vout}, {"tx_hash", coin.txid}, {"value", coin.sats}};
}

Json renamed_unspent_row(const Coin& coin) {
    return {{"txid", coin.txid}, {"vout", coin.vout}, {"value", coin.sats}, {"isSpentInMempoolTx", false}};
}

Json around_rows(const std::string& address, Json rows) {
    Hash160 hash160{};
    const bool known = hash160_of_address(address, hash160);
    return {{"address", address},
            {"script", known ? script_hash(p2pkh_script(hash160)) : ""},
            {"result", std::move(rows)},
            {"error", ""}};
}

Json decoded_transaction(const Transaction& tx, int chain_height, bool satoshi_form) {
    Json document{{"hex", ""},
                  {"txid", tx.txid},
                  {"hash", tx.txid},
                  {"version", tx.version},
                  {"size", tx.raw.size()},
                  {"locktime", tx.lock_time},
                  {"vin", Json::array()},
                  {"vout", Json::array()}};
    for (const TxInput& input : tx.inputs) document["vin"].push_back(input_document(input));
    for (std::size_t n = 0; n < tx.outputs.size(); ++n) {
        const TxOutput& output = tx.outputs[n];
        Json row{{"n", n}, {"scriptPubKey", script_document(output.script, satoshi_form)}};
        row["value"] = static_cast<double>(output.sats) / static_cast<double>(SATS_PER_BSV);
        if (satoshi_form) row["satoshis"] = output.sats;
        document["vout"].push_back(std::move(row));
    }
    if (tx.height > 0) {
        document["blockhash"] =
            script_hash(Bytes{static_cast<std::uint8_t>(tx.height), static_cast<std::uint8_t>(tx.height >> 8),
                              static_cast<std::uint8_t>(tx.height >> 16)});
        document["blockheight"] = tx.height;
        document["confirmations"] = chain_height - tx.height + 1;
        document["time"] = tx.time;
        document["blocktime"] = tx.time;
    }
    return document;
}

std::string refusal_text(int code, std::string_view reason) {
    std::string text = "unexpected response code 500: ";
    if (code != 0) text += std::to_string(code) + ": ";
    return text.append(reason);
}

}  // namespace sandbox
