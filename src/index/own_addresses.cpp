#include "index/own_addresses.h"

#include <algorithm>
#include <unordered_set>

#include "base/decimal_text.h"
#include "index/inscription.h"
#include "spend/coin_guard.h"
#include "wallet/address.h"
#include "wallet/binds.h"
#include "wallet/session_keys.h"
#include "wallet/wallet_document.h"

namespace {

constexpr std::uint32_t ORDINAL_CHANGE_ADDRESSES = 5;

// Addresses in the order of their first mention.
struct AddressList {
    std::vector<std::string> addresses;
    std::unordered_set<std::string> seen;

    void add(const std::string& address) {
        if (!address.empty() && seen.insert(address).second) addresses.push_back(address);
    }
};

void add_fixed_addresses(AddressList& list, const QvClaspSession& session) {
    list.add(session.address);
    list.add(session.identity_address);
}

void add_ordinal_chain(AddressList& list, const QvClaspSession& session) {
    if (session.mnemonic.empty()) return;
    const std::uint64_t last = session.recv[ORDINAL_ACCOUNT];
    for (std::uint64_t i = 0; i <= last; ++i) {
        list.add(qv_clasp_account_address(ORDINAL_ACCOUNT, static_cast<std::uint32_t>(i)));
    }
}

void add_ordinal_change(AddressList& list) {
    for (std::uint32_t i = 0; i < ORDINAL_CHANGE_ADDRESSES; ++i) {
        SecretText priv_hex;
        std::string pub_hex;
        std::string address;
        if (qv_clasp_derive_ordinal_change(i, priv_hex, pub_hex, address)) list.add(address);
    }
}

}  // namespace

std::vector<std::string> qv_clasp_own_addresses() {
    const QvClaspSession& session = qv_clasp_session();
    AddressList list;
    for (const std::string& address : qv_clasp_spend_addresses()) list.add(address);
    add_fixed_addresses(list, session);
    add_ordinal_chain(list, session);
    for (const LocalOrd& ord : session.ord_owned) {
        if (!ord.hidden) list.add(ord.address);
    }
    return list.addresses;
}

std::vector<std::string> qv_clasp_watch_addresses() {
    const QvClaspSession& session = qv_clasp_session();
    AddressList list;
    add_fixed_addresses(list, session);
    add_ordinal_chain(list, session);
    add_ordinal_change(list);
    return list.addresses;
}

bool qv_clasp_wallet_ready() {
    if (qv_clasp_app_mode() && qv_clasp_read_bind().empty() && qv_clasp_active_wallet_id().empty())
        return false;
    const WalletLock lock = qv_clasp_lock_wallet();
    return qv_clasp_load() && qv_clasp_session().hd;
}

bool generation_moved(std::uint64_t noted) {
    return noted != 0 && qv_clasp_generation() != noted;
}

AddressesByHash addresses_by_hash(const std::vector<std::string>& addresses) {
    AddressesByHash result;
    for (const std::string& address : addresses) {
        Hash160 hash{};
        if (qv_clasp_address_to_hash160(address, hash)) result.emplace(hash, address);
    }
    return result;
}

LocalOrd token_ord(const std::string& txid, std::uint32_t vout, const Bsv20Meta& meta,
                   const std::string& address) {
    LocalOrd ord;
    ord.origin = outpoint_text(txid, vout);
    ord.txid = txid;
    ord.vout = static_cast<std::int32_t>(vout);
    ord.type = "application/bsv-20";
    ord.address = address;
    ord.name = meta.name;
    ord.icon = meta.icon;
    ord.amt = dec_norm(meta.amt);
    ord.dec = meta.dec;
    ord.token_id = meta.id;
    ord.created = false;
    return ord;
}
