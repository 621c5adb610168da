#include "clasp/status_report.h"

#include <algorithm>
#include <cstdint>
#include <unordered_set>

#include "base/clock.h"
#include "base/sinks.h"
#include "paymail/paymail_claim.h"
#include "spend/balance.h"
#include "spend/coin_guard.h"
#include "wallet/address.h"
#include "wallet/coin_records.h"
#include "wallet/session_keys.h"
#include "wallet/wallet_document.h"
#include "wallet/wallet_session.h"

namespace {

constexpr std::int64_t SECOND_NS = 1'000'000'000;
constexpr std::int64_t SEND_QUIET_NS = 20 * SECOND_NS;
constexpr std::int64_t PROJECTION_NS = 45 * SECOND_NS;
// A read may lie above the projected balance by this much (money that came in) and still be believed.
constexpr std::int64_t PROJECTION_SLACK_SATS = 1'000'000;

// What a report takes along when it leaves the wallet mutex.
struct Report {
    std::string scope_key;
    std::uint64_t generation = 0;
    std::vector<std::string> addresses;
    std::vector<QvClaspAddressRead> reads;
    // For the paymail host.
    std::string paymail;
    std::string identity_pub;
    std::string address;
    std::string avatar;
    std::string ord_address;
};

bool within(std::int64_t then_ns, std::int64_t span_ns) {
    return then_ns != 0 && monotonic_ns() - then_ns < span_ns;
}

void emit_no_wallet() {
    qv_clasp_emit_event("[QV-CLASP]", {"status"});
    qv_clasp_emit_paymail("");
}

void emit_status(const QvClaspStatus& status, const std::string& paymail) {
    const std::string balance = status.balance_known ? std::to_string(status.balance_sats) : "-";
    qv_clasp_emit_event("[QV-CLASP]", {"status", status.address, balance, status.hd ? "hd" : "legacy"});
    qv_clasp_emit_paymail(paymail);
}

void plan_reads(Report& report) {
    report.addresses = status_addresses();
    report.scope_key = qv_clasp_scope_key();
    report.generation = qv_clasp_generation();
    for (const std::string& address : report.addresses) {
        if (!status_reads_address(address)) continue;
        report.reads.emplace_back();
        report.reads.back().address = address;
    }
}

void describe_wallet(Report& report, QvClaspStatus& status_out) {
    const QvClaspSession& session = qv_clasp_session();
    status_out.connected = true;
    status_out.hd = session.hd;
    status_out.address = session.address;
    report.paymail = session.paymail;
    report.identity_pub = session.identity_pub;
    report.address = session.address;
    report.avatar = session.ord_avatar;
    if (session.hd)
        report.ord_address = qv_clasp_account_address(ORDINAL_ACCOUNT, session.recv[ORDINAL_ACCOUNT]);
}

// The part before the network; false if no wallet is loaded.
bool begin_report(Report& report, QvClaspStatus& status_out) {
    const WalletLock lock = qv_clasp_lock_wallet();
    if (!qv_clasp_load()) {
        emit_no_wallet();
        return false;
    }
    qv_clasp_keep_in_step();
    plan_reads(report);
    describe_wallet(report, status_out);
    return true;
}

bool overtaken(const Report& report) {
    return qv_clasp_generation() != report.generation || qv_clasp_scope_key() != report.scope_key;
}

bool balance_is_known(const Report& report) {
    const auto cached = [](const std::string& address) {
        const QvClaspCoinCacheRow* row = qv_clasp_cache_row(address);
        return row && row->valid;
    };
    const auto worked = [](const QvClaspAddressRead& read) { return read.read_ok; };
    return std::any_of(report.addresses.begin(), report.addresses.end(), cached) ||
           std::any_of(report.reads.begin(), report.reads.end(), worked);
}

// The balance to show. A read that still counts coins spent a moment ago must not make it jump back up.
std::int64_t settle_balance() {
    const std::int64_t estimate = qv_clasp_balance_estimate();
    if (estimate < 0) return estimate;
    const QvClaspSession& session = qv_clasp_session();
    const bool projected = session.cached_balance >= 0 && session.projected_balance >= 0 &&
                           within(session.projected_at_ns, PROJECTION_NS);
    const bool jumps = projected && estimate - PROJECTION_SLACK_SATS > session.projected_balance;
    const std::int64_t shown = jumps ? session.projected_balance : estimate;
    qv_clasp_show_balance(shown);
    return shown;
}

// The part after the network; false if the report was overtaken.
bool finish_report(Report& report, QvClaspStatus& status_out) {
    const WalletLock lock = qv_clasp_lock_wallet();
    if (overtaken(report)) return false;
    qv_clasp_commit_reads(report.reads);
    status_out.balance_known = balance_is_known(report);
    status_out.balance_sats = settle_balance();
    status_out.address = qv_clasp_session().address;
    status_out.hd = qv_clasp_session().hd;
    emit_status(status_out, qv_clasp_session().paymail);
    return true;
}

}  // namespace

void qv_clasp_status(QvClaspStatus& status_out) {
    status_out = QvClaspStatus{};
    qv_clasp_scan_receive();
    Report report;
    if (!begin_report(report, status_out)) return;
    qv_clasp_read_addresses(report.reads, true, report.generation);
    if (!finish_report(report, status_out)) return;
    qv_clasp_claim_once(report.paymail, report.identity_pub, report.address, report.avatar,
                        report.ord_address);
    qv_clasp_fetch_role();
}

std::vector<std::string> status_addresses() {
    const QvClaspSession& session = qv_clasp_session();
    if (!session.hd) return {session.address};
    std::vector<std::string> addresses;
    std::unordered_set<std::string> seen;
    const auto add = [&](const std::string& address) {
        if (!address.empty() && seen.insert(address).second) addresses.push_back(address);
    };
    for (std::uint32_t index = 0; index <= session.recv[RECEIVE_ACCOUNT]; ++index) {
        add(qv_clasp_account_address(RECEIVE_ACCOUNT, index));
        if (index == session.recv[RECEIVE_ACCOUNT]) break;
    }
    add(session.identity_address);
    for (const QvClaspCoinCacheRow& row : qv_clasp_coin_records().coin_cache)
        if (!row.coins.empty()) add(row.address);
    for (const QvClaspPendingCoin& coin : qv_clasp_coin_records().pending_coins)
        add(qv_clasp_address_from_hash160(coin.hash160));
    return addresses;
}

bool status_reads_address(const std::string& address) {
    if (!qv_clasp_cache_fresh(address)) return true;
    const QvClaspCoinRecords& records = qv_clasp_coin_records();
    if (within(records.last_send_at_ns, SEND_QUIET_NS)) return false;
    return std::none_of(records.spent_from.begin(), records.spent_from.end(), [&](const auto& entry) {
        return entry.first == address && within(entry.second, SEND_QUIET_NS);
    });
}
