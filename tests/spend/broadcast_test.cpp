#include "spend/broadcast.h"

#include <gtest/gtest.h>

#include <map>

#include "spend/coin_guard.h"
#include "tests/spend/play_network.h"
#include "wallet/address.h"
#include "wallet/coin_records.h"
#include "wallet/wallet_document.h"

namespace {

const std::string STRANGER = "1BoatSLRHtKNngkdXEeobR76b53LETtpyT";
const std::string TXID(64, 'c');

// A signed payment of 1000 satoshis from the one wallet's first address.
struct ReadyPayment {
    PlayNetwork net;
    std::vector<QvClaspCoin> coins;
    std::vector<QvClaspTxOutput> outputs;
    Hash160 change{};
    std::string txid;  // as broadcast computed it
    std::string expected;

    ReadyPayment() {
        net.fund(receive_address(0), {50'000});
        WalletLock lock = qv_clasp_lock_wallet();
        std::string error;
        std::int64_t total = 0;
        std::int64_t fee = 0;
        Hash160 dest{};
        EXPECT_TRUE(qv_clasp_load());
        EXPECT_TRUE(qv_clasp_address_to_hash160(STRANGER, dest));
        EXPECT_TRUE(qv_clasp_change_target(change, error));
        EXPECT_TRUE(qv_clasp_refresh_coins(lock, error));
        EXPECT_TRUE(qv_clasp_collect_coins(coins, total, error));
        EXPECT_TRUE(qv_clasp_build_tx(coins, outputs, dest, change, 1000, "", fee, error));
        EXPECT_TRUE(sign_all_inputs(coins, outputs, "", ""));
        expected = qv_clasp_txid(qv_clasp_serialize_tx(coins, outputs, false));
        net.clear_requests();
    }

    std::string broadcast() {
        const WalletLock lock = qv_clasp_lock_wallet();
        return qv_clasp_broadcast(coins, outputs, change, txid);
    }
};

const Turn SILENT = hangs_up();
const Turn BUSY = refuses("", 429);
const Turn PAGE = refuses("<html>", 500);
const Turn HOME_TAKES = takes(R"({"ok":true})");
const Turn WOC_TAKES = takes("\"TXID\"\n");
const Turn WOC_FORGETS = refuses("\"TXID\"", 200);
const Turn ARC_TAKES = takes(R"({"txid":"TXID","txStatus":"SEEN_ON_NETWORK","extraInfo":""})");
const Turn ARC_FORGETS = refuses(R"({"txStatus":"SEEN_ON_NETWORK"})", 200);

// Posts to the chain service and to ARC, and looks at the transaction; home is always asked once.
struct Requests {
    std::size_t woc, arc, probes;
};

// "success" as the result stands for the success text; the first looks miss.
void expect_path(const std::string& what, const Turn& home, const std::vector<Turn>& woc, const Turn& arc,
                 int misses, const std::string& result, const Requests& requests) {
    SCOPED_TRACE(what);
    ReadyPayment payment;
    PlayNetwork& net = payment.net;
    net.home_does({home});
    net.woc_does(woc);
    net.arc_does({arc});
    net.misses = misses;
    const bool success = result == "success";
    EXPECT_EQ(payment.broadcast(), success ? "success: " + payment.expected : result);
    EXPECT_EQ(payment.txid, payment.expected);
    EXPECT_EQ(net.posts("/oi/submit"), 1U);
    EXPECT_EQ(net.posts("/woc/tx/raw"), requests.woc);
    EXPECT_EQ(net.posts("/arc/tx"), requests.arc);
    EXPECT_EQ(net.probes(), requests.probes);
    const WalletLock lock = qv_clasp_lock_wallet();
    EXPECT_EQ(qv_clasp_coin_records().last_broadcast_txid, success ? payment.expected : "");
    EXPECT_EQ(qv_clasp_is_spent(payment.coins[0].txid, payment.coins[0].vout), success);
    EXPECT_EQ(qv_clasp_is_pending(payment.expected, 1), success);
}

void expect_success(const std::string& what, const Turn& home, const std::vector<Turn>& woc, const Turn& arc,
                    const Requests& requests, int misses = 0) {
    expect_path(what, home, woc, arc, misses, "success", requests);
}

void expect_failure(const std::string& what, const std::vector<Turn>& woc, const Turn& arc,
                    const std::string& result, const Requests& requests, int misses = 0) {
    expect_path(what, SILENT, woc, arc, misses, result, requests);
}

}  // namespace

TEST(Broadcast, IsDoneWhenHomeTookItAndItShows) {
    for (const Turn& home :
         {HOME_TAKES, takes(R"({"status":"queued"})"), takes(R"({"ok":0})"), takes("fine"), takes("")}) {
        expect_success(home.answer.body, home, {SILENT}, SILENT, {0, 0, 1});
    }
    expect_success("it shows late", HOME_TAKES, {SILENT}, SILENT, {0, 0, 8}, 7);
    expect_success("it shows too late", HOME_TAKES, {WOC_TAKES}, SILENT, {1, 0, 9}, 8);
    expect_success("home lies", refuses(R"({"ok":true})", 200), {WOC_TAKES}, SILENT, {1, 0, 9});
}

TEST(Broadcast, ARefusalOfAKnownTransactionIsLookedInto) {
    for (const std::string answer : {"unexpected response code 500: 257: txn-already-known",
                                     "I already have it", "xmempool-conflicts"}) {
        expect_success(answer, SILENT, {takes(answer, 400)}, SILENT, {1, 0, 1});
    }
    expect_failure("a conflict with another", {refuses("txn-mempool-conflict")},
                   refuses(R"({"txStatus":"DOUBLE_SPEND_ATTEMPTED","extraInfo":"other"})", 200),
                   "error: broadcast failed: DOUBLE_SPEND_ATTEMPTED: other", {1, 1, 8});
}

TEST(Broadcast, FallsBackOnArc) {
    expect_success("busy once", SILENT, {BUSY, WOC_TAKES}, SILENT, {2, 0, 1});
    expect_success("busy twice", SILENT, {BUSY}, ARC_TAKES, {2, 1, 1});
    expect_success("an HTML page", SILENT, {PAGE}, ARC_TAKES, {1, 1, 1});
    expect_success("down", SILENT, {SILENT}, ARC_TAKES, {1, 1, 1});
    expect_success("forgotten", SILENT, {WOC_FORGETS}, ARC_TAKES, {1, 1, 9});
}

TEST(Broadcast, TellsWhyNothingWasSent) {
    const std::string failed = "error: broadcast failed: ";
    expect_failure("ARC took it and it never shows", {PAGE}, ARC_TAKES, failed + "HTTP 500", {1, 1, 8}, -1);
    expect_failure("both forget it", {WOC_FORGETS}, ARC_FORGETS,
                   "error: the network did not take that transaction. Nothing was sent.", {1, 1, 16});
    expect_failure("forgotten and refused", {WOC_FORGETS}, refuses(R"({"txStatus":"REJECTED"})", 200),
                   failed + "REJECTED", {1, 1, 8});
    expect_failure("both refuse", {refuses("64: dust\n")}, refuses("fees too low", 465),
                   failed + "HTTP 465 – fees too low", {1, 1, 0});
    expect_failure("ARC is busy", {refuses("64: dust\n")}, BUSY,
                   failed + "HTTP 429 – WhatsOnChain is rate-limiting. Wait a few seconds and try again.",
                   {1, 2, 0});
}

TEST(ArcVerdict, FollowsTheStatusTable) {
    const auto verdict = [](const std::string& body, const std::string& txid = TXID) {
        std::string error = "left over";
        return arc_verdict(body, txid, error) ? "accepted" + error : error;
    };
    for (const std::string status :
         {"RECEIVED", "STORED", "ANNOUNCED_TO_NETWORK", "REQUESTED_BY_NETWORK", "SENT_TO_NETWORK",
          "ACCEPTED_BY_NETWORK", "SEEN_ON_NETWORK", "MINED", "CONFIRMED"}) {
        EXPECT_EQ(verdict(R"({"txStatus":")" + status + R"(","extraInfo":"some text"})"), "accepted");
        EXPECT_EQ(verdict(R"({"txStatus":")" + status + R"(","extraInfo":"Missing inputs"})"),
                  "Missing inputs");
    }
    for (const std::string status : {"REJECTED", "DOUBLE_SPEND_ATTEMPTED", "SEEN_IN_ORPHAN_MEMPOOL"}) {
        const std::string head = R"({"txStatus":")" + status + "\"";
        EXPECT_EQ(verdict(head + "}"), status);
        EXPECT_EQ(verdict(head + R"(,"extraInfo":")" + status + "\"}"), status);
        EXPECT_EQ(verdict(head + R"(,"extraInfo":"Missing inputs"})", ""), status + ": Missing inputs");
    }
    const std::map<std::string, std::string> others = {
        {R"({"txStatus":"MINED","extraInfo":"missingorspent"})", "missingorspent"},
        {R"({"txStatus":"MINED","extraInfo":"MISSING INPUTS"})", "accepted"},
        {R"({"txStatus":"QUEUED","extraInfo":"later"})", "later"},
        {R"({"txStatus":"mined"})", "mined"},
        {R"({"txStatus":7,"extraInfo":null})", "broadcast did not confirm"},
        {"{}", "broadcast did not confirm"},
        {"", "bad arc response"},
        {"<html>", "<html>"},
        {R"({"txStatus":"MINED")", R"({"txStatus":"MINED")"},
        {R"({"txStatus":"MINED","txid":"short"})", "accepted"}};
    for (const auto& [body, result] : others) EXPECT_EQ(verdict(body), result) << body;
    EXPECT_EQ(verdict(R"({"txStatus":"MINED","txid":"short"})", ""), "arc did not return a txid");
    EXPECT_EQ(verdict(R"({"txStatus":"MINED","txid":")" + TXID + "\"}", ""), "accepted");
}

// Answers that other people have written down: none is taken for acceptance but those whose status says so.
TEST(ArcVerdict, ReadsWrittenDownAnswers) {
    const Json document = test_data("api_arc.json");
    std::size_t accepted = 0;
    std::size_t refused = 0;
    for (const Json& row : document["answers"]) {
        if (!json_member(row, "body").is_string()) continue;
        const std::string body = json_text(row, "body");
        Json answer;
        const bool parses = parse_json(body, answer);
        const std::string status = json_text(answer, "txStatus");
        const bool good = status == "SEEN_ON_NETWORK" || status == "ACCEPTED_BY_NETWORK" ||
                          status == "STORED" || status == "MINED";
        std::string error;
        EXPECT_EQ(arc_verdict(body, TXID, error), parses && good) << body;
        EXPECT_EQ(error.empty(), good) << body;
        ++(good ? accepted : refused);
    }
    EXPECT_GE(accepted, 5U);
    EXPECT_GE(refused, 20U);
}

TEST(MissingInputs, IsToldByThreeWordsInTheirCase) {
    for (const char* text :
         {"Missing inputs", "error: 25: missing inputs.", "bad-txns-inputs-missingorspent"}) {
        EXPECT_TRUE(qv_clasp_is_missing_inputs(text)) << text;
    }
    for (const char* text : {"", "Missing Inputs", "MISSINGORSPENT", "missing input"}) {
        EXPECT_FALSE(qv_clasp_is_missing_inputs(text)) << text;
    }
}

TEST(Broadcast, TakesTheIdFromTheAnswerOrItsOwn) {
    for (const std::string answer :
         {"TXID", "\"TXID\"", R"({"txid":"TXID"})", " \"TXID\" \r\n", "accepted", "[]", ""}) {
        expect_success(answer, SILENT, {takes(answer)}, SILENT, {1, 0, 1});
    }
    expect_success("64 characters that are no id", SILENT, {takes(std::string(64, 'z'))}, SILENT, {1, 0, 1});
}
