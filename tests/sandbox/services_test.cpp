#include <map>
#include <set>
#include <vector>

#include "base/decimal_text.h"
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
    // A token output of the world that is unspent: its coin and the address that holds it.
    Coin token_coin() {
        for (const Coin& coin : box.chain().unspent(box.world().holders[0].owners[0])) {
            if (coin.sats == 1) return coin;
        }
        ADD_FAILURE() << "no token output";
        return {};
    }
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
        Json ours;
        Json theirs;
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

// Every list of an address says the same whatever its form, and each form is met.
TEST_F(Services, ListTheSameCoinsInEveryForm) {
    using Coins = std::set<std::string>;
    std::map<std::string, int> forms;
    for (std::uint8_t number = 1; number <= 40; ++number) {
        const KeyPair owner = key(number);
        money(owner, 10'000 + number);
        ASSERT_EQ(send("woc", hex(payment(money(owner, 9'000), owner, owner))).status, 200);
        const std::string url = "/address/" + owner.address;
        const auto read = [&](const std::string& path) {
            const Json document = woc(url + path).json();
            const Json& rows = document.is_array() ? document : document["result"];
            ++forms[path + (document.is_array() ? " bare" : " object")];
            Coins coins;
            for (const Json& row : rows) {
                if (json_bool(row, "isSpentInMempoolTx")) {
                    ++forms["spent in mempool"];
                    continue;
                }
                const char* txid = row.contains("tx_hash") ? "tx_hash" : "txid";
                ++forms[path + " " + txid];
                const bool fresh =
                    coins
                        .insert(json_text(row, txid) + ":" +
                                std::to_string(json_int(row, "tx_pos", json_int(row, "vout"))) + "=" +
                                std::to_string(json_int(row, "value")))
                        .second;
                if (!fresh) ++forms["twice"];
            }
            return coins;
        };
        Coins all;
        Coins unmined;
        for (const Coin& coin : box.chain().unspent(owner.address)) {
            const std::string text =
                coin.txid + ":" + std::to_string(coin.vout) + "=" + std::to_string(coin.sats);
            all.insert(text);
            if (coin.height == 0) unmined.insert(text);
        }
        ASSERT_EQ(all.size(), 2U);
        EXPECT_EQ(read("/unspent/all"), all) << owner.address;
        EXPECT_EQ(read("/unspent"), all) << owner.address;
        EXPECT_EQ(read("/unconfirmed/unspent"), unmined) << owner.address;
        if (number % 4 == 0) {
            box.chain().mine();
            EXPECT_EQ(read("/unspent/all"), all) << owner.address;
        }
    }
    for (const char* form :
         {"/unspent bare", "/unspent object", "/unconfirmed/unspent tx_hash", "/unconfirmed/unspent txid",
          "/unspent/all object", "spent in mempool", "twice"}) {
        EXPECT_GT(forms[form], 0) << form;
    }
}

TEST_F(Services, GiveTheNewestTransactionsOfAHistoryOldestFirst) {
    const KeyPair owner = key(3);
    Coin coin = money(owner, 50'000);
    std::vector<std::string> sent;
    for (int i = 0; i < 6; ++i) {
        const Transaction tx = payment(coin, owner, owner);
        ASSERT_EQ(send("arc", hex(tx)).status, 200);
        sent.push_back(tx.txid);
        coin = {tx.txid, 0, tx.outputs[0].sats, tx.outputs[0].script, 0};
        if (i == 2) box.chain().mine();
    }
    const auto read = [&](const std::string& path) {
        const Json document = woc("/address/" + owner.address + path).json();
        std::vector<std::string> txids;
        for (const Json& row : document.is_array() ? document : document["result"]) {
            txids.push_back(json_text(row, "tx_hash"));
        }
        return txids;
    };
    using Txids = std::vector<std::string>;
    EXPECT_EQ(read("/unconfirmed/history"), Txids(sent.begin() + 3, sent.end()));
    EXPECT_EQ(read("/unconfirmed/history?limit=2"), Txids(sent.end() - 2, sent.end()));
    EXPECT_EQ(read("/confirmed/history?limit=3"), Txids(sent.begin(), sent.begin() + 3));
    EXPECT_EQ(read("/history?limit=6"), sent);
    EXPECT_EQ(woc("/address/" + key(200).address + "/confirmed/history").status, 404);
    EXPECT_EQ(woc("/address/1BadAddress/history").status, 400);
}

TEST_F(Services, TellOfTransactionsAndSpends) {
    const Coin coin = money(key(1), 20'000);
    const Transaction tx = payment(coin, key(1), key(2));
    const std::string unknown(64, 'a');
    ASSERT_EQ(send("woc", hex(tx)).status, 200);
    for (const char* end : {"/hex", "/raw"}) {
        const std::string body(trim(woc("/tx/" + tx.txid + end).body, "\"", "\"\n"));
        EXPECT_EQ(body, hex(tx)) << end;
        EXPECT_EQ(woc("/tx/" + unknown + end).status, 404) << end;
        EXPECT_EQ(woc("/tx/" + unknown + end).body, "") << end;
    }
    EXPECT_NE(woc("/tx/" + tx.txid + "/hex").body, woc("/tx/" + tx.txid + "/raw").body);
    EXPECT_EQ(woc("/tx/xyz").status, 400);
    const Json decoded = woc("/tx/" + tx.txid + "/decoded").json();
    EXPECT_EQ(decoded["vout"][0]["satoshis"], 19'900);
    EXPECT_EQ(decoded["vout"][0]["scriptPubKey"]["address"], key(2).address);

    EXPECT_EQ(woc("/tx/" + coin.txid + "/0/spent").json(),
              (Json{{"txid", tx.txid}, {"vin", 0}, {"status", "unconfirmed"}}));
    EXPECT_EQ(woc("/tx/" + tx.txid + "/0/spent").status, 404);
    EXPECT_EQ(woc("/tx/" + tx.txid + "/0/spent").body, "");
    EXPECT_EQ(woc("/tx/" + unknown + "/0/spent").status, 400);
    box.chain().mine();
    EXPECT_EQ(woc("/tx/" + coin.txid + "/0/spent").json()["status"], "confirmed");
    EXPECT_EQ(woc("/tx/" + tx.txid).json()["confirmations"], 1);
}

TEST_F(Services, BalancesAddUpAcrossAPendingPayment) {
    std::set<std::string> forms;
    for (std::uint8_t number = 1; number <= 12; ++number) {
        const KeyPair owner = key(number);
        money(owner, 5'000);
        ASSERT_EQ(send("woc", hex(payment(money(owner, 70'000), owner, key(99)))).status, 200);
        const Json asked{{"addresses", {owner.address, key(150).address}}};
        Json document = service_client::post(box.ports().woc, "/v1/bsv/main/addresses/balance", asked).json();
        if (document.is_object()) forms.insert("value");
        if (document.is_object()) document = Json(document["value"]);
        forms.insert(document[0].contains("balance") ? "nested" : "flat");
        const Json& row = document[0].contains("balance") ? document[0]["balance"] : document[0];
        EXPECT_EQ(row["confirmed"], 75'000) << document;
        EXPECT_EQ(row["unconfirmed"], -70'000) << document;
        EXPECT_EQ(document[1]["address"], key(150).address);
    }
    EXPECT_EQ(forms, (std::set<std::string>{"value", "nested", "flat"}));
    const Json many{{"addresses", std::vector<std::string>(21, key(1).address)}};
    EXPECT_EQ(service_client::post(box.ports().woc, "/v1/bsv/main/addresses/balance", many).status, 400);
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

TEST_F(Services, ListATokensHoldersInBothForms) {
    std::map<std::string, std::string> expected;
    for (const Holder& holder : box.world().holders) {
        for (const std::string& owner : holder.owners) expected[owner] = "0";
    }
    const std::string path = "/api/bsv20/id/" + box.world().token_id + "/holders";
    const Json first = ordinals(path).json();
    const Json second = ordinals(path).json();
    EXPECT_TRUE(first.is_array() != second.is_array());
    const Json& rows = first.is_array() ? first : first["holders"];
    EXPECT_EQ(rows, second.is_array() ? second : second["holders"]);
    std::string total = "0";
    std::string last;
    for (const Json& row : rows) {
        const std::string lots = row["amt"].is_string() ? json_text(row, "amt") : row["amt"].dump();
        std::string owner = json_text(row, "address", json_text(row, "owner"));
        if (owner.empty()) {
            Hash160 hash160{};
            ASSERT_TRUE(qv_clasp_hex_decode_into(json_text(row, "pkhash"), hash160.data(), hash160.size()));
            owner = address_of(hash160);
        }
        EXPECT_TRUE(expected.contains(owner)) << owner;
        EXPECT_TRUE(last.empty() || dec_cmp(lots, last) <= 0) << "most lots first";
        last = lots;
        total = dec_add(total, lots);
    }
    EXPECT_EQ(rows.size(), expected.size());
    EXPECT_EQ(total, box.world().total_lots);
    const Json token = ordinals("/api/bsv20/id/" + box.world().token_id).json();
    EXPECT_EQ(token["name"], box.world().token_name);
    EXPECT_EQ(token["amt"], box.world().total_lots);
    EXPECT_EQ(ordinals("/api/bsv20/id/" + std::string(64, 'e') + "_0").status, 404);
    EXPECT_EQ(ordinals("/api/bsv20/id/" + std::string(64, 'e') + "_0/holders").body, "[]");
}

TEST_F(Services, IndexTheTokenOutputsOfAnAddress) {
    const Coin coin = token_coin();
    const std::string owner = box.world().holders[0].owners[0];
    const std::string outpoint = coin.txid + "_" + std::to_string(coin.vout);
    for (const Json& row : ordinals("/api/bsv20/" + owner + "/unspent").json()) {
        if (row["outpoint"] != outpoint) continue;
        EXPECT_EQ(from_base64(json_text(row, "script")), coin.script);
        EXPECT_EQ(row["id"], box.world().token_id);
    }
    std::set<std::string> places;
    for (const Holder& holder : box.world().holders) {
        for (const std::string& address : holder.owners) {
            for (const Json& row : ordinals("/api/txos/address/" + address + "/unspent").json()) {
                if (row["data"].is_null()) continue;
                for (const char* place : {"bsv20", "bsv21"}) {
                    if (row["data"].contains(place)) places.insert(place);
                }
                EXPECT_EQ(row["data"]["insc"]["json"]["p"], "bsv-20");
                EXPECT_TRUE(row["origin"].is_null());
            }
        }
    }
    EXPECT_EQ(places, (std::set<std::string>{"bsv20", "bsv21"}));
    const Answer content = ordinals("/content/" + outpoint);
    EXPECT_EQ(content.type, "application/bsv-20");
    EXPECT_EQ(content.json()["id"], box.world().token_id);
    EXPECT_EQ(ordinals("/api/files/inscriptions/" + outpoint).body, content.body);
    EXPECT_EQ(ordinals("/content/" + std::string(64, 'e') + "_0").status, 404);
}

TEST_F(Services, SinglesHaveAnOriginAndPlainCoinsHaveNone) {
    const KeyPair owner = key(7);
    const Bytes png{0x89, 'P', 'N', 'G', 1, 2, 3};
    const Bytes picture = inscription_script(owner.hash160, "image/png", png, Layout::EnvelopeFirst);
    const std::string txid = box.chain().fund({{1, picture}, {7'000, p2pkh_script(owner.hash160)}});
    const Json rows = ordinals("/api/txos/address/" + owner.address + "/unspent").json();
    ASSERT_EQ(rows.size(), 2U);
    for (const Json& row : rows) {
        const bool plain = row["satoshis"] == 7'000;
        EXPECT_EQ(row["origin"].is_null(), plain) << row;
        EXPECT_EQ(row["data"].is_null(), plain) << row;
        if (plain) continue;
        EXPECT_EQ(row["data"]["insc"]["file"]["type"], "image/png");
    }
    EXPECT_EQ(ordinals("/content/" + txid).body, std::string(png.begin(), png.end()));
    EXPECT_EQ(ordinals("/api/txos/address/" + owner.address + "/unspent?limit=1&offset=1").json().size(), 1U);
}

TEST_F(Services, ALaggingIndexShowsThePastAndTheChainThePresent) {
    const KeyPair owner = key(5);
    const Coin coin = money(owner, 33'000);
    const Transaction tx = payment(coin, owner, owner);
    ASSERT_EQ(send("home", hex(tx)).status, 200);
    const auto listed = [&](const std::string& txid) {
        const std::string lists = woc("/address/" + owner.address + "/unspent").body +
                                  ordinals("/api/txos/address/" + owner.address + "/unspent").body;
        return contains(lists, txid);
    };
    box.set_index_lag(1);
    EXPECT_TRUE(listed(coin.txid));
    EXPECT_FALSE(listed(tx.txid));
    EXPECT_EQ(woc("/tx/" + tx.txid).status, 200);
    EXPECT_EQ(woc("/tx/" + coin.txid + "/0/spent").status, 200);
    EXPECT_TRUE(contains(woc("/address/" + owner.address + "/unconfirmed/history").body, tx.txid));
    box.set_index_lag(1'000'000);
    EXPECT_FALSE(listed(coin.txid));
    EXPECT_EQ(ordinals("/api/bsv20/id/" + box.world().token_id + "/holders").json().dump().find("amt"),
              std::string::npos);
    ASSERT_EQ(order("/sandbox/lag", {{"transactions", 0}}).status, 200);
    EXPECT_FALSE(listed(coin.txid));
    EXPECT_TRUE(listed(tx.txid));
}

TEST_F(Services, TheFamilysHostKnowsNamesAddressesAndRoles) {
    const KeyPair alice = key(11);
    const KeyPair ordinal = key(12);
    const std::string pubkey = qv_clasp_hex_encode(alice.pub);
    box.directory().put({"alice", pubkey, alice.address, ordinal.address, "", ""});
    box.directory().set_role(pubkey, "dev");
    EXPECT_EQ(home("/api/bsvalias/address/alice@localhost").json()["address"], alice.address);
    EXPECT_EQ(home("/api/bsvalias/address/alice@elsewhere.test").status, 404);
    EXPECT_EQ(home("/api/bsvalias/address/nobody@localhost").status, 404);
    const Json row = home("/api/paymail/address/" + ordinal.address).json();
    EXPECT_EQ(row["alias"], "alice");
    EXPECT_EQ(row["pubkey"], pubkey);
    EXPECT_EQ(row["address"], alice.address);
    EXPECT_EQ(row["kind"], "ordinal");
    std::set<int> statuses;
    for (std::uint8_t number = 30; number < 45; ++number) {
        const Answer answer = home("/api/paymail/address/" + key(number).address);
        EXPECT_EQ(json_text(answer.json(), "alias"), "");
        statuses.insert(answer.status);
    }
    EXPECT_EQ(statuses, (std::set<int>{200, 404}));
    EXPECT_EQ(home("/api/paymail/quota/" + pubkey).json()["role"], "dev");
    EXPECT_EQ(home("/api/paymail/quota/02ff").json()["role"], "default");
    // A certificate that nobody signed, and the same names.
    const int resolver = box.ports().resolver;
    EXPECT_EQ(service_client::get(resolver, "/api/bsvalias/address/alice@localhost", Transport::Home).status,
              0);
    EXPECT_EQ(service_client::get(resolver, "/api/bsvalias/address/alice@localhost", Transport::Resolver)
                  .json()["address"],
              alice.address);
}

TEST_F(Services, TheFamilysHostTakesAClaimOnlyFromItsKey) {
    const KeyPair alice = key(11);
    const std::string pubkey = qv_clasp_hex_encode(alice.pub);
    const std::string message = "QV-PAYMAIL-CLAIM|alice|" + pubkey + "|" + alice.address + "||1700000000";
    Json claim{{"alias", "alice"},
               {"pubkey", pubkey},
               {"address", alice.address},
               {"avatar", ""},
               {"ts", 1'700'000'000}};
    claim["sig"] = base64(sign_compact(alice, message_digest(message)));
    Json forged = claim;
    forged["address"] = key(13).address;
    const Answer refused = post_home("/api/paymail/claim", forged);
    EXPECT_EQ(refused.status, 400);
    EXPECT_FALSE(json_text(refused.json(), "error").empty());
    EXPECT_EQ(home("/api/bsvalias/address/alice").status, 404);
    EXPECT_EQ(post_home("/api/paymail/claim", claim).status, 200);
    EXPECT_EQ(home("/api/bsvalias/address/alice").json()["address"], alice.address);
}

TEST_F(Services, TheIdentityFeedGivesTheNewestFirst) {
    Hash160 oracle{};
    ASSERT_TRUE(hash160_of_address(settings().oracle_address, oracle));
    std::vector<std::string> txids;
    for (int i = 0; i < 5; ++i) txids.push_back(box.chain().fund({{1'000 + i, p2pkh_script(oracle)}}));
    EXPECT_EQ(home("/oi/oracle/ident/txids?limit=2").json()["txids"], (Json{txids[4], txids[3]}));
    EXPECT_EQ(home("/oi/oracle/ident/txids").json()["txids"].size(), 5U);
}

TEST_F(Services, AReceiptCountsOnlyWithTheSignatureOfItsKey) {
    const Transaction tx = payment(money(key(1), 9'000), key(1), key(2));
    const Json base{
        {"hex", hex(tx)},
        {"reference", "ref-1"},
        {"metadata",
         {{"sender", "a@b.test"}, {"pubkey", qv_clasp_hex_encode(key(1).pub)}, {"note", "payment"}}}};
    Bytes compact = sign_compact(key(1), message_digest(tx.txid));
    const auto signed_with = [&](int header) {
        Json receipt = base;
        Bytes signature{static_cast<std::uint8_t>(header)};
        signature.insert(signature.end(), compact.begin(), compact.end());
        receipt["metadata"]["signature"] = base64(signature);
        return receipt;
    };
    int taken = 0;
    for (int header = 31; header <= 34; ++header) {
        if (post_home("/receipt", signed_with(header)).status == 200) ++taken;
    }
    EXPECT_EQ(taken, 1);
    ASSERT_EQ(box.receipts().size(), 1U);
    EXPECT_EQ(box.receipts()[0]["reference"], "ref-1");
    Json other_transaction = box.receipts()[0];
    other_transaction["hex"] = hex(payment(money(key(1), 8'000), key(1), key(2)));
    Json other_key = box.receipts()[0];
    other_key["metadata"]["pubkey"] = qv_clasp_hex_encode(key(2).pub);
    for (const Json& body : {other_transaction, other_key, base, Json(nullptr)}) {
        EXPECT_EQ(post_home("/receipt", body).status, 400) << body;
    }
    EXPECT_EQ(box.receipts().size(), 1U);
}

}  // namespace
