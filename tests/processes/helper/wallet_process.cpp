// The wallet library as a process of its own: "wallet_process SETTINGS INSTANCE". It takes one command a line
// and answers with one line; what the library reports goes to standard error.
#include <chrono>
#include <iostream>
#include <sstream>

#include "base/clock.h"
#include "base/sinks.h"
#include "clasp/qv_clasp_wallet.h"
#include "index/ordinal_listing.h"
#include "net/http_client.h"
#include "paymail/paymail_claim.h"
#include "spend/send.h"
#include "tests/support/program_settings.h"
#include "wallet/binds.h"
#include "wallet/wallet_document.h"
#include "wallet/wallet_registry.h"

namespace {

// Waiting takes no time from here on.
std::int64_t skipped_ms = 0;
std::int64_t real_ms() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}
const ClockFunctions SKIPPING = {[] { return real_ms() + skipped_ms; },
                                 [] { return (real_ms() + skipped_ms) * 1'000'000; },
                                 [](std::int64_t milliseconds) { skipped_ms += milliseconds; }};

std::string status() {
    QvClaspStatus report;
    qv_clasp_status(report);
    return std::to_string(report.balance_sats);
}

std::string claim() {
    std::string pub;
    std::string address;
    {
        const WalletLock lock = qv_clasp_lock_wallet();
        pub = qv_clasp_session().identity_pub;
        address = qv_clasp_session().address;
    }
    return qv_clasp_claim_paymail("scanner", pub, address, "", "");
}

// Remembers one more ordinal and writes the document.
std::string remember(const std::string& origin) {
    const WalletLock lock = qv_clasp_lock_wallet();
    if (!qv_clasp_load()) return "not loaded";
    LocalOrd ord;
    ord.origin = origin;
    qv_clasp_session().ord_owned.push_back(ord);
    return qv_clasp_save() ? "saved" : "not saved";
}

std::string remembered() {
    const WalletLock lock = qv_clasp_lock_wallet();
    qv_clasp_wipe_session();
    return qv_clasp_load() ? std::to_string(qv_clasp_session().ord_owned.size()) : "not loaded";
}

// As a wallet that takes a name: its row in the registry, which all processes share.
std::string take_name(const std::string& name) {
    const WalletLock lock = qv_clasp_lock_wallet();
    qv_clasp_session().paymail = name;
    qv_clasp_set_wallet_name(qv_clasp_active_wallet_id());
    return "named";
}

std::string answer(const std::string& line) {
    std::istringstream words(line);
    std::string command;
    std::string word;
    std::int64_t number = 0;
    words >> command >> word >> number;
    if (command == "connect") return qv_clasp_connect();
    if (command == "skip-waits") return set_clock(&SKIPPING), "skipping";
    if (command == "status") return status();
    if (command == "send") return qv_clasp_send(word, number, "");
    if (command == "fee") return std::to_string(qv_clasp_estimate_send_fee("", 1000));
    if (command == "claim") return claim();
    if (command == "unbind") return qv_clasp_unbind();
    if (command == "bind") return qv_clasp_write_bind(word), qv_clasp_read_bind();
    if (command == "remember") return remember(word);
    if (command == "remembered") return remembered();
    if (command == "name") return take_name(word);
    if (command == "hold") return qv_clasp_registry_lock(), "held";
    if (command == "sweep") {
        std::vector<QvClaspOrdRow> rows;
        const std::string result = qv_clasp_list_ordinals(rows);
        return result.empty() ? "swept" : result;
    }
    return "unknown command";
}

}  // namespace

int main(int count, char** values) {
    if (count < 3 || !use_program_settings(values[1])) return 2;
    qv_clasp_set_log_sink([](const std::string& line) { std::cerr << line << std::flush; });
    qv_clasp_set_event_sink([](const std::string& line) { std::cerr << line << '\n' << std::flush; });
    qv_clasp_init(values[2], "The Bursaria");
    qv_clasp_http_start();
    for (std::string line; std::getline(std::cin, line);) std::cout << answer(line) << std::endl;
    qv_clasp_http_stop();
    return 0;
}
