#include "spend/broadcast.h"

#include <algorithm>
#include <array>

#include "base/clock.h"
#include "base/hex.h"
#include "base/json_file.h"
#include "base/settings.h"
#include "base/text.h"
#include "net/http_client.h"
#include "spend/chain_readers.h"
#include "spend/receipts.h"
#include "spend/sent_record.h"
#include "wallet/coin_records.h"

namespace {

constexpr int PROBES = 8;
constexpr std::int64_t PROBE_PAUSE_MS = 700;
constexpr unsigned HOME_TIMEOUT_S = 2;  // a courtesy: it must not hold up the send
constexpr unsigned BROADCAST_TIMEOUT_S = 60;
constexpr int BROADCAST_TRIES = 2;

std::string transaction_body(const char* key, const std::string& raw_hex) {
    return dump_json({{key, raw_hex}}, -1);
}

bool submit_to_home(const std::string& raw_hex) {
    std::string answer;
    std::string error;
    if (!qv_clasp_http_post_json("https://" + settings().home_host + "/oi/submit",
                                 transaction_body("txhex", raw_hex), answer, error, HOME_TIMEOUT_S, 1)) {
        return false;
    }
    Json json;
    parse_json(answer, json);
    return json_bool(json, "ok", true);
}

bool wait_until_seen(const std::string& txid) {
    for (int probe = 1; probe <= PROBES; ++probe) {
        if (qv_clasp_tx_exists(txid)) return true;
        if (probe < PROBES) sleep_milliseconds(PROBE_PAUSE_MS);
    }
    return false;
}

// The id in the chain service's answer; the computed one where it gives none.
std::string answered_txid(const std::string& body, const std::string& computed) {
    std::string id(trim(body, "\" \n", "\" \n\r"));
    if (id.size() != 64) {
        Json json;
        parse_json(body, json);
        id = json.is_string() ? json.get_ref<const std::string&>() : json_text(json, "txid");
    }
    return is_hex64(id) ? id : computed;
}

// The network may already have this very transaction.
bool says_known(std::string_view error) {
    return contains(error, "mempool-conflict") || contains(error, "txn-already") ||
           contains(error, "already have");
}

std::string submit_to_arc_and_confirm(const BroadcastContext& context, std::string& arc_error,
                                      bool& accepted) {
    if (!qv_clasp_arc_submit(context.raw_hex, context.txid, arc_error)) return "";
    accepted = true;
    return qv_clasp_confirm_and_record(context, context.txid);
}

std::string broadcast_to_chain_service(const BroadcastContext& context, bool& accepted) {
    std::string answer;
    std::string woc_error;
    std::string arc_error;
    const bool taken =
        qv_clasp_http_post_json(settings().woc_base + "/tx/raw", transaction_body("txhex", context.raw_hex),
                                answer, woc_error, BROADCAST_TIMEOUT_S, BROADCAST_TRIES);
    accepted = taken;
    std::string result;
    if (taken) {
        result = qv_clasp_confirm_and_record(context, answered_txid(answer, context.txid));
    } else if (says_known(woc_error)) {
        result = qv_clasp_confirm_and_record(context, context.txid);
    }
    if (result.empty()) result = submit_to_arc_and_confirm(context, arc_error, accepted);
    if (!result.empty()) return result;
    if (!arc_error.empty()) return "error: broadcast failed: " + arc_error;
    if (!taken) return "error: broadcast failed: " + woc_error;
    return "error: the network did not take that transaction. Nothing was sent.";
}

bool is_refused_status(std::string_view status) {
    return status == "REJECTED" || status == "DOUBLE_SPEND_ATTEMPTED" || status == "SEEN_IN_ORPHAN_MEMPOOL";
}

bool is_accepted_status(std::string_view status) {
    static constexpr std::array<std::string_view, 9> accepted = {"RECEIVED",
                                                                 "STORED",
                                                                 "ANNOUNCED_TO_NETWORK",
                                                                 "REQUESTED_BY_NETWORK",
                                                                 "SENT_TO_NETWORK",
                                                                 "ACCEPTED_BY_NETWORK",
                                                                 "SEEN_ON_NETWORK",
                                                                 "MINED",
                                                                 "CONFIRMED"};
    return std::find(accepted.begin(), accepted.end(), status) != accepted.end();
}

}  // namespace

bool qv_clasp_is_missing_inputs(std::string_view text) {
    return contains(text, "Missing inputs") || contains(text, "missing inputs") ||
           contains(text, "missingorspent");
}

bool arc_verdict(const std::string& body, const std::string& txid, std::string& error_out) {
    error_out.clear();
    Json answer;
    if (!parse_json(body, answer)) {
        error_out = body.empty() ? "bad arc response" : body;
        return false;
    }
    const std::string status = json_text(answer, "txStatus");
    const std::string extra = json_text(answer, "extraInfo");
    if (is_refused_status(status)) {
        error_out = extra.empty() || extra == status ? status : status + ": " + extra;
        return false;
    }
    if (qv_clasp_is_missing_inputs(extra)) {
        error_out = extra;
        return false;
    }
    if (!is_hex64(json_text(answer, "txid")) && !is_hex64(txid)) {
        error_out = "arc did not return a txid";
        return false;
    }
    if (is_accepted_status(status)) return true;
    error_out = !extra.empty() ? extra : !status.empty() ? status : "broadcast did not confirm";
    return false;
}

bool qv_clasp_arc_submit(const std::string& raw_hex, const std::string& txid, std::string& error_out) {
    std::string answer;
    if (!qv_clasp_http_post_json(settings().arc_tx_endpoint, transaction_body("rawTx", raw_hex), answer,
                                 error_out, BROADCAST_TIMEOUT_S, BROADCAST_TRIES)) {
        return false;
    }
    return arc_verdict(answer, txid, error_out);
}

std::string qv_clasp_confirm_and_record(const BroadcastContext& context, const std::string& txid) {
    const std::string& seen = is_hex64(txid) ? txid : context.txid;
    if (!is_hex64(seen) || !wait_until_seen(seen)) return "";
    qv_clasp_coin_records().last_broadcast_txid = seen;
    qv_clasp_record_sent(context.coins, context.outputs, seen, context.change_hash160);
    qv_clasp_queue_receipt(context.raw_hex, seen, context.outputs);
    return "success: " + seen;
}

std::string qv_clasp_broadcast(const std::vector<QvClaspCoin>& coins,
                               const std::vector<QvClaspTxOutput>& outputs, const Hash160& change_hash160,
                               std::string& txid_out, bool* accepted_out) {
    const Bytes raw = qv_clasp_serialize_tx(coins, outputs, false);
    if (raw.empty()) return "error: serialize failed.";
    txid_out = qv_clasp_txid(raw);
    const std::string raw_hex = qv_clasp_hex_encode(raw);
    const BroadcastContext context{coins, outputs, change_hash160, txid_out, raw_hex};
    if (submit_to_home(raw_hex)) {
        const std::string result = qv_clasp_confirm_and_record(context, txid_out);
        if (!result.empty()) return result;
    }
    bool accepted = false;
    std::string result = broadcast_to_chain_service(context, accepted);
    if (accepted_out != nullptr) *accepted_out = accepted;
    return result;
}
