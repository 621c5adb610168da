#include "spend/send.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "base/sinks.h"
#include "base/text.h"
#include "platform/program.h"
#include "spend/balance.h"
#include "spend/broadcast.h"
#include "spend/chain_readers.h"
#include "spend/coin_guard.h"
#include "spend/sent_record.h"
#include "spend/transaction.h"
#include "wallet/address.h"
#include "wallet/binds.h"
#include "wallet/coin_records.h"
#include "wallet/wallet_document.h"
#include "wallet/wallet_session.h"

namespace {

constexpr int ATTEMPTS = 3;

// A transaction that was handed to the network. Its parts are remembered together, so that a record never
// joins the id of one attempt with the coins of another.
struct TriedTx {
    std::string txid;
    std::vector<QvClaspCoin> coins;
    std::vector<QvClaspTxOutput> outputs;
    std::int64_t fee = 0;
};

struct SendRun {
    SendRun(WalletLock& lock, const std::string& data) : wallet_lock(lock), memo(data) {}

    WalletLock& wallet_lock;
    const std::string& memo;
    std::string scope;  // of the wallet that the change target belongs to
    Hash160 dest_hash160{};
    Hash160 change_hash160{};
    std::int64_t sats = 0;
    std::vector<TriedTx> tried;  // the last attempt's at the end
    std::string failure;         // the text of the last broadcast that another attempt may mend
    bool expired = false;
};

// A final text, or nothing where another attempt may mend it.
using Outcome = std::optional<std::string>;

bool (*g_terminal_probe)() = nullptr;

bool is_success(std::string_view result) {
    return result.starts_with("success");
}

void note_spend(std::int64_t sats, std::int64_t fee) {
    if (g_terminal_probe ? g_terminal_probe() : stdout_is_terminal()) return;
    qv_clasp_emit_event("[QV-SPEND]", {std::to_string(sats)});
    const std::int64_t balance = qv_clasp_note_spend(qv_clasp_balance_estimate(), sats + fee);
    qv_clasp_emit_event("[QV-BALANCE]", {std::to_string(balance), qv_clasp_active_wallet_id()});
}

// Takes a transaction that has turned up for a success, and records it as one.
Outcome settle(const SendRun& run, const TriedTx& tx) {
    std::string result = qv_clasp_finish_known_tx(tx.coins, tx.outputs, tx.txid, run.change_hash160);
    if (result.empty()) return std::nullopt;
    note_spend(run.sats, tx.fee);
    return result;
}

// Asks the chain for the last transaction tried. `answered_out` is false if no look-up got an answer.
Outcome settle_if_known(const SendRun& run, bool& answered_out) {
    answered_out = true;
    if (run.tried.empty() || !qv_clasp_tx_exists(run.tried.back().txid, answered_out)) return std::nullopt;
    return settle(run, run.tried.back());
}

Outcome settle_if_known(const SendRun& run) {
    bool answered = false;
    return settle_if_known(run, answered);
}

// A service that lists an output of a transaction knows it, whatever the look-ups said; a further one would
// pay twice.
Outcome settle_if_listed(const SendRun& run, const std::vector<QvClaspCoin>& candidates) {
    const auto is_listed = [](const auto& coins, const std::string& txid) {
        return std::any_of(coins.begin(), coins.end(),
                           [&](const auto& coin) { return qv_clasp_same_outpoint(coin.txid, 0, txid, 0); });
    };
    // Change that the guard holds back is no candidate, and lies in the row of its address all the same.
    const QvClaspCoinCacheRow* row = qv_clasp_cache_row(qv_clasp_address_from_hash160(run.change_hash160));
    for (const TriedTx& tx : run.tried) {
        if (is_listed(candidates, tx.txid) || (row != nullptr && is_listed(row->coins, tx.txid)))
            return settle(run, tx);
    }
    return std::nullopt;
}

// True if a service has just told what lies where the change goes.
bool change_was_looked_for(const SendRun& run) {
    return qv_clasp_cache_fresh(qv_clasp_address_from_hash160(run.change_hash160));
}

Outcome after_no_candidate(SendRun& run, const std::string& collect_error) {
    if (Outcome known = settle_if_known(run)) return known;
    if (run.expired) {
        std::string text = "error: you have 0 in your Clasp wallet.";
        if (!collect_error.empty()) text += " (" + collect_error + ")";
        return text;
    }
    run.expired = true;
    qv_clasp_expire_cache();
    return std::nullopt;
}

Outcome after_failed_build(SendRun& run, int attempt, const std::string& build_error) {
    if (Outcome known = settle_if_known(run)) return known;
    if (attempt >= ATTEMPTS - 1) return "error: " + build_error;
    return std::nullopt;
}

// What a failed broadcast means. The chain is asked first: a conflict with this very transaction reads like
// one with another.
Outcome after_failed_broadcast(SendRun& run, const std::vector<QvClaspCoin>& chosen,
                               const std::string& result, bool accepted = false) {
    bool answered = false;
    if (Outcome known = settle_if_known(run, answered)) return known;
    // Without an answer nobody knows, and what a service took may still show: other coins might pay a second
    // time.
    if (!answered || accepted) return result;
    run.failure = result;
    if (is_conflict_text(result)) {
        write_off_coins(chosen);
        qv_clasp_expire_cache();
        return std::nullopt;
    }
    if (qv_clasp_is_missing_inputs(result)) {
        write_off_coins(chosen);
        // What was read before this transaction went out cannot show it.
        qv_clasp_expire_cache();
        qv_clasp_resync_from_index(run.wallet_lock);
        // The lock was free meanwhile, and change target and coins are the old wallet's.
        if (!qv_clasp_load() || qv_clasp_scope_key() != run.scope) return "error: wallet changed.";
        return std::nullopt;
    }
    return result;
}

Outcome sign_and_broadcast(SendRun& run, std::vector<QvClaspCoin> coins, std::vector<QvClaspTxOutput> outputs,
                           std::int64_t fee) {
    const QvClaspSession& session = qv_clasp_session();
    if (!sign_all_inputs(coins, outputs, session.priv.view(), session.pub)) {
        return after_failed_broadcast(run, coins, "error: signing failed.");
    }
    std::string txid;
    bool accepted = false;
    std::string result = qv_clasp_broadcast(coins, outputs, run.change_hash160, txid, &accepted);
    if (is_success(result)) {
        note_spend(run.sats, fee);
        return result;
    }
    if (!txid.empty()) run.tried.push_back({std::move(txid), coins, std::move(outputs), fee});
    return after_failed_broadcast(run, coins, result, accepted);
}

Outcome attempt_send(SendRun& run, int attempt) {
    std::string error;
    if (!qv_clasp_refresh_coins(run.wallet_lock, error)) return "error: " + error;
    // Coins that are only remembered cannot tell whether the transaction before this one is out after all.
    if (!run.failure.empty() && !change_was_looked_for(run)) return run.failure;
    std::vector<QvClaspCoin> coins;
    std::int64_t total = 0;
    if (!qv_clasp_collect_coins(coins, total, error)) return after_no_candidate(run, error);
    if (Outcome known = settle_if_listed(run, coins)) return known;
    std::vector<QvClaspTxOutput> outputs;
    std::int64_t fee = 0;
    if (!qv_clasp_build_tx(coins, outputs, run.dest_hash160, run.change_hash160, run.sats, run.memo, fee,
                           error)) {
        return after_failed_build(run, attempt, error);
    }
    return sign_and_broadcast(run, std::move(coins), std::move(outputs), fee);
}

}  // namespace

bool is_conflict_text(std::string_view text) {
    static constexpr std::array<std::string_view, 6> signs = {"mempool-conflict",       "double_spend",
                                                              "double spend",           "seen_in_orphan",
                                                              "txn-already-in-mempool", "txn-already-known"};
    const std::string lower = ascii_lower(text);
    return std::any_of(signs.begin(), signs.end(),
                       [&](std::string_view sign) { return contains(lower, sign); });
}

void set_terminal_probe(bool (*is_terminal)()) {
    g_terminal_probe = is_terminal;
}

std::string qv_clasp_send(const std::string& dest, std::int64_t sats, const std::string& memo) {
    WalletLock wallet_lock = qv_clasp_lock_wallet();
    if (!qv_clasp_load()) return "error: no Quorvelle Clasp wallet. Use clasp create first.";
    if (sats < 1) return "error: amount must be positive.";
    SendRun run{wallet_lock, memo};
    run.scope = qv_clasp_scope_key();
    run.sats = sats;
    if (!qv_clasp_address_to_hash160(dest, run.dest_hash160)) {
        return "error: destination is not a legacy P2PKH address.";
    }
    std::string error;
    if (!qv_clasp_change_target(run.change_hash160, error)) return "error: " + error;
    for (int attempt = 0; attempt < ATTEMPTS; ++attempt) {
        if (Outcome outcome = attempt_send(run, attempt)) return *outcome;
    }
    if (Outcome known = settle_if_known(run)) return *known;
    return "error: broadcast failed after retry.";
}
