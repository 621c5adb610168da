#include "clasp/connect.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <future>

#include "base/clock.h"
#include "base/sinks.h"
#include "tests/support/one_wallet.h"
#include "wallet/binds.h"
#include "wallet/wallet_document.h"
#include "wallet/wallet_session.h"

namespace {

const std::string OTHER_WALLET_ID = "w1700000000002";

// A clock whose sleeps are moments for the wallet program's side to act in: what it does before the n-th look
// happens in the n-th sleep.
struct StandIn {
    std::int64_t now_ms = 1'790'000'000'000;
    int looks = 0;
    std::function<void(int look)> act;
};
StandIn* stand_in = nullptr;

const ClockFunctions STAND_IN_CLOCK{[] { return stand_in->now_ms; },
                                    [] { return stand_in->now_ms * 1'000'000; },
                                    [](std::int64_t milliseconds) {
                                        stand_in->now_ms += milliseconds;
                                        ++stand_in->looks;
                                        if (stand_in->act) stand_in->act(stand_in->looks);
                                    }};
const std::string PENDING =
    "connect-pending\x1f"
    "Approve the connect in Clasp.\n";
const std::string FAILED = "error\x1f";

class Connect : public testing::Test {
 protected:
    Connect() {
        stand_in = &wallet_program;
        set_clock(&STAND_IN_CLOCK);
        qv_clasp_set_event_sink(
            [this](const std::string& event) { events += event.substr(event.find('\x1f') + 1) + "\n"; });
        qv_clasp_set_log_sink([this](const std::string& line) { log += line; });
    }
    ~Connect() override {
        qv_clasp_set_event_sink({});
        qv_clasp_set_log_sink({});
        const WalletLock lock = qv_clasp_lock_wallet();
        qv_clasp_wipe_session();
        qv_clasp_set_active_wallet_id("");
        set_clock(nullptr);
    }

    // Two wallets, so that none is bound at the start.
    void start_with_two_wallets() {
        add_wallet(home, ONE_WALLET_ID, one_wallet_document());
        add_wallet(home, OTHER_WALLET_ID, one_wallet_document(OTHER_WORDS));
        start_program_in(home);
    }
    // The newest request.
    std::string request_id() const {
        std::string newest;
        for (const auto& entry : std::filesystem::directory_iterator(utf8_path(home.root() + "/connect"))) {
            const std::string name = entry.path().filename().string();
            newest = std::max(newest, name.substr(0, name.find('.')));
        }
        return newest;
    }
    void reply_at(int look, const std::string& reply) {
        wallet_program.act = [this, look, reply](int now) {
            if (now == look) home.write("/connect/" + request_id() + ".rep.json", reply);
        };
    }
    static std::string approval(const std::string& wallet_id) {
        return R"({"ok":true,"wallet_id":")" + wallet_id + R"("})";
    }

    TestHome home;
    StandIn wallet_program;
    std::string events;  // without their tag, a line each
    std::string log;
};

}  // namespace

TEST_F(Connect, AnApprovalBindsAndLoadsTheChosenWallet) {
    start_with_two_wallets();
    Json request;
    wallet_program.act = [&](int look) {
        if (look != 3) return;
        request = home.read_json("/connect/" + request_id() + ".req.json");
        home.write("/connect/" + request_id() + ".rep.json", approval(OTHER_WALLET_ID));
    };
    EXPECT_EQ(qv_clasp_connect(), "success");
    EXPECT_EQ(wallet_program.looks, 3);
    EXPECT_EQ(request, (Json{{"id", json_text(request, "id")},
                             {"app", "The Bursaria"},
                             {"instance", home.folder() + "/program"},
                             {"ts", 1790000000}}));
    EXPECT_EQ(qv_clasp_read_bind(), OTHER_WALLET_ID);
    EXPECT_EQ(qv_clasp_session().address, sandbox::derive(OTHER_WORDS, "m/44'/236'/1'/0/0").address);
    EXPECT_EQ(log, "Waiting for Clasp to approve this app...\nConnected to Clasp wallet Wallet " +
                       OTHER_WALLET_ID + "\n");
    EXPECT_EQ(events, PENDING + "paymail\n");
    // Both files are left for the wallet program to tidy.
    EXPECT_TRUE(home.exists("/connect/" + json_text(request, "id") + ".req.json"));
    EXPECT_TRUE(home.exists("/connect/" + json_text(request, "id") + ".rep.json"));
}

TEST_F(Connect, AReplyThatIsNoApprovalIsADenialAtOnce) {
    start_with_two_wallets();
    for (const std::string reply : {"{", "", "[]", "{}", R"({"ok":false})", R"({"ok":1})", R"({"ok":"true"})",
                                    R"({"wallet_id":"w1700000000001"})", R"({"ok":true,"wallet_id":5})"}) {
        events.clear();
        wallet_program.looks = 0;
        reply_at(1, reply);
        EXPECT_EQ(qv_clasp_connect(), "error: connect denied in Clasp.") << reply;
        EXPECT_EQ(wallet_program.looks, 1) << reply;
        EXPECT_EQ(events,
                  PENDING + "connect-denied\x1f" + "denied\n" + FAILED + "error: connect denied in Clasp.\n")
            << reply;
        EXPECT_EQ(qv_clasp_active_wallet_id(), "") << reply;
    }
}

TEST_F(Connect, WithoutAReplyItGivesUpAfterAMinute) {
    start_with_two_wallets();
    const std::string error = "error: Clasp did not approve in time. Open Clasp.exe and try Connect again.";
    const std::int64_t begun = wallet_program.now_ms;
    bool free = true;
    wallet_program.act = [&](int look) {
        if (look % 40 != 1) return;
        // The mutex is recursive, so only another thread can tell.
        const auto taken = std::async(std::launch::async, [] { qv_clasp_lock_wallet(); });
        free = free && taken.wait_for(std::chrono::seconds(5)) == std::future_status::ready;
        if (!free) std::abort();
    };
    EXPECT_EQ(qv_clasp_connect(), error);
    EXPECT_TRUE(free) << "between the looks";
    EXPECT_EQ(wallet_program.looks, 120);
    EXPECT_EQ(wallet_program.now_ms - begun, 60'000);
    EXPECT_EQ(events, PENDING + "connect-denied\x1ftimeout\n" + FAILED + error + "\n");
    reply_at(120, approval(ONE_WALLET_ID));
    wallet_program.looks = 0;
    EXPECT_EQ(qv_clasp_connect(), "success") << "the last look counts";
}

TEST_F(Connect, AnApprovalOfAWalletThatDoesNotLoad) {
    start_with_two_wallets();
    home.write("/wallets/w3/wallet.json", Json{{"lock", "QV-LOCK1"}});
    const std::string would_not = "error: approved, but the wallet would not load.";
    const std::pair<std::string, std::string> cases[] = {
        {R"({"ok":true})", would_not},
        {R"({"ok":true,"wallet_id":""})", would_not},
        {approval("w9"), would_not},
        {approval("w3"), "error: This wallet is locked. Open it in Clasp."},
    };
    for (const auto& [reply, error] : cases) {
        events.clear();
        reply_at(wallet_program.looks + 1, reply);
        EXPECT_EQ(qv_clasp_connect(), error) << reply;
        EXPECT_EQ(events, PENDING + FAILED + error + "\n") << reply;
        EXPECT_FALSE(qv_clasp_is_connected()) << reply;
    }
}

// A session of the wallet that was bound before must never be written over the document of the new one.
TEST_F(Connect, TheOldSessionIsGoneBeforeTheNewWalletIsUsed) {
    bind_one_wallet(home, Json::object());
    add_wallet(home, OTHER_WALLET_ID, one_wallet_document(OTHER_WORDS));
    const std::string other_path = "/wallets/" + OTHER_WALLET_ID + "/wallet.json";
    wallet_program.act = [&](int look) {
        if (look != 1) return;
        // The old wallet turns up again while the user is choosing, and a status report loads it.
        home.write(ONE_WALLET_PATH, one_wallet_document());
        EXPECT_TRUE(qv_clasp_is_connected());
        home.write("/connect/" + request_id() + ".rep.json", approval(OTHER_WALLET_ID));
    };
    EXPECT_EQ(qv_clasp_connect(), "success");
    const WalletLock lock = qv_clasp_lock_wallet();
    EXPECT_EQ(qv_clasp_session().mnemonic.view(), OTHER_WORDS);
    EXPECT_TRUE(qv_clasp_save());
    EXPECT_EQ(json_text(home.read_json(other_path), "mnemonic"), OTHER_WORDS);
    EXPECT_EQ(json_text(home.read_json(ONE_WALLET_PATH), "mnemonic"), ONE_WALLET_WORDS);
}

TEST_F(Connect, UnbindForgetsTheBindAndTheSessionOnly) {
    bind_one_wallet(home);
    ASSERT_EQ(qv_clasp_connect(), "success");
    events.clear();
    EXPECT_EQ(qv_clasp_unbind(), "success");
    EXPECT_EQ(events, "status\n");
    EXPECT_EQ(log, "This app is no longer connected to a Clasp wallet.\n");
    EXPECT_EQ(qv_clasp_read_bind() + qv_clasp_active_wallet_id() + qv_clasp_session().address, "");
    EXPECT_TRUE(qv_clasp_session().mnemonic.empty());
    EXPECT_FALSE(qv_clasp_is_connected());
    EXPECT_TRUE(home.exists(ONE_WALLET_PATH));
    EXPECT_EQ(home.read_json("/wallets.json")["wallets"].size(), 1U);
}

TEST(ConnectWithoutApp, TheWalletProgramItselfDoesNotConnect) {
    if (qv_clasp_app_mode()) GTEST_SKIP() << "needs a process of its own";
    const TestHome home;
    EXPECT_EQ(qv_clasp_connect(), "error: connect is for apps, not the Clasp vault.");
    EXPECT_EQ(qv_clasp_write_request(), "");
    EXPECT_FALSE(home.exists("/connect"));
}
