#include "clasp/status_report.h"

#include <gtest/gtest.h>

#include <functional>

#include "base/clock.h"
#include "base/sinks.h"
#include "clasp/connect.h"
#include "spend/balance.h"
#include "tests/support/fake_clock.h"
#include "tests/support/one_wallet.h"
#include "tests/support/scripted_server.h"
#include "wallet/coin_records.h"
#include "wallet/wallet_document.h"
#include "wallet/wallet_session.h"

namespace {

const std::string MARK = "\x1f";
const std::string STATUS = "[QV-CLASP]\x1fstatus\x1f";

std::string txid_of(char digit) {
    return std::string(64, digit);
}

// The chain service and the indexer, the family's host, and a bound wallet.
struct StatusWorld {
    ScriptedServer services;
    ScriptedServer host{ScriptedServer::Transport::Tls};
    TestHome home;
    FakeClock clock;
    std::mutex mutex;
    std::map<std::string, Json> coins;  // by address
    bool down = false;
    std::function<void()> during_reads;
    std::vector<std::string> events;

    StatusWorld() {
        home.use_settings(settings_on(services.base(), "localhost:" + std::to_string(host.port())));
        services.on_any([this](const ScriptedRequest& request, ScriptedAnswer& answer) {
            const std::lock_guard<std::mutex> hold(mutex);
            serve(request.path, answer);
            return true;
        });
        qv_clasp_set_event_sink([this](const std::string& event) { events.push_back(event); });
    }
    ~StatusWorld() {
        qv_clasp_set_event_sink({});
        const WalletLock lock = qv_clasp_lock_wallet();
        qv_clasp_wipe_session();
    }
    void serve(const std::string& path, ScriptedAnswer& answer) {
        answer.body = "[]";
        if (down) answer = {.status = 503, .body = "busy"};
        const std::string prefix = "/woc/address/";
        if (path.compare(0, prefix.size(), prefix) != 0) return;
        if (during_reads) std::exchange(during_reads, nullptr)();
        const std::string rest = path.substr(prefix.size());
        const auto known = coins.find(rest.substr(0, rest.find('/')));
        if (!down && known != coins.end() && rest.substr(rest.find('/')) == "/unspent/all")
            answer.body = dump_json(known->second, -1);
    }
    void give(const std::string& address, char txid_digit, std::int64_t sats) {
        coins[address].push_back({{"tx_hash", txid_of(txid_digit)}, {"tx_pos", 0}, {"value", sats}});
    }
    std::size_t reads_of(const std::string& address) const {
        return services.count("GET", "/woc/address/" + address + "/unspent/all");
    }
    static QvClaspStatus report() {
        QvClaspStatus status;
        status.balance_sats = 77;
        qv_clasp_status(status);
        return status;
    }
};

Json document_with(unsigned counter, const std::string& paymail) {
    Json document = one_wallet_document();
    document["recv"] = {0, counter, 0, 0, 0, 3};
    document["paymail"] = paymail;
    return document;
}

}  // namespace

TEST(StatusReport, AMnemonicWallet) {
    StatusWorld world;
    bind_one_wallet(world.home, document_with(2, "eve"));
    world.give(receive_address(0), '1', 600);
    world.give(receive_address(2), '2', 50'000);
    world.give(receive_address(2), '3', 999);  // too small to count on another address
    world.host.on("POST", "/api/paymail/claim", "{}");
    const QvClaspStatus status = StatusWorld::report();
    EXPECT_TRUE(status.connected && status.hd && status.balance_known);
    EXPECT_EQ(status.address, receive_address(0));
    EXPECT_EQ(status.balance_sats, 50'600);
    EXPECT_EQ(world.events,
              (std::vector<std::string>{STATUS + receive_address(0) + MARK + "50600" + MARK + "hd",
                                        "[QV-CLASP]\x1fpaymail" + MARK + "eve@" + settings().home_domain}));
    EXPECT_EQ(world.home.read_json("/tx_hist/" + ONE_WALLET_ID + "_face.json"),
              (Json{{"sats", 50'600}, {"address", receive_address(0)}}));
    // The host hears of the paymail, with the current ordinal address, and is asked for the role.
    ASSERT_EQ(world.host.count("POST", "/api/paymail/claim"), 1U);
    Json claim;
    ASSERT_TRUE(parse_json(world.host.requests()[0].body, claim));
    EXPECT_EQ(json_text(claim, "alias"), "eve");
    EXPECT_EQ(json_text(claim, "address"), receive_address(0));
    EXPECT_EQ(json_text(claim, "ordAddress"), one_wallet_key("5'/0/3").address);
    EXPECT_EQ(world.host.count("GET", "/api/paymail/quota/"), 1U);
    EXPECT_EQ(world.host.requests().back().method, "GET") << "the role comes after the claim";
}

// What happens during the reads also takes the wallet mutex: a report that held it would never end.
TEST(StatusReport, AnOvertakenReportEndsWithoutABalance) {
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"a payment moved on", [] { qv_clasp_raise_generation(); }},
        {"the wallet was unbound", [] { qv_clasp_unbind(); }},
    };
    for (const auto& [what, event] : cases) {
        StatusWorld world;
        bind_one_wallet(world.home, document_with(0, "eve"));
        world.give(receive_address(0), '1', 7000);
        world.during_reads = event;
        const QvClaspStatus status = StatusWorld::report();
        EXPECT_TRUE(status.connected) << what;
        EXPECT_EQ(status.address, receive_address(0)) << what;
        EXPECT_FALSE(status.balance_known) << what;
        EXPECT_EQ(status.balance_sats, 0) << what;
        EXPECT_TRUE(qv_clasp_coin_records().coin_cache.empty()) << what;
        EXPECT_TRUE(world.host.requests().empty()) << what;
    }
}

TEST(StatusReport, TheSendGuard) {
    const FakeClock clock;
    const std::string address = receive_address(0);
    struct Case {
        const char* what;
        int read_s;  // seconds ago; -1 never
        bool valid;
        int sent_s;   // -1 never
        int spent_s;  // from this address
        int other_s;  // from another one
        bool reads;
    };
    const Case cases[] = {
        {"never read", -1, false, -1, -1, -1, true},
        {"fresh, quiet", 3, true, -1, -1, -1, true},
        {"fresh, a payment", 3, true, 19, -1, -1, false},
        {"fresh, a payment a while ago", 3, true, 20, -1, -1, true},
        {"fresh, spent from", 3, true, -1, 19, -1, false},
        {"fresh, spent from a while ago", 3, true, -1, 20, -1, true},
        {"fresh, another was spent from", 3, true, -1, -1, 1, true},
        {"stale, a payment", 8, true, 1, 1, -1, true},
        {"never valid, a payment", 3, false, 1, 1, -1, true},
    };
    const WalletLock lock = qv_clasp_lock_wallet();
    for (const Case& c : cases) {
        const auto ago = [](int seconds) { return monotonic_ns() - seconds * 1'000'000'000LL; };
        QvClaspCoinRecords& records = qv_clasp_coin_records();
        records = {};
        if (c.read_s >= 0) records.coin_cache.push_back({address, {}, ago(c.read_s), c.valid});
        if (c.sent_s >= 0) records.last_send_at_ns = ago(c.sent_s);
        if (c.spent_s >= 0) records.spent_from.emplace_back(address, ago(c.spent_s));
        if (c.other_s >= 0) records.spent_from.emplace_back(receive_address(1), ago(c.other_s));
        EXPECT_EQ(status_reads_address(address), c.reads) << c.what;
    }
    qv_clasp_clear_coin_records();
}
