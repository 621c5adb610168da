#include "program/wallet_calls.h"

#include "clasp/qv_clasp_wallet.h"

namespace {

void summary(std::string& address, std::string& paymail) {
    bool hd = false;
    qv_clasp_summary(address, paymail, hd);
}

// What a loaded wallet's coins add up to, held to what is left after a payment of a moment ago; else the
// figure shown last.
std::int64_t shown_balance() {
    {
        const WalletLock lock = qv_clasp_lock_wallet();
        const bool loaded = !qv_clasp_session().address.empty();
        const std::int64_t sats = loaded ? qv_clasp_note_spend(qv_clasp_balance_estimate(), 0) : -1;
        if (sats >= 0) return sats;
    }
    return qv_clasp_cached_balance();
}

}  // namespace

RoundWallet library_wallet() {
    RoundWallet wallet;
    wallet.is_connected = qv_clasp_is_connected;
    wallet.connect = qv_clasp_connect;
    wallet.unbind = qv_clasp_unbind;
    wallet.list_tokens = qv_clasp_list_tokens;
    wallet.snapshot_holders = qv_clasp_snapshot_holders;
    wallet.status = qv_clasp_status;
    wallet.estimate_send_fee = qv_clasp_estimate_send_fee;
    wallet.send = qv_clasp_send;
    wallet.summary = summary;
    wallet.shown_balance = shown_balance;
    return wallet;
}
