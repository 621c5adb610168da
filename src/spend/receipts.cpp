#include "spend/receipts.h"

#include <condition_variable>
#include <system_error>
#include <thread>
#include <unordered_map>

#include "base/json_file.h"
#include "base/ranked_mutex.h"
#include "base/text.h"
#include "net/http_client.h"
#include "wallet/address.h"
#include "wallet/session_keys.h"
#include "wallet/wallet_document.h"
#include "wallet/wallet_session.h"

namespace {

constexpr unsigned DELIVERY_TIMEOUT_S = 12;

struct ReceiptTable {
    RankedMutex<LockRank::Leaf> mutex;
    std::unordered_map<std::string, QvClaspReceiptRow> rows;
    std::condition_variable_any idle;
    int deliveries = 0;  // threads at work
};

// Never destroyed: a delivery may outlive main.
ReceiptTable& table() {
    static ReceiptTable* const instance = new ReceiptTable;
    return *instance;
}

bool sign_as_identity(const std::string& txid, QvClaspReceiptJob& job) {
    const WalletLock lock = qv_clasp_lock_wallet();
    if (!qv_clasp_load()) return false;
    SecretText priv;
    std::string address;
    if (!qv_clasp_derive_identity(priv, job.pubkey, address) || priv.size() != 64) return false;
    job.signature = sign_recoverable_message(priv.view(), job.pubkey, txid);
    return !job.signature.empty();
}

// Moves the rows that these outputs pay in full out of the table.
std::vector<QvClaspReceiptRow> take_paid_rows(const std::vector<QvClaspTxOutput>& outputs) {
    std::vector<QvClaspReceiptRow> paid;
    const std::lock_guard lock(table().mutex);
    for (const QvClaspTxOutput& output : outputs) {
        Hash160 hash160{};
        if (!p2pkh_script_hash(output.script, hash160)) continue;
        const auto row = table().rows.find(qv_clasp_address_from_hash160(hash160));
        if (row == table().rows.end() || row->second.sats != output.sats) continue;
        paid.push_back(std::move(row->second));
        table().rows.erase(row);
    }
    return paid;
}

void count_deliveries(int change) {
    const std::lock_guard lock(table().mutex);
    table().deliveries += change;
    if (table().deliveries == 0) table().idle.notify_all();
}

void start_delivery(QvClaspReceiptJob job) {
    count_deliveries(1);
    try {
        std::thread([job = std::move(job)] {
            qv_clasp_deliver_receipts(job);
            count_deliveries(-1);
        }).detach();
    } catch (const std::system_error&) {
        count_deliveries(-1);
    }
}

}  // namespace

void qv_clasp_expect_receipt(const QvClaspReceiptRow& row) {
    const std::lock_guard lock(table().mutex);
    table().rows[row.address] = row;
}

std::size_t expected_receipts() {
    const std::lock_guard lock(table().mutex);
    return table().rows.size();
}

void qv_clasp_queue_receipt(const std::string& raw_hex, const std::string& txid,
                            const std::vector<QvClaspTxOutput>& outputs) {
    if (!is_hex64(txid) || raw_hex.empty() || expected_receipts() == 0) return;
    QvClaspReceiptJob job;
    if (!sign_as_identity(txid, job)) return;
    job.rows = take_paid_rows(outputs);
    if (job.rows.empty()) return;
    job.raw_hex = raw_hex;
    start_delivery(std::move(job));
}

void qv_clasp_deliver_receipts(const QvClaspReceiptJob& job) {
    for (const QvClaspReceiptRow& row : job.rows) {
        const Json body = {{"hex", job.raw_hex},
                           {"reference", row.reference},
                           {"metadata",
                            {{"sender", row.sender},
                             {"pubkey", job.pubkey},
                             {"signature", job.signature},
                             {"note", "payment"}}}};
        std::string answer;
        std::string error;
        qv_clasp_http_post_json(row.url, dump_json(body, -1), answer, error, DELIVERY_TIMEOUT_S, 1);
    }
}

void wait_for_receipts() {
    std::unique_lock lock(table().mutex);
    table().idle.wait(lock, [] { return table().deliveries == 0; });
}
