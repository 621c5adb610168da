#include "index/chain_view.h"

#include <unordered_map>

#include "base/ranked_mutex.h"
#include "base/settings.h"
#include "base/text.h"
#include "net/http_client.h"
#include "spend/chain_readers.h"

namespace {

constexpr int TX_TIMEOUT_S = 15;
constexpr int SPENT_TIMEOUT_S = 15;
constexpr int HISTORY_TIMEOUT_S = 25;

// Never destroyed, since a worker may still run when the process ends.
struct ChainCache {
    RankedMutex<LockRank::Leaf> mutex;  // the chain lock
    std::unordered_map<std::string, std::shared_ptr<const Json>> transactions;
    std::unordered_map<std::string, SpendStatus> spend_statuses;
    std::unordered_map<std::string, std::string> spenders;
};
ChainCache& chain_cache() {
    static auto& cache = *new ChainCache;
    return cache;
}

void keep_spend(const std::string& key, SpendStatus status, const std::string& spender) {
    ChainCache& cache = chain_cache();
    const std::lock_guard hold(cache.mutex);
    cache.spend_statuses[key] = status;
    if (!spender.empty()) cache.spenders[key] = spender;
}

bool kept_spend(const std::string& key, SpendStatus& status, std::string& spender) {
    ChainCache& cache = chain_cache();
    const std::lock_guard hold(cache.mutex);
    const auto found = cache.spend_statuses.find(key);
    if (found == cache.spend_statuses.end()) return false;
    status = found->second;
    if (status == SpendStatus::Spent) spender = cache.spenders[key];
    return true;
}

// The spender that an answer names; empty if the answer names none, which means unspent.
std::string spender_in(const std::string& body, const std::string& txid) {
    Json answer;
    if (!parse_json(body, answer)) return "";
    std::string spender = json_text(answer, "txid");
    return is_hex64(spender) && ascii_lower(spender) != ascii_lower(txid) ? spender : "";
}

}  // namespace

std::shared_ptr<const Json> qv_clasp_shared_tx(const std::string& txid) {
    if (!is_hex64(txid)) return nullptr;
    {
        ChainCache& cache = chain_cache();
        const std::lock_guard hold(cache.mutex);
        const auto found = cache.transactions.find(txid);
        if (found != cache.transactions.end()) return found->second;
    }
    std::string body;
    std::string error;
    Json document;
    if (!qv_clasp_http_get(settings().woc_base + "/tx/" + txid, body, error, TX_TIMEOUT_S) ||
        !parse_json(body, document) || !document.is_object()) {
        return nullptr;
    }
    auto tx = std::make_shared<const Json>(std::move(document));
    ChainCache& cache = chain_cache();
    const std::lock_guard hold(cache.mutex);
    cache.transactions[txid] = tx;
    return tx;
}

bool qv_clasp_tx_json(const std::string& txid, Json& tx_out) {
    const std::shared_ptr<const Json> tx = qv_clasp_shared_tx(txid);
    tx_out = tx ? *tx : Json();
    return tx != nullptr;
}

const Json* tx_outputs(const std::shared_ptr<const Json>& tx) {
    if (!tx) return nullptr;
    const Json& outputs = json_member(*tx, "vout");
    return outputs.is_array() ? &outputs : nullptr;
}

SpendStatus qv_clasp_spend_status(const std::string& txid, std::uint32_t vout, std::string& spender_out) {
    spender_out.clear();
    const std::string key = txid + "/" + std::to_string(vout);
    SpendStatus status = SpendStatus::Unknown;
    if (kept_spend(key, status, spender_out)) return status;
    if (!is_hex64(txid)) return SpendStatus::Unknown;

    std::string body;
    std::string error;
    if (qv_clasp_http_get(settings().woc_base + "/tx/" + key + "/spent", body, error, SPENT_TIMEOUT_S,
                          true)) {
        spender_out = spender_in(body, txid);
        if (spender_out.empty()) return SpendStatus::Unspent;
        keep_spend(key, SpendStatus::Spent, spender_out);
        return SpendStatus::Spent;
    }
    // Only a clear "not found" is final: a service that gives no answer must not make a transaction vanish.
    const bool refused = contains(error, "HTTP 400") || contains(error, "HTTP 404");
    if (!refused || qv_clasp_tx_probe(txid) != TxProbe::NotFound) return SpendStatus::Unknown;
    keep_spend(key, SpendStatus::NoSuchTx, "");
    return SpendStatus::NoSuchTx;
}

void qv_clasp_clear_spend_cache() {
    ChainCache& cache = chain_cache();
    const std::lock_guard hold(cache.mutex);
    cache.spend_statuses.clear();
    cache.spenders.clear();
}

void qv_clasp_history_txids(const std::string& address, const std::string& path,
                            std::vector<std::string>& list_inout, std::size_t limit,
                            std::unordered_set<std::string>& seen_inout) {
    if (list_inout.size() >= limit) return;
    std::string body;
    std::string error;
    Json answer;
    const std::string url = settings().woc_base + "/address/" + address + path;
    if (!qv_clasp_http_get(url, body, error, HISTORY_TIMEOUT_S) || !parse_json(body, answer)) return;
    const Json* rows = result_array(answer);
    if (rows == nullptr) return;
    // The newest stand at the end, and they win the limit.
    for (auto row = rows->rbegin(); row != rows->rend() && list_inout.size() < limit; ++row) {
        const std::string txid = row_txid(*row);
        if (is_hex64(txid) && seen_inout.insert(txid).second) list_inout.push_back(txid);
    }
}
