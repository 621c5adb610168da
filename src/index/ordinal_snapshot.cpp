#include "index/ordinal_snapshot.h"

#include <limits>

#include "base/amounts.h"
#include "base/json_file.h"
#include "base/text.h"
#include "index/inscription.h"
#include "wallet/data_root.h"

namespace {

constexpr std::size_t TXID_LENGTH = 64;

std::string snapshot_folder() {
    return qv_data_root() + "/ord_snap";
}

std::string snapshot_path(const std::string& scope) {
    return snapshot_folder() + "/" + scope + ".json";
}

bool read_lot(const Json& row, LocalOrd& lot) {
    lot.origin = json_text(row, "origin");
    if (lot.origin.empty()) return false;
    lot.txid = json_text(row, "txid");
    const std::int64_t vout = json_int(row, "vout");
    if (vout >= 0 && vout <= std::numeric_limits<std::int32_t>::max())
        lot.vout = static_cast<std::int32_t>(vout);
    if (lot.txid.size() != TXID_LENGTH) {
        std::uint32_t origin_vout = 0;
        if (lot.origin.size() < TOKEN_ID_LENGTH || !parse_outpoint(lot.origin, lot.txid, origin_vout))
            return false;
        lot.vout = static_cast<std::int32_t>(origin_vout);
    }
    lot.type = json_text(row, "type");
    lot.name = json_text(row, "name");
    lot.icon = json_text(row, "icon");
    lot.address = json_text(row, "address");
    lot.created = false;
    return true;
}

Json lot_row(const LocalOrd& lot) {
    Json row = {{"origin", lot.origin}, {"txid", lot.txid}, {"vout", lot.vout}};
    const std::pair<const char*, const std::string&> texts[] = {
        {"type", lot.type}, {"name", lot.name}, {"icon", lot.icon}, {"address", lot.address}};
    for (const auto& [key, text] : texts)
        if (!text.empty()) row[key] = text;
    return row;
}

std::vector<std::string> read_texts(const Json& list) {
    std::vector<std::string> texts;
    if (!list.is_array()) return texts;
    for (const Json& text : list)
        if (text.is_string()) texts.push_back(text.get<std::string>());
    return texts;
}

}  // namespace

bool qv_clasp_ord_snap_load(const std::string& scope, OrdSnapshot& snapshot) {
    snapshot = {};
    Json document;
    if (!read_json_file(snapshot_path(scope), document)) return false;
    const Json& lots = json_member(document, "lots");
    for (std::size_t i = 0; lots.is_array() && i < lots.size(); ++i) {
        LocalOrd lot;
        if (read_lot(lots[i], lot)) snapshot.lots.push_back(std::move(lot));
    }
    snapshot.txids = read_texts(json_member(document, "txids"));
    std::erase_if(snapshot.txids, [](const std::string& txid) { return txid.size() != TXID_LENGTH; });
    snapshot.token_ids = read_texts(json_member(document, "token_ids"));
    if (!snapshot.lots.empty() || !snapshot.txids.empty()) return true;
    snapshot = {};
    return false;
}

void qv_clasp_ord_snap_save(const std::string& scope, const OrdSnapshot& snapshot) {
    Json lots = Json::array();
    for (const LocalOrd& lot : snapshot.lots) lots.push_back(lot_row(lot));
    const Json document = {{"lots", lots}, {"txids", snapshot.txids}, {"token_ids", snapshot.token_ids}};
    make_folder(snapshot_folder());
    write_text_file(snapshot_path(scope), dump_json(document, 2));
}
