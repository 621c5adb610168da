#include "index/token_list.h"

#include <algorithm>
#include <tuple>
#include <unordered_map>

#include "base/amounts.h"
#include "index/holder_snapshot.h"
#include "index/inscription_fetch.h"
#include "index/ordinal_listing.h"
#include "index/own_addresses.h"
#include "wallet/wallet_document.h"

namespace {

// The tokens met so far, in the order of their first mention.
struct TokenEntries {
    std::vector<TokenRow> rows;
    std::unordered_map<std::string, std::size_t> places;

    TokenRow& at(const std::string& token_id) {
        const auto [place, added] = places.emplace(token_id, rows.size());
        if (added) rows.push_back({token_id, "", "", false});
        return rows[place->second];
    }
};

void fill_name(TokenRow& row, const std::string& name) {
    if (row.name.empty()) row.name = name;
}

void add_swept_tokens(TokenEntries& entries) {
    std::vector<QvClaspOrdRow> swept;
    // A sweep that fails leaves the list to what the wallet remembers.
    qv_clasp_list_ordinals(swept);
    for (const QvClaspOrdRow& row : swept)
        if (row.token_id.size() >= TOKEN_ID_LENGTH) fill_name(entries.at(row.token_id), row.name);
}

void add_remembered_token(TokenEntries& entries, const LocalOrd& ord) {
    std::string type;
    Bytes body;
    Bsv20Meta record;
    if (ord.hidden || !qv_clasp_inscription_bytes(ord.origin, type, body, false)) return;
    if (!parse_bsv20(body_text(body), record)) return;
    const std::string token_id = token_id_of(record, ord.origin);
    if (token_id.size() < TOKEN_ID_LENGTH) return;
    TokenRow& row = entries.at(token_id);
    if (ord.created) row.minted = true;
    fill_name(row, token_label(token_id, record, ord.name));
}

// False if no wallet is loaded.
bool add_remembered_tokens(TokenEntries& entries) {
    const WalletLock lock = qv_clasp_lock_wallet();
    if (!qv_clasp_load()) return false;
    for (const LocalOrd& ord : qv_clasp_session().ord_owned) add_remembered_token(entries, ord);
    return true;
}

// The wallet's own lots, as far as a snapshot of the token can be made.
void take_own_lots(TokenRow& row) {
    HolderBoard board;
    if (!qv_clasp_snapshot_holders(row.token_id, board).empty() || !board.loaded) return;
    if (!board.reserve_lots.empty() && board.reserve_lots != "0") row.lots = board.reserve_lots;
    fill_name(row, board.token_name);
}

}  // namespace

std::string qv_clasp_list_tokens(std::vector<TokenRow>& rows, bool refresh) {
    rows.clear();
    if (!qv_clasp_wallet_ready()) return ERROR_NOT_CONNECTED;
    TokenEntries entries;
    if (refresh) add_swept_tokens(entries);
    if (!add_remembered_tokens(entries)) return ERROR_NO_WALLET;
    for (TokenRow& row : entries.rows) {
        if (refresh) take_own_lots(row);
        fill_name(row, token_label(row.token_id, {}, ""));
    }
    rows = std::move(entries.rows);
    std::sort(rows.begin(), rows.end(), [](const TokenRow& a, const TokenRow& b) {
        return std::tie(a.name, a.token_id) < std::tie(b.name, b.token_id);
    });
    return "";
}

std::string token_label(const std::string& token_id, const Bsv20Meta& meta, const std::string& fallback) {
    for (const std::string* name : {&meta.name, &meta.sym, &fallback})
        if (!name->empty()) return *name;
    constexpr std::size_t FIRST = 8;
    constexpr std::size_t LAST = 6;
    if (token_id.size() < 16) return token_id;
    return token_id.substr(0, FIRST) + "..." + token_id.substr(token_id.size() - LAST);
}
