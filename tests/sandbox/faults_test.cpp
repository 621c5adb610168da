#include "sandbox/faults.h"

#include <chrono>
#include <tuple>

#include "sandbox/service_reply.h"
#include "tests/sandbox/service_client.h"

namespace {

using namespace sandbox;
using service_client::Answer;

TEST(Faults, AreTakenInTheOrderOfTheirArrivalAndAsOftenAsWasSaid) {
    Faults faults;
    faults.set("woc", {"429", "", 2});
    faults.set("woc", {"html500", "", 1});
    faults.set("arc", {"down", "", -1});
    std::string taken;
    for (int i = 0; i < 4; ++i) {
        const auto fault = faults.take("woc", "GET /x");
        taken += fault ? fault->failure + " " : "none ";
    }
    EXPECT_EQ(taken, "429 429 html500 none ");
    for (int i = 0; i < 50; ++i) ASSERT_TRUE(faults.take("arc", "GET /x")) << i;
    faults.clear();
    EXPECT_FALSE(faults.take("arc", "GET /x"));
}

TEST(Faults, ConcernOnlyTheRequestsThatTheyName) {
    struct Case {
        const char* name;
        Fault fault;
        const char *service, *request;
        bool taken;
    };
    const Case cases[] = {
        {"another service", {"down", ""}, "arc", "GET /v1/x", false},
        {"a part of the path", {"down", "/hex"}, "woc", "GET /tx/ab/hex", true},
        {"another path", {"down", "/hex"}, "woc", "GET /tx/ab", false},
        {"the method as well", {"down", "POST /tx"}, "woc", "GET /tx", false},
        {"a broadcast", {"conflict", ""}, "woc", "POST /v1/bsv/main/tx/raw", true},
        {"a whole transaction that is read", {"conflict", ""}, "woc", "GET /tx/ab/raw", false},
        {"balances", {"drop_after_accept", ""}, "woc", "POST /addresses/balance", false},
        {"never", {"down", "", 0}, "woc", "GET /x", false},
    };
    for (const Case& c : cases) {
        Faults faults;
        faults.set("woc", c.fault);
        EXPECT_EQ(faults.take(c.service, c.request).has_value(), c.taken) << c.name;
    }
}

TEST(Faults, WrongTypesLeaveNoValueAsItWas) {
    Json document;
    ASSERT_TRUE(
        parse_json(R"([{"tx_hash":"ab","value":5,"spent":false,"data":null,"more":{"a":[1]}}])", document));
    Json expected;
    ASSERT_TRUE(
        parse_json(R"([{"tx_hash":2,"value":"5","spent":"false","data":[1],"more":[["1"]]}])", expected));
    EXPECT_EQ(wrong_types(document), expected);
}

class ServiceFaults : public service_client::Started {};

// What a caller sees of a failure, and what the network has of the transaction afterwards.
TEST_F(ServiceFaults, OfABroadcast) {
    struct Case {
        const char* failure;
        int status;  // of the chain service
        const char* in_body;
        bool on_chain;
    };
    const Case cases[] = {
        {"down", 0, "", false},
        {"429", 429, "Too Many", false},
        {"html500", 500, "<html", false},
        {"404", 404, "", false},
        {"badjson", 200, "{\"result\":[{", true},
        {"empty", 200, "", true},
        {"drop_after_accept", 200, "TXID", false},
        {"accept_silently", 502, "<html>", true},
        {"conflict", 400, "\"unexpected response code 500: 258: txn-mempool-conflict\"", false},
        {"missing_inputs", 400, "\"unexpected response code 500: Missing inputs\"", false},
    };
    for (const Case& c : cases) {
        const Transaction tx = payment(money(key(1), 50'000), key(1), key(2));
        box.faults().set("woc", {c.failure, "/tx/raw"});
        const Answer answer = send("woc", hex(tx));
        const std::string expected = std::string(c.in_body) == "TXID" ? tx.txid : c.in_body;
        EXPECT_EQ(answer.status, c.status) << c.failure;
        EXPECT_NE(answer.body.find(expected), std::string::npos) << c.failure << ": " << answer.body;
        EXPECT_EQ(box.chain().find(tx.txid).has_value(), c.on_chain) << c.failure;
        // It was ordered once: the same transaction is judged honestly now, and the network has it at last.
        EXPECT_EQ(send("woc", hex(tx)).status, c.on_chain ? 400 : 200) << c.failure;
        EXPECT_TRUE(box.chain().find(tx.txid)) << c.failure;
    }
}

TEST_F(ServiceFaults, OfABroadcastSpeakEachServicesOwnLanguage) {
    struct Case {
        const char *service, *failure;
        int status;
        const char* pointer;
        Json value;
    };
    const Case cases[] = {
        {"home", "conflict", 200, "/ok", false},
        {"home", "missing_inputs", 200, "/error", "Missing inputs"},
        {"home", "accept_silently", 502, "/ok", false},
        {"home", "drop_after_accept", 200, "/ok", true},
        {"arc", "conflict", 200, "/txStatus", "DOUBLE_SPEND_ATTEMPTED"},
        {"arc", "missing_inputs", 200, "/extraInfo", "Missing inputs"},
        {"arc", "accept_silently", 409, "/extraInfo", "failed to submit tx"},
    };
    for (const Case& c : cases) {
        const Transaction tx = payment(money(key(1), 50'000), key(1), key(2));
        box.faults().set(c.service, {c.failure, ""});
        const Answer answer = send(c.service, hex(tx));
        EXPECT_EQ(answer.status, c.status) << c.service << " " << c.failure;
        ASSERT_TRUE(answer.json().contains(Json::json_pointer(c.pointer))) << answer.body;
        EXPECT_EQ(answer.json()[Json::json_pointer(c.pointer)], c.value) << c.service << " " << c.failure;
    }
}

TEST_F(ServiceFaults, OfEveryServiceCanBeOrdered) {
    const Ports& ports = box.ports();
    const std::string address = key(1).address;
    using service_client::Transport;
    const std::tuple<const char*, int, std::string, Transport> cases[] = {
        {"woc", ports.woc, "/v1/bsv/main/address/" + address + "/unspent", Transport::Plain},
        {"ordinals", ports.ordinals, "/api/bsv20/" + address + "/unspent", Transport::Plain},
        {"arc", ports.arc, "/v1/tx/" + std::string(64, '0'), Transport::Plain},
        {"home", ports.home, "/api/paymail/address/" + address, Transport::Home},
        {"resolver", ports.resolver, "/api/bsvalias/address/x", Transport::Resolver},
        {"update", ports.control, "/download", Transport::Plain},
    };
    for (const auto& [service, port, path, transport] : cases) {
        for (const auto& [failure, status] : {std::pair{"down", 0}, std::pair{"429", 429}}) {
            const Json body{{"service", service}, {"failure", failure}, {"path", path}};
            ASSERT_EQ(order("/sandbox/fault", body).status, 200) << service;
            EXPECT_EQ(service_client::get(port, path, transport).status, status) << service;
        }
        EXPECT_NE(service_client::get(port, path, transport).status, 0) << service;
    }
}

TEST_F(ServiceFaults, ASlowAnswerComesLateAndItsWorkIsDoneAtOnce) {
    const Transaction tx = payment(money(key(1), 50'000), key(1), key(2));
    box.faults().set("home", {"slow", "/oi/submit", 1, 600});
    const auto start = std::chrono::steady_clock::now();
    Answer answer;
    std::thread sender([&] { answer = send("home", hex(tx)); });
    while (!box.chain().find(tx.txid) &&
           std::chrono::steady_clock::now() - start < std::chrono::seconds(30)) {
        std::this_thread::yield();
    }
    EXPECT_TRUE(box.chain().find(tx.txid));
    sender.join();
    EXPECT_EQ(answer.json()["ok"], true);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(600));
}

TEST_F(ServiceFaults, AnOrderThatMakesNoSenseIsRefused) {
    const Json orders[] = {
        {{"service", "moon"}, {"failure", "down"}},
        {{"service", "woc"}, {"failure", "rain"}},
        {{"service", "woc"}, {"failure", "down"}, {"times", 0}},
        {{"service", "woc"}, {"failure", "slow"}, {"slow_ms", -5}},
        Json::array(),
    };
    for (const Json& body : orders) EXPECT_EQ(order("/sandbox/fault", body).status, 400) << body;
    const auto status = [&] { return woc("/address/" + key(1).address + "/unspent").status; };
    EXPECT_EQ(status(), 200);
    ASSERT_EQ(order("/sandbox/fault", {{"service", "woc"}, {"failure", "down"}, {"times", -1}}).status, 200);
    EXPECT_EQ(status(), 0);
    ASSERT_EQ(order("/sandbox/fault", {{"failure", "none"}}).status, 200);
    EXPECT_EQ(status(), 200);
}

}  // namespace
