#include "index/holder_snapshot.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "base/amounts.h"
#include "base/decimal_text.h"
#include "base/settings.h"
#include "base/text.h"
#include "index/holder_entries.h"
#include "index/holder_sources.h"
#include "index/inscription.h"
#include "index/inscription_fetch.h"
#include "index/own_addresses.h"
#include "index/token_meta.h"
#include "paymail/paymail_resolve.h"
#include "wallet/address.h"
#include "wallet/session_keys.h"
#include "wallet/wallet_document.h"

namespace {

constexpr const char* BAD_TOKEN_ID = "error: token id looks wrong (need deploy origin txid_vout).";
constexpr const char* NO_RIGHT = "error: this wallet does not hold that token and did not mint it.";

// Reads the wallet once; false if none is loaded.
bool read_wallet(SnapshotWallet& wallet) {
    const WalletLock lock = qv_clasp_lock_wallet();
    if (!qv_clasp_load()) return false;
    const QvClaspSession& session = qv_clasp_session();
    for (const auto& [hash, address] : addresses_by_hash(qv_clasp_own_addresses()))
        wallet.own_hashes.insert(hash);
    wallet.identity_pub = ascii_lower(session.identity_pub);
    if (session.hd && !session.mnemonic.empty()) {
        wallet.ord_address = qv_clasp_account_address(ORDINAL_ACCOUNT, session.recv[ORDINAL_ACCOUNT]);
    }
    wallet.scope = qv_clasp_scope_key();
    wallet.generation = qv_clasp_generation();
    return true;
}

bool names_token(const LocalOrd& ord, const std::string& token_id) {
    if (ord.origin == token_id) return true;
    std::string type;
    Bytes body;
    Bsv20Meta meta;
    return qv_clasp_inscription_bytes(ord.origin, type, body, false) && parse_bsv20(body_text(body), meta) &&
           token_id_of(meta, ord.origin) == token_id;
}

// Whether this wallet minted the token; false as a result means that the wallet is no longer the one that was
// read.
bool read_minted(const SnapshotWallet& wallet, const std::string& token_id, bool& minted_out) {
    const WalletLock lock = qv_clasp_lock_wallet();
    if (!qv_clasp_load() || qv_clasp_scope_key() != wallet.scope) return false;
    const std::vector<LocalOrd>& owned = qv_clasp_session().ord_owned;
    minted_out = std::any_of(owned.begin(), owned.end(),
                             [&](const LocalOrd& ord) { return ord.created && names_token(ord, token_id); });
    return true;
}

std::string first_name(const std::vector<HolderTxo>& rows) {
    const auto named =
        std::find_if(rows.begin(), rows.end(), [](const HolderTxo& row) { return !row.name.empty(); });
    return named == rows.end() ? "" : named->name;
}

bool holds_any(const SnapshotWallet& wallet, const std::vector<HolderTxo>& rows) {
    return std::any_of(rows.begin(), rows.end(), [&](const HolderTxo& row) { return wallet.owns(row); });
}

// An alias is paid only if it resolves now.
std::string resolved_alias(const std::string& alias) {
    WalletLock lock = qv_clasp_lock_wallet();
    std::string error;
    return qv_clasp_load() ? qv_clasp_resolve_dest(lock, alias, error) : "";
}

std::string dest_of(const HolderEntry& entry, const std::string& ord_address) {
    if (entry.wallet_owned) return "";
    if (!entry.pay_address.empty() && entry.pay_address != ord_address) return entry.pay_address;
    // An address that is known for receiving tokens is not one for payments.
    if (entry.alias.empty() && entry.token_address) return "";
    const std::string dest = entry.alias.empty() ? entry.owner : resolved_alias(entry.alias);
    return dest != ord_address ? dest : "";
}

// False if the wallet has changed meanwhile.
bool fill_rows(const SnapshotWallet& wallet, const std::vector<HolderEntry>& entries, HolderBoard& board) {
    board.total_lots = "0";
    board.reserve_lots = "0";
    for (const HolderEntry& entry : entries) {
        if (generation_moved(wallet.generation)) return false;
        board.total_lots = dec_add(board.total_lots, entry.lots);
        if (entry.wallet_owned) board.reserve_lots = dec_add(board.reserve_lots, entry.lots);
        HolderRow row;
        row.who = entry.alias.empty() ? entry.owner : entry.alias + "@" + settings().home_domain;
        row.dest = dest_of(entry, wallet.ord_address);
        row.pubkey = entry.pubkey;
        row.lots = entry.lots;
        row.reserve = entry.wallet_owned;
        board.rows.push_back(std::move(row));
    }
    board.in_market_lots = dec_sub(board.total_lots, board.reserve_lots);
    return !generation_moved(wallet.generation);
}

bool stands_before(const HolderRow& a, const HolderRow& b) {
    if (a.reserve != b.reserve) return b.reserve;
    const int order = dec_cmp(a.lots, b.lots);
    return order != 0 ? order > 0 : a.who < b.who;
}

}  // namespace

std::string qv_clasp_snapshot_holders(const std::string& token_id, HolderBoard& board) {
    const std::string id = token_id;  // the board may own the text that was handed in
    board = {};
    board.token_id = id;
    if (id.size() < TOKEN_ID_LENGTH) return BAD_TOKEN_ID;
    if (!qv_clasp_wallet_ready()) return ERROR_NOT_CONNECTED;
    SnapshotWallet wallet;
    if (!read_wallet(wallet)) return ERROR_NO_WALLET;

    std::vector<HolderTxo> index_rows;
    qv_clasp_fetch_holders(id, index_rows);
    qv_clasp_fetch_token_meta(id, board.token_name);
    if (generation_moved(wallet.generation)) return ERROR_WALLET_CHANGED;
    std::vector<HolderTxo> chain_rows;
    qv_clasp_trace_token_rows(id, chain_rows, wallet.generation);
    if (generation_moved(wallet.generation)) return ERROR_WALLET_CHANGED;
    std::vector<HolderTxo> rows = merge_holder_rows(chain_rows, index_rows);
    reconcile_deploy_rows(rows);

    bool minted = false;
    if (!read_minted(wallet, id, minted)) return ERROR_WALLET_CHANGED;
    if (board.token_name.empty()) board.token_name = first_name(rows);
    if (!minted && !holds_any(wallet, rows)) return NO_RIGHT;

    board.loaded = true;
    std::vector<HolderEntry> entries;
    if (!aggregate_holders(rows, wallet, entries) || !fill_rows(wallet, entries, board))
        return ERROR_WALLET_CHANGED;
    std::stable_sort(board.rows.begin(), board.rows.end(), stands_before);
    return "";
}
