#include "spend/ordinal_reader.h"

#include <limits>

#include "base/json_file.h"
#include "base/settings.h"
#include "base/text.h"
#include "net/http_client.h"

namespace {

constexpr int OUTPUTS_TIMEOUT_S = 10;
constexpr int TOKENS_TIMEOUT_S = 12;
constexpr int RESYNC_TIMEOUT_S = 20;
// The indexer cuts its lists at this many rows.
constexpr std::size_t FULL_PAGE = 100;

bool read_array(const std::string& path, int timeout_s, Json& rows_out) {
    std::string body;
    std::string error;
    return qv_clasp_http_get(settings().ordinals_api_base + path, body, error, timeout_s) &&
           parse_json(body, rows_out) && rows_out.is_array();
}

bool has_origin(const Json& row) {
    const Json& origin = json_member(row, "origin");
    if (origin.is_string()) return !origin.get_ref<const std::string&>().empty();
    return !json_text(origin, "outpoint").empty();
}

// The indexer read an inscription or a token in the output's script.
bool has_token_data(const Json& row) {
    const Json& data = json_member(row, "data");
    if (!data.is_object()) return false;
    return data.contains("bsv21") || data.contains("bsv20") || data.contains("insc");
}

// The outpoint of a row; an output number that is missing is 0.
bool row_outpoint(const Json& row, QvClaspUtxo& outpoint_out) {
    const Json& number = json_member(row, "vout");
    std::int64_t vout = 0;
    if (!number.is_null() && !json_whole(number, vout)) return false;
    if (vout < 0 || vout > std::numeric_limits<std::uint32_t>::max()) return false;
    outpoint_out.txid = json_text(row, "txid");
    outpoint_out.vout = static_cast<std::uint32_t>(vout);
    return is_hex64(outpoint_out.txid);
}

void add_key(OutpointSet& outpoints, const QvClaspUtxo& outpoint) {
    outpoints.insert(qv_clasp_outpoint_key(outpoint.txid, outpoint.vout));
}

// `satoshis`, or else `value`, cut to a whole number; 0 without either.
std::int64_t row_sats(const Json& row) {
    std::int64_t sats = 0;
    if (json_whole(json_member(row, "satoshis"), sats)) return sats;
    return json_whole(json_member(row, "value"), sats) ? sats : 0;
}

}  // namespace

bool qv_clasp_read_ordinal_outpoints(const std::string& address, OutpointSet& outpoints_out) {
    OutpointSet plain;
    bool is_complete = false;
    return qv_clasp_read_ordinal_outpoints(address, outpoints_out, plain, is_complete);
}

bool qv_clasp_read_ordinal_outpoints(const std::string& address, OutpointSet& outpoints_out,
                                     OutpointSet& plain_out, bool& complete_out) {
    outpoints_out.clear();
    plain_out.clear();
    complete_out = false;
    Json outputs;
    if (!read_array("/txos/address/" + address + "/unspent", OUTPUTS_TIMEOUT_S, outputs)) return false;
    QvClaspUtxo outpoint;
    for (const Json& row : outputs) {
        const bool is_plain = !has_origin(row) && !has_token_data(row);
        if (row_outpoint(row, outpoint)) add_key(is_plain ? plain_out : outpoints_out, outpoint);
    }
    Json tokens;
    if (!read_array("/bsv20/" + address + "/unspent", TOKENS_TIMEOUT_S, tokens)) return true;
    for (const Json& row : tokens) {
        const bool is_spent = !json_text(row, "spend").empty();
        if (!is_spent && row_outpoint(row, outpoint)) add_key(outpoints_out, outpoint);
    }
    complete_out = outputs.size() < FULL_PAGE && tokens.size() < FULL_PAGE;
    return true;
}

bool qv_clasp_read_index_coins(const std::string& address, std::vector<QvClaspUtxo>& utxos_out) {
    utxos_out.clear();
    Json rows;
    if (!read_array("/txos/address/" + address + "/unspent", RESYNC_TIMEOUT_S, rows)) return false;
    for (const Json& row : rows) {
        QvClaspUtxo coin;
        if (has_origin(row) || has_token_data(row) || !row_outpoint(row, coin)) continue;
        coin.sats = row_sats(row);
        if (coin.sats > 1 && coin.sats <= MOST_SATS) utxos_out.push_back(std::move(coin));
    }
    return !utxos_out.empty();
}
