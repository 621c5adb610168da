#include "clasp/receive_scan.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "base/json_file.h"
#include "base/ranked_mutex.h"
#include "base/settings.h"
#include "net/http_client.h"
#include "wallet/key_derivation.h"
#include "wallet/session_keys.h"
#include "wallet/wallet_document.h"
#include "wallet/wallet_session.h"

namespace {

constexpr std::uint32_t LOOK_AHEAD = 400;
constexpr std::size_t BATCH_ROWS = 20;
constexpr unsigned PROBE_TIMEOUT_S = 20;
constexpr int PROBE_TRIES = 4;

// Never destroyed: a worker may still run when the process ends.
using ScanMutex = RankedMutex<LockRank::Scan>;
ScanMutex& scan_mutex() {
    static auto& mutex = *new ScanMutex;
    return mutex;
}

struct ScanPlan {
    std::string scope_key;
    std::uint32_t base = 0;  // the counter when the scan began
    std::vector<ReceiveRow> rows;
};

// What to look at; no rows if there is nothing to scan.
ScanPlan plan_scan() {
    const WalletLock lock = qv_clasp_lock_wallet();
    ScanPlan plan;
    if (!qv_clasp_load() || !qv_clasp_session().hd) return plan;
    plan.scope_key = qv_clasp_scope_key();
    plan.base = qv_clasp_session().recv[RECEIVE_ACCOUNT];
    // In 64 bits, and below the hardened elements: the counter comes from a file.
    const std::uint64_t first = std::max<std::uint64_t>(qv_clasp_session().scan_position, plan.base + 1ULL);
    const std::uint64_t last = std::min<std::uint64_t>(plan.base + std::uint64_t{LOOK_AHEAD}, HARDENED - 1);
    for (std::uint64_t index = first; index <= last; ++index) {
        const auto element = static_cast<std::uint32_t>(index);
        std::string address = qv_clasp_account_address(RECEIVE_ACCOUNT, element);
        if (address.empty()) break;
        plan.rows.emplace_back(element, std::move(address));
    }
    return plan;
}

// The last index of the last batch that worked; none if the first one failed.
std::optional<std::uint32_t> probe_in_batches(const std::vector<ReceiveRow>& rows,
                                              std::uint32_t& highest_inout) {
    std::optional<std::uint32_t> last_index;
    for (std::size_t begin = 0; begin < rows.size(); begin += BATCH_ROWS) {
        const std::size_t end = std::min(begin + BATCH_ROWS, rows.size());
        const std::vector<ReceiveRow> batch(rows.begin() + static_cast<std::ptrdiff_t>(begin),
                                            rows.begin() + static_cast<std::ptrdiff_t>(end));
        if (!qv_clasp_probe_addresses(batch, highest_inout)) break;
        last_index = batch.back().first;
    }
    return last_index;
}

void take_scan_result(const ScanPlan& plan, std::uint32_t last_index, std::uint32_t highest) {
    const WalletLock lock = qv_clasp_lock_wallet();
    QvClaspSession& session = qv_clasp_session();
    if (!qv_clasp_load() || !session.hd || qv_clasp_scope_key() != plan.scope_key) return;
    session.scan_position = last_index + 1;
    if (highest <= plan.base || session.recv[RECEIVE_ACCOUNT] >= highest) return;
    session.recv[RECEIVE_ACCOUNT] = highest;
    qv_clasp_save();
}

std::string balance_request(const std::vector<ReceiveRow>& rows) {
    Json addresses = Json::array();
    for (const ReceiveRow& row : rows) addresses.push_back(row.second);
    return dump_json(Json{{"addresses", addresses}}, -1);
}

// A number rounded to the nearest whole; 0 for another type, and for a number that no count of satoshis can
// be.
std::int64_t rounded_count(const Json& value) {
    std::int64_t count = 0;
    if (value.is_number_float()) {
        const double rounded = std::round(value.get<double>());
        return std::abs(rounded) < 9.2e18 ? static_cast<std::int64_t>(rounded) : 0;
    }
    return json_whole(value, count) ? count : 0;
}

bool has_balance(const Json& row) {
    const Json& nested = json_member(row, "balance");
    const Json& balance = nested.is_object() ? nested : row;
    // An unconfirmed spend shows as a negative number.
    return rounded_count(json_member(balance, "confirmed")) > 0 ||
           rounded_count(json_member(balance, "unconfirmed")) >= 1;
}

}  // namespace

void qv_clasp_scan_receive() {
    const std::lock_guard one_scan(scan_mutex());
    const ScanPlan plan = plan_scan();
    std::uint32_t highest = plan.base;
    const std::optional<std::uint32_t> last_index = probe_in_batches(plan.rows, highest);
    if (last_index) take_scan_result(plan, *last_index, highest);
}

bool qv_clasp_probe_addresses(const std::vector<ReceiveRow>& rows, std::uint32_t& highest_inout) {
    if (rows.empty()) return true;
    std::string body;
    std::string error;
    Json answer;
    if (!qv_clasp_http_post_json(settings().woc_base + "/addresses/balance", balance_request(rows), body,
                                 error, PROBE_TIMEOUT_S, PROBE_TRIES) ||
        !parse_json(body, answer))
        return false;
    const Json& list = answer.is_array() ? answer : json_member(answer, "value");
    if (!list.is_array()) return false;
    for (const Json& entry : list) {
        const std::string address = json_text(entry, "address");
        if (address.empty() || !has_balance(entry)) continue;
        for (const ReceiveRow& row : rows)
            if (row.second == address) highest_inout = std::max(highest_inout, row.first);
    }
    return true;
}
