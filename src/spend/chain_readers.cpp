#include "spend/chain_readers.h"

#include <algorithm>
#include <limits>

#include "base/settings.h"
#include "base/text.h"
#include "net/http_client.h"

namespace {

constexpr int LIST_TIMEOUT_S = 10;
constexpr int EXISTS_TIMEOUT_S = 25;
constexpr int PROBE_TIMEOUT_S = 12;
constexpr std::size_t TXID_LENGTH = 64;
constexpr std::size_t MOST_TRACED = 16;
constexpr std::size_t LONGEST_NON_TX = 20;
constexpr const char* BAD_LIST_TEXT = "bad utxo list";

std::string address_url(const std::string& address, const char* list) {
    return settings().woc_base + "/address/" + address + list;
}

std::string tx_url(const std::string& txid, const char* form = "") {
    return settings().woc_base + "/tx/" + txid + form;
}

// The output number of a row: the first of the two keys that holds a number, and 0 without one. False for a
// number that no output can have.
bool row_vout(const Json& row, std::uint32_t& vout_out) {
    vout_out = 0;
    for (const char* key : {"tx_pos", "vout"}) {
        const Json& value = json_member(row, key);
        if (!value.is_number()) continue;
        std::int64_t whole = 0;
        if (!json_whole(value, whole) || whole < 0) return false;
        if (whole > std::numeric_limits<std::uint32_t>::max()) return false;
        vout_out = static_cast<std::uint32_t>(whole);
        return true;
    }
    return true;
}

bool parse_utxo(const Json& row, QvClaspUtxo& utxo_out) {
    if (!row.is_object() || json_bool(row, "isSpentInMempoolTx")) return false;
    utxo_out.txid = row_txid(row);
    if (!is_hex64(utxo_out.txid) || !row_vout(row, utxo_out.vout)) return false;
    if (!json_whole(json_member(row, "value"), utxo_out.sats)) return false;
    return utxo_out.sats > 0 && utxo_out.sats <= MOST_SATS;
}

void remove_duplicates(std::vector<QvClaspUtxo>& utxos) {
    OutpointSet seen;
    seen.reserve(utxos.size());
    std::erase_if(utxos, [&](const QvClaspUtxo& utxo) {
        if (outpoint_in_set(seen, utxo.txid, utxo.vout)) return true;
        seen.insert(qv_clasp_outpoint_key(utxo.txid, utxo.vout));
        return false;
    });
}

// The newest transactions of the address that no block holds, newest first.
std::vector<std::string> newest_unconfirmed(const std::string& address) {
    std::vector<std::string> txids;
    std::string body;
    std::string error;
    Json root;
    if (!qv_clasp_http_get(address_url(address, "/unconfirmed/history"), body, error, LIST_TIMEOUT_S))
        return txids;
    if (!parse_json(body, root)) return txids;
    const Json* rows = result_array(root);
    if (rows == nullptr) return txids;
    for (auto row = rows->rbegin(); row != rows->rend() && txids.size() < MOST_TRACED; ++row) {
        std::string txid = row_txid(*row);
        // The text becomes part of a URL, so it has to be a transaction id and not only as long as one.
        if (is_hex64(txid)) txids.push_back(std::move(txid));
    }
    return txids;
}

void add_inputs_of(const std::string& txid, OutpointSet& spent) {
    std::string body;
    std::string error;
    Json root;
    if (!qv_clasp_http_get(tx_url(txid), body, error, LIST_TIMEOUT_S) || !parse_json(body, root)) return;
    const Json& inputs = json_member(root, "vin");
    if (!inputs.is_array()) return;
    for (const Json& input : inputs) {
        const std::string input_txid = json_text(input, "txid");
        std::int64_t vout = 0;
        if (input_txid.size() != TXID_LENGTH) continue;
        const Json& number = json_member(input, "vout");
        if (number.is_number() && !json_whole(number, vout)) continue;
        if (vout < 0 || vout > std::numeric_limits<std::uint32_t>::max()) continue;
        add_outpoint(spent, input_txid, static_cast<std::uint32_t>(vout));
    }
}

bool has_transaction_bytes(const std::string& txid, int timeout_s, std::string& error_out) {
    std::string body;
    return qv_clasp_http_get(tx_url(txid, "/hex"), body, error_out, timeout_s) &&
           body.size() > LONGEST_NON_TX;
}

bool has_transaction_record(const std::string& txid, int timeout_s, std::string& error_out) {
    std::string body;
    return qv_clasp_http_get(tx_url(txid), body, error_out, timeout_s) && contains(body, "txid");
}

bool says_not_found(const std::string& error) {
    return contains(error, "HTTP 404");
}

}  // namespace

const Json* result_array(const Json& root) {
    if (root.is_array()) return &root;
    const Json& result = json_member(root, "result");
    return result.is_array() ? &result : nullptr;
}

std::string row_txid(const Json& row) {
    return json_text(row, "tx_hash", json_text(row, "txid"));
}

bool qv_clasp_parse_utxo_list(const Json& json, std::vector<QvClaspUtxo>& utxos_inout) {
    const Json* rows = result_array(json);
    if (rows == nullptr) return false;
    for (const Json& row : *rows) {
        QvClaspUtxo utxo;
        if (parse_utxo(row, utxo)) utxos_inout.push_back(std::move(utxo));
    }
    return true;
}

bool qv_clasp_read_utxo_list(const std::string& url, std::vector<QvClaspUtxo>& utxos_inout,
                             std::string& error_out) {
    std::string body;
    if (!qv_clasp_http_get(url, body, error_out, LIST_TIMEOUT_S)) return false;
    Json root;
    if (parse_json(body, root) && qv_clasp_parse_utxo_list(root, utxos_inout)) return true;
    error_out = BAD_LIST_TEXT;
    return false;
}

bool qv_clasp_fetch_utxos(const std::string& address, std::vector<QvClaspUtxo>& utxos_out,
                          std::string& error_out, bool& any_ok_out) {
    utxos_out.clear();
    error_out.clear();
    any_ok_out = false;
    bool read_ok = false;
    std::string last_error;
    for (const char* list : {"/unspent/all", "/unspent", "/unconfirmed/unspent"}) {
        const bool is_decisive = list != std::string_view("/unconfirmed/unspent");
        if (!qv_clasp_read_utxo_list(address_url(address, list), utxos_out, last_error)) continue;
        read_ok = true;
        if (is_decisive) any_ok_out = true;
    }
    if (!read_ok) {
        error_out = last_error.empty() ? "no utxos" : last_error;
        return false;
    }
    std::ranges::sort(utxos_out, std::greater<>(), &QvClaspUtxo::sats);
    remove_duplicates(utxos_out);
    qv_clasp_drop_mempool_spends(address, utxos_out);
    return true;
}

void qv_clasp_drop_mempool_spends(const std::string& address, std::vector<QvClaspUtxo>& utxos_inout) {
    if (address.empty() || utxos_inout.empty()) return;
    OutpointSet spent;
    for (const std::string& txid : newest_unconfirmed(address)) add_inputs_of(txid, spent);
    std::erase_if(utxos_inout,
                  [&](const QvClaspUtxo& utxo) { return outpoint_in_set(spent, utxo.txid, utxo.vout); });
}

bool qv_clasp_tx_exists(const std::string& txid) {
    bool answered = false;
    return qv_clasp_tx_exists(txid, answered);
}

bool qv_clasp_tx_exists(const std::string& txid, bool& answered_out) {
    answered_out = true;
    if (!is_hex64(txid)) return false;
    std::string bytes_error;
    std::string record_error;
    if (has_transaction_bytes(txid, EXISTS_TIMEOUT_S, bytes_error) ||
        has_transaction_record(txid, EXISTS_TIMEOUT_S, record_error)) {
        return true;
    }
    answered_out = says_not_found(bytes_error) || says_not_found(record_error);
    return false;
}

TxProbe qv_clasp_tx_probe(const std::string& txid) {
    std::string error;
    if (!is_hex64(txid)) return TxProbe::NotFound;
    if (has_transaction_bytes(txid, PROBE_TIMEOUT_S, error)) return TxProbe::Known;
    if (says_not_found(error)) return TxProbe::NotFound;
    if (has_transaction_record(txid, PROBE_TIMEOUT_S, error)) return TxProbe::Known;
    return says_not_found(error) ? TxProbe::NotFound : TxProbe::NoAnswer;
}
