#include "sandbox/faults.h"

#include "sandbox/service_reply.h"
#include "tests/sandbox/service_client.h"

namespace {

using namespace sandbox;
using service_client::Answer;

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

}  // namespace
