#include "index/sweep_sources.h"

#include <openssl/evp.h>

#include <algorithm>
#include <map>

#include "base/amounts.h"
#include "base/parallel_for.h"
#include "base/ranked_mutex.h"
#include "base/settings.h"
#include "base/text.h"
#include "index/content_cache.h"
#include "index/indexer_rows.h"
#include "index/inscription.h"
#include "index/own_addresses.h"
#include "index/token_walk.h"
#include "net/http_client.h"
#include "wallet/address.h"

namespace {

constexpr int LISTING_TIMEOUT_S = 8;
constexpr std::size_t WALK_THREADS = 4;

// The token outpoints of each address as it last answered, by scope key and address: an address that does not
// answer this time has not lost its tokens. Never destroyed, since a worker may still run when the process
// ends.
struct LastListings {
    RankedMutex<LockRank::Listings> mutex;
    std::map<std::string, std::map<std::string, TextSet>> by_scope;
};
LastListings& last_listings() {
    static auto& listings = *new LastListings;
    return listings;
}

void ask_about(AddressSweep& address) {
    std::string error;
    const std::string& base = settings().ordinals_api_base;
    address.txo_ok = qv_clasp_http_get(base + "/txos/address/" + address.address + "/unspent",
                                       address.txo_body, error, LISTING_TIMEOUT_S);
    std::string body;
    address.bsv20_ok =
        qv_clasp_http_get(base + "/bsv20/" + address.address + "/unspent", body, error, LISTING_TIMEOUT_S) &&
        parse_json(body, address.bsv20_list) && address.bsv20_list.is_array();
}

Bytes base64_bytes(const std::string& text) {
    if (text.empty() || text.size() % 4 != 0 || text.size() > 100'000'000) return {};
    Bytes bytes(text.size() / 4 * 3);
    const int count = EVP_DecodeBlock(bytes.data(), reinterpret_cast<const unsigned char*>(text.data()),
                                      static_cast<int>(text.size()));
    if (count < 0) return {};
    const auto padding = std::count(text.end() - 2, text.end(), '=');
    bytes.resize(static_cast<std::size_t>(count - padding));
    return bytes;
}

// What the output's own script says fills what the row leaves open.
void read_listed_script(const Json& row, LocalOrd& ord) {
    Hash160 owner_hash{};
    Inscription inscription;
    if (!read_ord_script(base64_bytes(json_text(row, "script")), owner_hash, inscription)) return;
    qv_clasp_cache_put(ord.origin, inscription.content_type, inscription.body);
    Bsv20Meta meta;
    if (parse_bsv20(body_text(inscription.body), meta)) {
        fill_blank(ord.token_id, token_id_of(meta, ord.origin));
        fill_blank(ord.dec, meta.dec);
        fill_blank(ord.icon, meta.icon);
        fill_blank(ord.name, meta.name);
    }
    fill_blank(ord.name, name_from_body(body_text(inscription.body)));
}

std::string listed_owner(const Json& row, const std::string& watch_address) {
    const std::string owner = json_text(row, "owner");
    Hash160 hash{};
    return qv_clasp_address_to_hash160(owner, hash) ? owner : watch_address;
}

// The outpoint of a row under one of its three spellings; false if none is an outpoint.
bool listed_outpoint(const Json& row, std::string& txid, std::uint32_t& vout) {
    std::string outpoint = json_text(row, "outpoint");
    if (outpoint.empty()) outpoint = json_text(row, "origin");
    if (outpoint.empty()) outpoint = json_text(row, "txid") + "_" + std::to_string(json_int(row, "vout", -1));
    return outpoint.size() >= TOKEN_ID_LENGTH && parse_outpoint(outpoint, txid, vout);
}

void take_token_row(OrdinalSweep& sweep, const AddressSweep& address, const Json& row, TextSet& listed) {
    LocalOrd ord;
    std::uint32_t vout = 0;
    if (!row.is_object() || !json_text(row, "spend").empty() || !listed_outpoint(row, ord.txid, vout)) return;
    ord.txid = ascii_lower(ord.txid);
    ord.vout = static_cast<std::int32_t>(vout);
    ord.origin = outpoint_text(ord.txid, vout);
    ord.type = TOKEN_TYPE;
    ord.address = listed_owner(row, address.address);
    ord.amt = read_txo_amount(row);
    ord.dec = read_txo_dec(row);
    ord.token_id = read_txo_id(row);
    ord.created = false;
    listed.insert(ord.origin);
    sweep.figures[ord.origin] = {ord.amt, ord.dec};
    read_listed_script(row, ord);
    sweep.found.push_back(std::move(ord));
}

bool may_be_token(const LocalOrd& ord, std::string& token_id) {
    std::string type;
    Bytes bytes;
    if (!qv_clasp_cache_get(ord.origin, type, bytes)) return false;
    Bsv20Meta meta;
    const bool record = parse_bsv20(body_text(bytes), meta);
    token_id = ord.token_id.empty() && record ? token_id_of(meta, ord.origin) : ord.token_id;
    return record || is_image_type(type) || is_token_type(type) || contains(type, "bsv20");
}

// What the wallet remembers and what this sweep has found so far; empty if the wallet has changed.
std::vector<LocalOrd> known_ords(const OrdinalSweep& sweep) {
    std::vector<LocalOrd> known;
    if (!with_wallet(sweep, [&](const QvClaspSession& session) { known = session.ord_owned; })) return {};
    known.insert(known.end(), sweep.found.begin(), sweep.found.end());
    return known;
}

}  // namespace

void ask_indexer(OrdinalSweep& sweep) {
    sweep.addresses.resize(sweep.watch.size());
    for (std::size_t i = 0; i < sweep.watch.size(); ++i) sweep.addresses[i].address = sweep.watch[i];
    parallel_for(sweep.addresses.size(), sweep.addresses.size(),
                 [&](std::size_t i) { ask_about(sweep.addresses[i]); });
}

void take_token_listings(OrdinalSweep& sweep) {
    LastListings& memory = last_listings();
    const std::lock_guard hold(memory.mutex);
    std::map<std::string, TextSet>& last = memory.by_scope[sweep.scope_key];
    for (const AddressSweep& address : sweep.addresses) {
        if (address.bsv20_ok) {
            TextSet listed;
            for (const Json& row : address.bsv20_list) take_token_row(sweep, address, row, listed);
            last[address.address] = std::move(listed);
            sweep.token_listing = true;
        }
        const TextSet& listed = last[address.address];
        sweep.indexed.insert(listed.begin(), listed.end());
    }
}

bool indexer_silent(const OrdinalSweep& sweep) {
    return std::none_of(sweep.addresses.begin(), sweep.addresses.end(),
                        [](const AddressSweep& address) { return address.txo_ok || address.bsv20_ok; });
}

void walk_owned_tokens(OrdinalSweep& sweep) {
    const std::vector<WalkStart> starts = walk_starts(known_ords(sweep));
    std::vector<std::vector<LocalOrd>> found(starts.size());
    parallel_for(starts.size(), WALK_THREADS, [&](std::size_t i) {
        qv_clasp_trace_owned(starts[i].outpoint, sweep.watch, found[i], starts[i].climb, sweep.generation);
    });
    for (const std::vector<LocalOrd>& some : found)
        sweep.found.insert(sweep.found.end(), some.begin(), some.end());
}

std::vector<WalkStart> walk_starts(const std::vector<LocalOrd>& known) {
    std::map<std::string, std::vector<std::string>> recorded;
    for (const LocalOrd& ord : known)
        if (!ord.hidden && !ord.token_id.empty()) recorded[ord.token_id].push_back(outpoint_key_of(ord));
    std::vector<WalkStart> starts;
    TextSet begun;
    const auto begin_at = [&](const std::string& outpoint, bool climb) {
        if (begun.insert(ascii_lower(outpoint)).second) starts.push_back({outpoint, climb});
    };
    for (const LocalOrd& ord : known) {
        std::string token_id;
        if (ord.hidden || !may_be_token(ord, token_id)) continue;
        const auto outputs = recorded.find(token_id);
        if (outputs == recorded.end()) {
            begin_at(ord.origin, true);
        } else {
            for (const std::string& outpoint : outputs->second) begin_at(outpoint, false);
            outputs->second.clear();  // begun, whatever else of this token is met
        }
    }
    return starts;
}
