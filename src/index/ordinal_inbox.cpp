#include "index/ordinal_inbox.h"

#include <algorithm>
#include <unordered_map>

#include "base/decimal_text.h"
#include "base/hex.h"
#include "base/json_file.h"
#include "index/content_cache.h"
#include "index/inscription.h"
#include "index/own_addresses.h"
#include "index/sweep_state.h"
#include "wallet/address.h"
#include "wallet/data_root.h"
#include "wallet/document_file.h"
#include "wallet/wallet_document.h"

namespace {

std::string inbox_folder() {
    return qv_data_root() + "/ord_inbox";
}

// Empty for a text that is no address.
std::string inbox_path(const std::string& address) {
    Hash160 hash{};
    if (!qv_clasp_address_to_hash160(address, hash)) return "";
    return inbox_folder() + "/" + qv_clasp_hex_encode(hash) + ".json";
}

// The record as a remembered ordinal; false unless its origin is an outpoint.
bool read_record(const Json& record, const std::string& address, LocalOrd& ord) {
    ord.origin = json_text(record, "origin");
    std::uint32_t vout = 0;
    if (!parse_outpoint(ord.origin, ord.txid, vout)) return false;
    ord.vout = static_cast<std::int32_t>(vout);
    ord.type = json_text(record, "type");
    ord.name = clean_name(json_text(record, "name"));
    ord.icon = json_text(record, "icon");
    ord.amt = dec_norm(json_text(record, "amt"));
    ord.token_id = json_text(record, "id");
    ord.address = address;
    ord.created = false;
    return true;
}

// The remembered ordinals, with the place of each origin's first row.
struct OwnedList {
    std::vector<LocalOrd>& rows;
    std::unordered_map<std::string, std::size_t> places{};

    explicit OwnedList(std::vector<LocalOrd>& owned) : rows(owned) {
        for (std::size_t i = 0; i < rows.size(); ++i) places.emplace(rows[i].origin, i);
    }
};

// True if the list changed.
bool take_record(OwnedList& owned, const LocalOrd& ord) {
    const auto [place, added] = owned.places.emplace(ord.origin, owned.rows.size());
    if (added) {
        owned.rows.push_back(ord);
        return true;
    }
    LocalOrd& known = owned.rows[place->second];
    if (known.hidden) return false;
    bool changed = false;
    for (std::string LocalOrd::*field : {&LocalOrd::type, &LocalOrd::name, &LocalOrd::icon, &LocalOrd::amt,
                                         &LocalOrd::token_id, &LocalOrd::address})
        changed = fill_blank(known.*field, ord.*field) || changed;
    return changed;
}

// What the token's body must have said, for an origin that nothing is cached of.
void make_up_body(const LocalOrd& ord) {
    std::string type;
    Bytes bytes;
    if (ord.amt.empty() || qv_clasp_cache_get(ord.origin, type, bytes)) return;
    Json body = {{"p", "bsv-20"}, {"op", "transfer"}, {"amt", ord.amt}};
    if (!ord.token_id.empty()) body["id"] = ord.token_id;
    if (!ord.name.empty()) body["name"] = ord.name;
    if (!ord.icon.empty()) body["icon"] = ord.icon;
    const std::string text = dump_json(body, -1);
    qv_clasp_cache_put(ord.origin, ord.type.empty() ? TOKEN_TYPE : ord.type, Bytes(text.begin(), text.end()));
}

bool absorb_inbox_of(const std::string& address, OwnedList& owned) {
    const std::string path = inbox_path(address);
    Json records;
    if (path.empty() || !read_json_file(path, records) || !records.is_array()) return false;
    bool changed = false;
    for (const Json& record : records) {
        LocalOrd ord;
        if (!read_record(record, address, ord)) continue;
        changed = take_record(owned, ord) || changed;
        qv_clasp_name_put(ord.origin, ord.name);
        make_up_body(ord);
    }
    return changed;
}

Json inbox_record(const LocalOrd& ord) {
    return {{"origin", ord.origin}, {"type", ord.type},   {"name", ord.name},      {"icon", ord.icon},
            {"amt", ord.amt},       {"id", ord.token_id}, {"address", ord.address}};
}

}  // namespace

void qv_clasp_absorb_ord_inbox() {
    bool changed = false;
    const std::vector<std::string> addresses = qv_clasp_own_addresses();
    OwnedList owned(qv_clasp_session().ord_owned);
    for (const std::string& address : addresses) changed = absorb_inbox_of(address, owned) || changed;
    if (changed) qv_clasp_save();
}

void qv_clasp_post_ord_inbox(const LocalOrd& ord) {
    const std::string path = inbox_path(ord.address);
    if (path.empty() || ord.origin.empty()) return;
    Json records;
    if (!read_json_file(path, records) || !records.is_array()) records = Json::array();
    const auto known = std::find_if(records.begin(), records.end(), [&](const Json& record) {
        return json_text(record, "origin") == ord.origin;
    });
    Json merged = known == records.end() ? Json::object() : *known;
    const Json newer = inbox_record(ord);
    for (const auto& [key, value] : newer.items())
        if (value != "" || !merged.contains(key)) merged[key] = value;
    if (known == records.end()) {
        records.push_back(merged);
    } else {
        *known = merged;
    }
    make_folder(inbox_folder());
    write_text_file(path, dump_json(records, 2));
}

void qv_clasp_harvest_ord_names() {
    for (const std::string& path : qv_clasp_other_document_paths()) {
        // Whose wallets they are does not matter: their keys are no more to be left in memory than this
        // one's.
        WalletDocument document;
        if (!read_wallet_document(path, document)) continue;
        for (const LocalOrd& ord : read_ord_owned(document.root)) {
            const std::string name = clean_name(ord.name);
            if (!name.empty() && qv_clasp_name_get(ord.origin).empty()) qv_clasp_name_put(ord.origin, name);
        }
    }
}
