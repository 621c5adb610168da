#include <map>
#include <vector>

#include "base/text.h"
#include "sandbox/scripts.h"
#include "sandbox/service_reply.h"
#include "tests/sandbox/service_client.h"
#include "tests/support/test_home.h"

namespace {

using namespace sandbox;
using service_client::Answer;
using service_client::Started;
using service_client::Transport;

class Services : public Started {
 protected:
    // An address whose answers have this form among `count`.
    std::uint8_t key_of_form(unsigned form, unsigned count) {
        std::uint8_t number = 1;
        while (form_of(key(number).address, count) != form) ++number;
        return number;
    }
};

// A recorded or documented answer, by the end of its path.
Json recorded(const std::string& file, const std::string& method, const std::string& path_end, int status) {
    const Json answers = test_data(file);
    for (const Json& row : answers["answers"]) {
        Json document;
        if (json_text(row, "method") != method || !json_text(row, "path").ends_with(path_end)) continue;
        if (json_int(row, "status") == status && parse_json(json_text(row, "body"), document))
            return document;
    }
    ADD_FAILURE() << file << " has no " << path_end;
    return nullptr;
}

// Kinds of JSON values; null fits every kind, as it does in the recorded answers, and a number is one kind.
std::string kind_of(const Json& value) {
    return value.is_number() ? "number" : value.type_name();
}

void expect_same_form(const Json& ours, const Json& theirs, const std::string& where) {
    ASSERT_TRUE(ours.is_object() && theirs.is_object()) << where;
    for (const auto& [key, value] : theirs.items()) {
        ASSERT_TRUE(ours.contains(key)) << where << " has no " << key;
        if (value.is_null() || ours[key].is_null()) continue;
        // The place in a block is text in one recorded answer and a number in another.
        if (key == "idx") continue;
        EXPECT_EQ(kind_of(ours[key]), kind_of(value)) << where << " " << key;
    }
}

TEST_F(Services, HaveTheFormsOfTheRecordedAnswers) {
    const char* const chain_file = "api_whatsonchain.json";
    const char* const index_file = "api_gorillapool.json";
    const KeyPair rows = key(key_of_form(0, 6));  // neither bare nor renamed rows
    const Coin mined = money(rows, 40'000);
    const Transaction spend = payment(mined, rows, rows);
    ASSERT_EQ(send("woc", hex(spend)).status, 200);
    money(rows, 30'000);
    const std::string address = "/address/" + rows.address;
    const std::string holder = box.world().holders[0].owners[0];
    struct Case {
        std::string name;
        Json ours, theirs;
    };
    const Json tx = woc("/tx/" + spend.txid).json();
    Json their_tx =
        recorded(chain_file, "GET or POST",
                 "/tx/hash/c1d32f28baa27a376ba977f6a8de6ce0a87041157cef0274b20bfda2b0d8df96", 200);
    Json all_unspent = woc(address + "/unspent/all").json();
    std::map<std::string, Json> rows_by_status;
    for (const Json& row : all_unspent["result"]) rows_by_status[json_text(row, "status")] = row;
    const Json doc_all = recorded(chain_file, "GET", "1L2F8wYxTRagCZLnsm2engg8ngGECSeuE5/unspent/all", 200);
    const Json doc_mempool = recorded(chain_file, "GET", "/unconfirmed/unspent", 200);
    const Json doc_history =
        recorded(chain_file, "GET", "QC6bjxvSBdiHqGM48t5RxjTEYW6BX4vu4/unconfirmed/history", 200);
    const Json doc_balance = recorded(chain_file, "POST", "…/addresses/unconfirmed/balance", 200);
    const Json balance = service_client::post(box.ports().woc, "/v1/bsv/main/addresses/balance",
                                              {{"addresses", {rows.address}}})
                             .json();
    const Case cases[] = {
        {"unspent/all", all_unspent, doc_all},
        {"a confirmed row", rows_by_status["confirmed"], doc_all["result"][0]},
        {"an unconfirmed row", rows_by_status["unconfirmed"], doc_mempool["result"][0]},
        {"unconfirmed/unspent", woc(address + "/unconfirmed/unspent").json()["result"][0],
         doc_mempool["result"][0]},
        {"unconfirmed/history", woc(address + "/unconfirmed/history").json(), doc_history},
        {"a history row", woc(address + "/unconfirmed/history").json()["result"][0],
         doc_history["result"][0]},
        {"a confirmed history row", woc(address + "/confirmed/history").json()["result"][0],
         recorded(chain_file, "POST", "/addresses/history/all", 200)[0]["confirmed"]["result"][0]},
        {"a spend", woc("/tx/" + mined.txid + "/0/spent").json(),
         recorded(chain_file, "GET", "{vout}/spent", 200)},
        {"a balance", balance[0], doc_balance[0]},
        {"its figures", balance[0]["balance"], doc_balance[0]["balance"]},
        {"a transaction's input", tx["vin"][0], their_tx["vin"][0]},
        {"a transaction's output", tx["vout"][0], their_tx["vout"][0]},
        {"its script", tx["vout"][0]["scriptPubKey"], their_tx["vout"][0]["scriptPubKey"]},
        {"a mined transaction", woc("/tx/" + mined.txid).json(), their_tx},
        {"an indexed output", ordinals("/api/txos/address/" + holder + "/unspent").json()[0],
         recorded(index_file, "GET", "RqYp2m/history", 200)[0]},
        {"a token output", ordinals("/api/bsv20/" + holder + "/unspent").json()[0],
         recorded(index_file, "GET", "tick/PEPE?listing=false", 200)[0]},
        {"a processed transaction", service_client::get(box.ports().arc, "/v1/tx/" + spend.txid).json(),
         recorded("api_arc.json", "POST", "/v1/tx", 200)},
        {"a problem", service_client::post(box.ports().arc, "/v1/tx", Json::object()).json(),
         recorded("api_arc.json", "POST", "/v1/tx", 400)},
    };
    for (const Case& c : cases) expect_same_form(c.ours, c.theirs, c.name);
    EXPECT_DOUBLE_EQ(tx["vout"][0]["value"].get<double>(), 0.000399);
}

// The same roads on all three services that take a transaction.
TEST_F(Services, JudgeATransactionEachInItsOwnWords) {
    struct Case {
        const char* service;
        std::string again, conflict, missing, low_fee, garbage;
    };
    const std::string code = "unexpected response code 500: ";
    const Case cases[] = {
        {"woc", "400 " + code + "257: txn-already-known", "400 " + code + "258: txn-mempool-conflict",
         "400 " + code + "Missing inputs", "400 " + code + "66: mempool min fee not met",
         "400 " + code + "TX decode failed"},
        {"home", R"(200 "ok":true)", R"(200 "error":"txn-mempool-conflict")",
         R"(200 "error":"Missing inputs")", R"(200 "ok":false)", "400 bad txhex"},
        {"arc", "200 txStatus", R"(200 "txStatus":"DOUBLE_SPEND_ATTEMPTED")",
         R"(200 "extraInfo":"Missing inputs")", "465 The fees are too low", "400 malformed"},
    };
    const auto judged = [&](const char* service, const std::string& raw_hex, const std::string& expected) {
        const Answer answer = send(service, raw_hex);
        EXPECT_EQ(std::to_string(answer.status), expected.substr(0, 3)) << service << " " << answer.body;
        EXPECT_TRUE(contains(answer.body, expected.substr(4))) << service << " " << answer.body;
    };
    for (const Case& c : cases) {
        const Coin coin = money(key(1), 60'000);
        const Transaction tx = payment(coin, key(1), key(2));
        judged(c.service, hex(tx), std::string("200 ") + tx.txid);
        judged(c.service, hex(tx), c.again);
        judged(c.service, hex(payment(coin, key(1), key(3))), c.conflict);
        judged(c.service, hex(payment({std::string(64, 'c'), 0, 9'000, coin.script, 0}, key(1), key(2))),
               c.missing);
        judged(c.service, hex(payment(money(key(1), 8'000), key(1), key(2), 1)), c.low_fee);
        judged(c.service, "0102zz", c.garbage);
        EXPECT_EQ(box.chain().spender(coin.txid, 0), tx.txid) << c.service;
    }
    box.chain().mine();
    const std::string known = box.chain().txids().back();
    EXPECT_EQ(service_client::get(box.ports().arc, "/v1/tx/" + known).json()["txStatus"], "MINED");
    EXPECT_EQ(service_client::get(box.ports().arc, "/v1/tx/" + std::string(64, 'd')).status, 404);
}

}  // namespace
