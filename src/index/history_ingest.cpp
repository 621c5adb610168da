#include "index/history_ingest.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "base/parallel_for.h"
#include "base/ranked_mutex.h"
#include "base/settings.h"
#include "base/text.h"
#include "index/chain_view.h"
#include "index/content_cache.h"
#include "index/inscription.h"
#include "index/own_addresses.h"
#include "net/http_client.h"
#include "spend/chain_readers.h"

namespace {

constexpr std::size_t INGEST_THREADS = 6;
constexpr std::size_t INGEST_LIMIT = 24;
constexpr std::size_t FEED_LIMIT = 12;
constexpr int FEED_TIMEOUT_S = 12;
// A feed that ignores its limit is not followed without end.
constexpr std::size_t MOST_FEED_TXIDS = 256;

std::vector<std::string> recent_txids(const std::string& address) {
    std::vector<std::string> list;
    std::unordered_set<std::string> seen;
    for (const char* path : {"/unconfirmed/history", "/confirmed/history", "/history"}) {
        qv_clasp_history_txids(address, path, list, INGEST_LIMIT, seen);
    }
    return list;
}

void find_watched_tokens(const std::string& txid, const AddressesByHash& watched,
                         std::vector<LocalOrd>& found) {
    const std::shared_ptr<const Json> tx = qv_clasp_shared_tx(txid);
    const Json* outputs = tx_outputs(tx);
    if (outputs == nullptr) return;
    for (std::size_t place = 0; place < outputs->size(); ++place) {
        const Json& entry = (*outputs)[place];
        const std::uint32_t vout = vout_index(entry, place);
        Hash160 owner_hash{};
        Bsv20Meta meta;
        std::string outpoint;
        if (!read_ord_output(entry, txid, vout, owner_hash, meta, outpoint)) continue;
        const auto owner = watched.find(owner_hash);
        if (owner == watched.end()) continue;
        LocalOrd ord = token_ord(txid, vout, meta, owner->second);
        if (ord.token_id.empty()) ord.token_id = outpoint;
        found.push_back(std::move(ord));
    }
}

struct TxidFeed {
    std::vector<std::string> txids;
    std::unordered_set<std::string> seen;
};

void collect_txid(TxidFeed& feed, const std::string& txid) {
    if (is_hex64(txid) && feed.txids.size() < MOST_FEED_TXIDS && feed.seen.insert(txid).second) {
        feed.txids.push_back(txid);
    }
}

// One reader for both feeds: bare rows, or rows under `result` or `txids`; a row is a text or an object.
void collect_txids(TxidFeed& feed, const std::string& body) {
    Json answer;
    if (!parse_json(body, answer)) return;
    const Json* lists[] = {&answer, &json_member(answer, "txids"), &json_member(answer, "result")};
    for (const Json* list : lists) {
        if (!list->is_array()) continue;
        for (const Json& row : *list) {
            collect_txid(feed, row.is_string() ? row.get_ref<const std::string&>() : row_txid(row));
        }
    }
}

std::vector<std::string> identity_txids() {
    TxidFeed feed;
    std::string body;
    std::string error;
    const std::string limit = "?limit=" + std::to_string(FEED_LIMIT);
    const std::string chain_url =
        settings().woc_base + "/address/" + settings().oracle_address + "/unconfirmed/history" + limit;
    if (qv_clasp_http_get(chain_url, body, error, FEED_TIMEOUT_S)) collect_txids(feed, body);
    if (feed.txids.size() >= FEED_LIMIT) return feed.txids;
    const std::string home_url = "https://" + settings().home_host + "/oi/oracle/ident/txids" + limit;
    if (qv_clasp_http_get(home_url, body, error, FEED_TIMEOUT_S)) collect_txids(feed, body);
    return feed.txids;
}

std::string session_identity_key() {
    const WalletLock lock = qv_clasp_lock_wallet();
    return ascii_lower(qv_clasp_session().identity_pub);
}

// False unless the output is an identity record that belongs to a watch address.
bool read_identity_row(const Json& entry, const std::string& txid, std::uint32_t vout,
                       const AddressesByHash& watched, const std::string& identity_key, QvClaspOrdRow& row) {
    Hash160 owner_hash{};
    Inscription inscription;
    if (!read_ord_entry(entry, owner_hash, inscription)) return false;
    const auto owner = watched.find(owner_hash);
    if (owner == watched.end()) return false;
    if (!identity_label(body_text(inscription.body), identity_key, row.name)) return false;
    row.origin = outpoint_text(txid, vout);
    row.txid = txid;
    row.vout = vout;
    row.type = inscription.content_type;
    row.address = owner->second;
    row.certificate = true;
    qv_clasp_cache_put(row.origin, row.type, inscription.body);
    return true;
}

}  // namespace

void ingest_woc_recent_ords(const std::vector<std::string>& watch, std::vector<LocalOrd>& found_inout,
                            std::uint64_t generation) {
    const AddressesByHash watched = addresses_by_hash(watch);
    RankedMutex<LockRank::Leaf> found_mutex;
    parallel_for(watch.size(), INGEST_THREADS, [&](std::size_t i) {
        if (generation_moved(generation)) return;
        std::vector<LocalOrd> found;
        for (const std::string& txid : recent_txids(watch[i])) {
            if (generation_moved(generation)) break;
            find_watched_tokens(txid, watched, found);
        }
        const std::lock_guard hold(found_mutex);
        std::move(found.begin(), found.end(), std::back_inserter(found_inout));
    });
}

void qv_clasp_ingest_identity(const std::vector<std::string>& watch, std::vector<QvClaspOrdRow>& rows_inout) {
    const AddressesByHash watched = addresses_by_hash(watch);
    const std::string identity_key = session_identity_key();
    for (const std::string& txid : identity_txids()) {
        const std::shared_ptr<const Json> tx = qv_clasp_shared_tx(txid);
        const Json* outputs = tx_outputs(tx);
        for (std::size_t place = 0; outputs != nullptr && place < outputs->size(); ++place) {
            const Json& entry = (*outputs)[place];
            QvClaspOrdRow row;
            if (read_identity_row(entry, txid, vout_index(entry, place), watched, identity_key, row)) {
                rows_inout.push_back(std::move(row));
            }
        }
    }
}

std::string kind_label(std::string_view kind) {
    static constexpr std::pair<std::string_view, std::string_view> LABELS[] = {
        {"id_age", "ID-age"},
        {"id_addr", "ID-addr"},
        {"id_photo", "ID-gov-photo"},
        {"id_bank", "ID-bank"},
        {"id_paypal", "ID-paypal"},
        {"id_code_sign", "code-signing-ID"},
        {"id_web_sign", "website-signing-ID"},
    };
    const auto* found = std::find_if(std::begin(LABELS), std::end(LABELS),
                                     [&](const auto& row) { return row.first == kind; });
    return found == std::end(LABELS) ? "" : std::string(found->second);
}

bool identity_label(std::string_view body, const std::string& identity_pub, std::string& label_out) {
    label_out.clear();
    Json record;
    if (!body.starts_with('{') || !parse_json(body, record)) return false;
    if (json_text(record, "protocol") != "QV-Ident" || json_text(record, "type") != "id_issue") return false;
    label_out = kind_label(json_text(record, "kind"));
    if (label_out.empty()) {
        label_out = name_from_body(body);
        return true;
    }
    const std::string subject = ascii_lower(json_text(record, "subject"));
    if (identity_pub.empty() || subject.empty() || subject == identity_pub) return true;
    const std::string handle = json_text(record, "subject_handle");
    const std::string alias = handle.substr(0, handle.find('@'));
    if (!alias.empty()) label_out += " (" + alias + ")";
    return true;
}
