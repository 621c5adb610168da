#include "clasp/receive_scan.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "clasp/connect.h"
#include "tests/support/one_wallet.h"
#include "tests/support/scripted_server.h"
#include "wallet/wallet_document.h"
#include "wallet/wallet_session.h"

namespace {

const std::string BALANCE_PATH = "/woc/addresses/balance";

// A chain service that knows the balances of addresses, and a bound wallet with a counter.
struct ScanWorld {
    ScriptedServer service;
    TestHome home;
    std::map<std::string, std::int64_t> balances;
    std::vector<std::size_t> batches;  // how many addresses each call asked for
    std::set<std::string> asked;
    std::function<void(ScriptedAnswer&)> before_answer;

    explicit ScanWorld(unsigned counter, Json document = one_wallet_document()) {
        home.use_settings(settings_on(service.base(), "localhost:1"));
        document["recv"] = {0, counter, 0, 0, 0, 0};
        bind_one_wallet(home, document);
        service.on_any([this](const ScriptedRequest& request, ScriptedAnswer& answer) {
            if (request.method != "POST" || request.path != BALANCE_PATH) return false;
            answer_balances(request, answer);
            return true;
        });
    }
    ~ScanWorld() {
        const WalletLock lock = qv_clasp_lock_wallet();
        qv_clasp_wipe_session();
    }
    void answer_balances(const ScriptedRequest& request, ScriptedAnswer& answer) {
        Json body;
        parse_json(request.body, body);
        Json rows = Json::array();
        for (const Json& entry : json_member(body, "addresses")) {
            const std::string address = entry.is_string() ? entry.get<std::string>() : "";
            asked.insert(address);
            const auto known = balances.find(address);
            rows.push_back(
                {{"address", address},
                 {"balance",
                  {{"confirmed", known == balances.end() ? 0 : known->second}, {"unconfirmed", 0}}}});
        }
        batches.push_back(rows.size());
        answer.body = dump_json(rows, -1);
        if (before_answer) before_answer(answer);
    }
    std::uint32_t saved_counter() const {
        return static_cast<std::uint32_t>(home.read_json(ONE_WALLET_PATH)["recv"][1].get<int>());
    }
};

}  // namespace

TEST(ReceiveScan, ACoinFarUpTheChainRaisesTheCounter) {
    ScanWorld world(10);
    world.balances[receive_address(350)] = 1;
    world.balances[receive_address(30)] = 5000;
    qv_clasp_scan_receive();
    EXPECT_EQ(world.batches, std::vector<std::size_t>(20, 20));
    EXPECT_TRUE(world.asked.count(receive_address(11)) && world.asked.count(receive_address(410)));
    EXPECT_FALSE(world.asked.count(receive_address(10)) || world.asked.count(receive_address(411)));
    EXPECT_EQ(qv_clasp_session().recv[1], 350U);
    EXPECT_EQ(world.saved_counter(), 350U);
    EXPECT_EQ(qv_clasp_session().address, receive_address(0)) << "the current address stays";

    world.asked.clear();
    qv_clasp_scan_receive();
    EXPECT_EQ(world.asked.size(), 340U) << "411 to 750";
    EXPECT_TRUE(world.asked.count(receive_address(411)) && world.asked.count(receive_address(750)));
    world.asked.clear();
    qv_clasp_scan_receive();
    EXPECT_TRUE(world.asked.empty()) << "nothing is asked twice in a session";
    EXPECT_EQ(world.saved_counter(), 350U);
}

TEST(ReceiveScan, AFailureInTheThirdBatchKeepsWhatTheFirstTwoFound) {
    ScanWorld world(0);
    world.balances[receive_address(33)] = 700;
    world.balances[receive_address(45)] = 700;
    world.before_answer = [&](ScriptedAnswer& answer) {
        if (world.batches.size() == 3) answer = {.status = 500, .body = "out of order"};
    };
    qv_clasp_scan_receive();
    EXPECT_EQ(world.batches.size(), 3U) << "the scan ends there";
    EXPECT_EQ(world.saved_counter(), 33U);
    EXPECT_EQ(qv_clasp_session().scan_position, 41U);
    world.asked.clear();
    qv_clasp_scan_receive();
    EXPECT_TRUE(world.asked.count(receive_address(41)) && !world.asked.count(receive_address(40)));
    EXPECT_EQ(world.saved_counter(), 45U);
}

TEST(ReceiveScan, AWalletThatIsSwitchedDuringTheScanIsLeftAlone) {
    ScanWorld world(0);
    add_wallet(world.home, "w2", one_wallet_document(OTHER_WORDS));
    world.balances[receive_address(7)] = 700;
    world.before_answer = [&](ScriptedAnswer&) {
        if (world.batches.size() != 1) return;
        qv_clasp_unbind();
        qv_clasp_write_bind("w2");
    };
    qv_clasp_scan_receive();
    const WalletLock lock = qv_clasp_lock_wallet();
    ASSERT_TRUE(qv_clasp_load());
    EXPECT_EQ(qv_clasp_session().mnemonic.view(), OTHER_WORDS);
    EXPECT_EQ(qv_clasp_session().recv[1], 0U);
    EXPECT_EQ(qv_clasp_session().scan_position, 0U);
    EXPECT_EQ(world.saved_counter(), 0U);
}

TEST(ReceiveScan, HowAnAnswerIsRead) {
    const TestHome home;
    ScriptedServer service;
    home.use_settings(settings_on(service.base(), "localhost:1"));
    const std::vector<ReceiveRow> rows{{4, "1A"}, {6, "1B"}, {9, "1A"}};
    struct Case {
        std::string body;
        bool ok;
        std::uint32_t highest;  // 3 before
    };
    const Case cases[] = {
        {R"([{"address":"1B","balance":{"confirmed":1,"unconfirmed":0}}])", true, 6},
        {R"([{"address":"1B","confirmed":1}])", true, 6},
        {R"({"value":[{"address":"1B","confirmed":1}]})", true, 6},
        {R"([{"address":"1B","confirmed":5,"balance":{}}])", true, 3},
        {R"([{"address":"1A","confirmed":1}])", true, 9},
        {R"([{"address":"1B","unconfirmed":1}])", true, 6},
        {R"([{"address":"1B","confirmed":0,"unconfirmed":-500}])", true, 3},
        {R"([{"address":"1B","confirmed":0.5}])", true, 6},
        {R"([{"address":"1B","confirmed":0.49,"unconfirmed":0.4}])", true, 3},
        {R"([{"address":"1B","confirmed":1e300},{"address":"1B","unconfirmed":18446744073709551615}])", true,
         3},
        {R"([{"address":"1B","confirmed":"5","unconfirmed":null,"balance":7}])", true, 3},
        {R"([17,null,["1B"],{"address":17,"confirmed":1},{"address":"1C","confirmed":1}])", true, 3},
        {R"({"result":[{"address":"1B","confirmed":1}]})", false, 3},
        {R"({"value":{}})", false, 3},
        {"<html>", false, 3},
    };
    for (const Case& c : cases) {
        service.on("POST", BALANCE_PATH, c.body);
        std::uint32_t highest = 3;
        EXPECT_EQ(qv_clasp_probe_addresses(rows, highest), c.ok) << c.body;
        EXPECT_EQ(highest, c.highest) << c.body;
    }
    EXPECT_EQ(service.requests()[0].body, R"({"addresses":["1A","1B","1A"]})");
    service.clear_requests();
    std::uint32_t highest = 3;
    EXPECT_TRUE(qv_clasp_probe_addresses({}, highest));
    EXPECT_TRUE(service.requests().empty());
}
