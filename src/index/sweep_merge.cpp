#include "index/sweep_merge.h"

#include <algorithm>
#include <limits>

#include "base/text.h"
#include "index/indexer_rows.h"
#include "index/inscription.h"
#include "index/sweep_sources.h"
#include "spend/art_tags.h"

namespace {

// Rows by their origin, in any case, while they are being collected.
class RowsByOrigin {
 public:
    explicit RowsByOrigin(std::vector<QvClaspOrdRow>& rows) : rows_(rows) {
        for (std::size_t i = 0; i < rows.size(); ++i) places_.emplace(ascii_lower(rows[i].origin), i);
    }
    bool has(const std::string& origin) const { return places_.count(ascii_lower(origin)) != 0; }
    // Adds the row, or fills the blanks of the one that stands there.
    void merge(const QvClaspOrdRow& row) {
        const auto [place, added] = places_.emplace(ascii_lower(row.origin), rows_.size());
        if (added) {
            rows_.push_back(row);
            return;
        }
        QvClaspOrdRow& known = rows_[place->second];
        for (std::string QvClaspOrdRow::*field :
             {&QvClaspOrdRow::type, &QvClaspOrdRow::address, &QvClaspOrdRow::name, &QvClaspOrdRow::icon,
              &QvClaspOrdRow::amt, &QvClaspOrdRow::dec, &QvClaspOrdRow::token_id})
            fill_blank(known.*field, row.*field);
        if (known.height == 0) known.height = row.height;
    }

 private:
    std::vector<QvClaspOrdRow>& rows_;
    std::unordered_map<std::string, std::size_t> places_;
};

QvClaspOrdRow row_of(const LocalOrd& ord) {
    QvClaspOrdRow row;
    row.origin = ord.origin;
    row.txid = ord.txid;
    row.vout = ord.vout < 0 ? 0 : static_cast<std::uint32_t>(ord.vout);
    row.type = ord.type.empty() ? "local" : ord.type;
    row.address = ord.address;
    row.name = ord.name;
    row.icon = ord.icon;
    row.amt = ord.amt;
    row.dec = ord.dec;
    row.token_id = ord.token_id;
    return row;
}

// True if the remembered ordinal changed.
bool update_owned(LocalOrd& known, const LocalOrd& found) {
    bool changed = false;
    for (std::string LocalOrd::*field : {&LocalOrd::type, &LocalOrd::name, &LocalOrd::icon})
        changed = fill_blank(known.*field, found.*field) || changed;
    for (std::string LocalOrd::*field : {&LocalOrd::amt, &LocalOrd::dec, &LocalOrd::token_id})
        changed = take_newer(known.*field, found.*field) || changed;
    return changed;
}

// The first sighting of each origin; a later one fills its blanks.
std::vector<LocalOrd> each_once(const std::vector<LocalOrd>& found) {
    std::vector<LocalOrd> once;
    std::unordered_map<std::string, std::size_t> places;
    for (const LocalOrd& ord : found) {
        const auto [place, added] = places.emplace(ascii_lower(ord.origin), once.size());
        if (added) {
            once.push_back(ord);
            continue;
        }
        LocalOrd& first = once[place->second];
        for (std::string LocalOrd::*field :
             {&LocalOrd::type, &LocalOrd::name, &LocalOrd::icon, &LocalOrd::amt, &LocalOrd::dec,
              &LocalOrd::token_id, &LocalOrd::address})
            fill_blank(first.*field, ord.*field);
    }
    return once;
}

// The content type that the indexer names, of the output itself or of its origin.
std::string listed_type(const Json& txo) {
    for (const Json* holder : {&txo, &json_member(txo, "origin")}) {
        const Json& inscription = json_member(json_member(*holder, "data"), "insc");
        const std::string type = json_text(json_member(inscription, "file"), "type");
        if (!type.empty()) return type;
    }
    return "";
}

// The origin of a row, which may stand there as a text or as an object; empty for a plain coin.
std::string listed_origin(const Json& txo) {
    std::string origin = json_text(txo, "origin");
    if (origin.empty()) origin = json_text(json_member(txo, "origin"), "outpoint");
    std::string txid;
    std::uint32_t vout = 0;
    return parse_outpoint(origin, txid, vout) ? ascii_lower(outpoint_text(txid, vout)) : "";
}

// Where a row of the listing of all outputs stands on the chain; false if it does not say so.
bool read_listed_place(const Json& txo, QvClaspOrdRow& row) {
    row.txid = ascii_lower(json_text(txo, "txid"));
    const std::int64_t vout = json_int(txo, "vout", -1);
    if (!is_hex64(row.txid) || vout < 0 || vout > std::numeric_limits<std::uint32_t>::max()) return false;
    row.vout = static_cast<std::uint32_t>(vout);
    return true;
}

// What stands there; false for an output that carries nothing, as far as the indexer knows.
bool read_listed_row(const Json& txo, const std::string& address, QvClaspOrdRow& row) {
    const bool token = read_indexer_token(txo, row.token_id, row.amt, row.name, row.dec, row.icon);
    row.origin = listed_origin(txo);
    if (row.origin.empty() && token) row.origin = outpoint_text(row.txid, row.vout);
    if (row.origin.empty()) return false;
    row.satoshis = json_int(txo, "satoshis", 1);
    const std::int64_t height = json_int(txo, "height");
    if (height > 0 && height <= std::numeric_limits<std::int32_t>::max())
        row.height = static_cast<std::int32_t>(height);
    row.type = listed_type(txo);
    if (token && !is_token_type(row.type)) row.type = TOKEN_TYPE;
    row.address = address;
    return true;
}

bool is_hidden(const OwnedByOrigin& owned, const std::string& origin) {
    const LocalOrd* ord = owned.find(origin);
    return ord && ord->hidden;
}

void tag_art(std::vector<QvClaspOrdRow>& rows) {
    const std::unordered_map<std::string, std::string> tags = qv_clasp_art_tags();
    for (QvClaspOrdRow& row : rows) {
        auto tag = tags.find(outpoint_key_of(row));
        if (tag == tags.end() || tag->second.empty()) tag = tags.find(qv_clasp_art_tag_key(row.origin));
        if (tag != tags.end()) row.art_tag = tag->second;
    }
}

}  // namespace

void merge_found(OrdinalSweep& sweep, std::vector<LocalOrd>& owned) {
    RowsByOrigin rows(sweep.rows);
    std::vector<LocalOrd> added;
    {
        const OwnedByOrigin by_origin(owned);
        for (const LocalOrd& ord : each_once(sweep.found)) {
            LocalOrd* known = by_origin.find(ord.origin);
            if (known && known->hidden) continue;
            if (known) {
                sweep.owned_changed = update_owned(*known, ord) || sweep.owned_changed;
            } else {
                added.push_back(ord);
            }
            rows.merge(row_of(ord));
        }
    }
    sweep.owned_changed = sweep.owned_changed || !added.empty();
    owned.insert(owned.end(), added.begin(), added.end());
}

void merge_listings(OrdinalSweep& sweep, std::vector<LocalOrd>& owned) {
    RowsByOrigin rows(sweep.rows);
    const OwnedByOrigin by_origin(owned);
    for (const AddressSweep& address : sweep.addresses) {
        Json listing;
        if (!address.txo_ok || !parse_json(address.txo_body, listing) || !listing.is_array()) continue;
        sweep.answered.insert(address.address);
        for (const Json& txo : listing) {
            QvClaspOrdRow row;
            if (!read_listed_place(txo, row)) continue;
            sweep.listed.insert(outpoint_key_of(row));
            if (read_listed_row(txo, address.address, row) && !is_hidden(by_origin, row.origin))
                rows.merge(row);
        }
    }
}

void add_remembered(OrdinalSweep& sweep, std::vector<LocalOrd>& owned) {
    RowsByOrigin rows(sweep.rows);
    const OwnedByOrigin by_origin(owned);
    for (const LocalOrd& ord : owned)
        if (!ord.hidden && !rows.has(ord.origin)) rows.merge(row_of(ord));
    if (!indexer_silent(sweep)) return;
    for (const LocalOrd& lot : sweep.snapshot.lots)
        if (!rows.has(lot.origin) && !is_hidden(by_origin, lot.origin)) rows.merge(row_of(lot));
}

void merge_sources(OrdinalSweep& sweep, std::vector<LocalOrd>& owned) {
    {
        // The identity feed does not know what is hidden.
        const OwnedByOrigin by_origin(owned);
        std::erase_if(sweep.rows, [&](const QvClaspOrdRow& row) { return is_hidden(by_origin, row.origin); });
    }
    merge_found(sweep, owned);
    merge_listings(sweep, owned);
    add_remembered(sweep, owned);
    tag_art(sweep.rows);
}
