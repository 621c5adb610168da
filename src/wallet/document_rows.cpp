#include "wallet/document_rows.h"

#include <limits>

#include "base/text.h"
#include "wallet/name_registry.h"

namespace {

constexpr std::size_t LONGEST_NOTE = 80;

// An output number that does not fit counts as missing.
std::int32_t read_vout(const Json& row) {
    const std::int64_t vout = json_int(row, "vout");
    const bool fits =
        vout >= std::numeric_limits<std::int32_t>::min() && vout <= std::numeric_limits<std::int32_t>::max();
    return fits ? static_cast<std::int32_t>(vout) : 0;
}

LocalOrd read_local_ord(const Json& row) {
    LocalOrd ord;
    ord.origin = json_text(row, "origin");
    ord.txid = json_text(row, "txid");
    ord.vout = read_vout(row);
    ord.type = json_text(row, "type");
    ord.address = json_text(row, "address");
    ord.name = json_text(row, "name");
    ord.icon = json_text(row, "icon");
    ord.amt = json_text(row, "amt");
    ord.dec = json_text(row, "dec");
    ord.token_id = json_text(row, "token_id");
    ord.hidden = json_bool(row, "hidden", false);
    ord.created = json_bool(row, "created", true);
    return ord;
}

void put_if_any(Json& row, const char* key, const std::string& text) {
    if (!text.empty()) row[key] = text;
}

}  // namespace

bool read_counter(const Json& value, std::uint32_t& counter) {
    std::int64_t number = 0;
    if (!value.is_number_integer() || !json_whole(value, number)) return false;
    if (number < 0 || number >= std::int64_t{HARDENED}) return false;
    counter = static_cast<std::uint32_t>(number);
    return true;
}

std::vector<LocalOrd> read_ord_owned(const Json& document) {
    std::vector<LocalOrd> rows;
    const Json& array = json_member(document, "ord_owned");
    if (!array.is_array()) return rows;
    for (const Json& row : array) {
        LocalOrd ord = read_local_ord(row);
        if (!ord.origin.empty()) rows.push_back(std::move(ord));
    }
    return rows;
}

Json ord_owned_rows(const std::vector<LocalOrd>& rows) {
    Json array = Json::array();
    for (const LocalOrd& ord : rows) {
        Json row = {{"origin", ord.origin}, {"txid", ord.txid}, {"vout", ord.vout}, {"created", ord.created}};
        put_if_any(row, "type", ord.type);
        put_if_any(row, "address", ord.address);
        put_if_any(row, "name", ord.name);
        put_if_any(row, "icon", ord.icon);
        put_if_any(row, "amt", ord.amt);
        put_if_any(row, "dec", ord.dec);
        put_if_any(row, "token_id", ord.token_id);
        if (ord.hidden) row["hidden"] = true;
        array.push_back(std::move(row));
    }
    return array;
}

std::vector<QvClaspContact> read_contacts(const Json& document) {
    std::vector<QvClaspContact> contacts;
    const Json& array = json_member(document, "contacts");
    if (!array.is_array()) return contacts;
    for (const Json& row : array) {
        const std::string note = json_text(row, "note");
        QvClaspContact contact;
        contact.dest = qv_clasp_normalize_dest(json_text(row, "dest"));
        contact.note = trim_white(note).substr(0, LONGEST_NOTE);
        if (!contact.dest.empty()) contacts.push_back(std::move(contact));
    }
    return contacts;
}

Json contact_rows(const std::vector<QvClaspContact>& contacts) {
    Json array = Json::array();
    for (const QvClaspContact& contact : contacts) {
        Json row = {{"dest", contact.dest}};
        put_if_any(row, "note", contact.note);
        array.push_back(std::move(row));
    }
    return array;
}
