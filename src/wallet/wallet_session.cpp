#include "wallet/wallet_session.h"

#include <atomic>

#include "base/text.h"
#include "wallet/binds.h"
#include "wallet/coin_records.h"

namespace {

constexpr std::size_t LONGEST_SCOPE_KEY = 80;

// Never destroyed: a detached worker may hold the mutex while the process ends.
WalletMutex& wallet_mutex() {
    static auto& the_mutex = *new WalletMutex;
    return the_mutex;
}

std::atomic<std::uint64_t> generation{1};

void wipe_keys(QvClaspSession& session) {
    session.priv.wipe();
    session.mnemonic.wipe();
    session.pub.clear();
    session.address.clear();
    qv_clasp_forget_master(session);
    session.identity_pub.clear();
    session.identity_address.clear();
}

}  // namespace

WalletLock qv_clasp_lock_wallet() {
    return WalletLock(wallet_mutex());
}

QvClaspSession& qv_clasp_session() {
    static auto& the_session = *new QvClaspSession;
    return the_session;
}

void qv_clasp_forget_master(QvClaspSession& session) {
    session.seed.wipe();
    session.seed_known = false;
    session.master.wipe();
    session.master_known = false;
    session.key_cache = QvClaspKeyCache{};
}

void qv_clasp_wipe_session() {
    QvClaspSession& session = qv_clasp_session();
    wipe_keys(session);
    session.hd = false;
    session.backup = false;
    session.paymail.clear();
    session.ord_avatar.clear();
    session.ord_owned.clear();
    session.contacts.clear();
    session.recv.fill(0);
    session.show = 0;
    session.scan_position = 0;
    session.cached_balance = -1;
    session.projected_balance = -1;
    session.projected_at_ns = 0;
    qv_clasp_clear_coin_records();
    qv_clasp_raise_generation();
}

std::string qv_clasp_scope_key() {
    const QvClaspSession& session = qv_clasp_session();
    std::string scope = qv_clasp_active_wallet_id();
    if (scope.empty()) scope = session.identity_address;
    if (scope.empty()) scope = session.address;
    scope = replace_unsafe(scope, "");
    return scope.empty() ? "wallet" : scope.substr(0, LONGEST_SCOPE_KEY);
}

std::uint64_t qv_clasp_generation() {
    return generation.load();
}

void qv_clasp_raise_generation() {
    generation.fetch_add(1);
}
