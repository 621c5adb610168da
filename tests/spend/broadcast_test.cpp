#include "spend/broadcast.h"

#include <gtest/gtest.h>

#include <ostream>

#include "base/hex.h"
#include "base/text.h"
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

struct Path {
    std::string what;
    std::vector<Turn> home;
    std::vector<Turn> woc;
    std::vector<Turn> arc;
    int misses = 0;
    std::string result;  // "success" stands for the success text
    std::size_t home_posts = 1;
    std::size_t woc_posts = 0;
    std::size_t arc_posts = 0;
    std::size_t probes = 0;
};

void PrintTo(const Path& path, std::ostream* out) {
    *out << path.what;
}

const Turn SILENT = hangs_up();
const Turn HOME_REFUSES = refuses(R"({"ok":false})", 200);
const Turn WOC_TAKES = takes("\"TXID\"\n");
const Turn ARC_SEEN = takes(R"({"txid":"TXID","txStatus":"SEEN_ON_NETWORK","extraInfo":""})");
const std::string BUSY = "HTTP 429 – WhatsOnChain is rate-limiting. Wait a few seconds and try again.";
const std::string NOT_TAKEN = "error: the network did not take that transaction. Nothing was sent.";

std::vector<Path> paths() {
    return {
        {"home takes it", {takes(R"({"ok":true})")}, {SILENT}, {SILENT}, 0, "success", 1, 0, 0, 1},
        {"home says nothing about ok",
         {takes(R"({"status":"queued"})")},
         {SILENT},
         {SILENT},
         0,
         "success",
         1,
         0,
         0,
         1},
        {"home's ok is no boolean", {takes(R"({"ok":0})")}, {SILENT}, {SILENT}, 0, "success", 1, 0, 0, 1},
        {"home answers no JSON", {takes("fine")}, {SILENT}, {SILENT}, 0, "success", 1, 0, 0, 1},
        {"home takes it and it shows late", {takes("{}")}, {SILENT}, {SILENT}, 7, "success", 1, 0, 0, 8},
        {"home takes it and it shows too late",
         {takes("{}")},
         {WOC_TAKES},
         {SILENT},
         8,
         "success",
         1,
         1,
         0,
         9},
        {"home lies", {refuses(R"({"ok":true})", 200)}, {WOC_TAKES}, {SILENT}, 0, "success", 1, 1, 0, 9},
        {"home refuses", {HOME_REFUSES}, {WOC_TAKES}, {SILENT}, 0, "success", 1, 1, 0, 1},
        {"home is down", {SILENT}, {WOC_TAKES}, {SILENT}, 0, "success", 1, 1, 0, 1},
        {"home is busy", {refuses("", 429)}, {WOC_TAKES}, {SILENT}, 0, "success", 1, 1, 0, 1},
        {"a bare txid", {SILENT}, {takes("TXID")}, {SILENT}, 0, "success", 1, 1, 0, 1},
        {"a txid in an object", {SILENT}, {takes(R"({"txid":"TXID"})")}, {SILENT}, 0, "success", 1, 1, 0, 1},
        {"quotes, blanks, line ends",
         {SILENT},
         {takes(" \"TXID\" \r\n")},
         {SILENT},
         0,
         "success",
         1,
         1,
         0,
         1},
        {"an answer without an id", {SILENT}, {takes("accepted")}, {SILENT}, 0, "success", 1, 1, 0, 1},
        {"64 characters that are no id",
         {SILENT},
         {takes(std::string(64, 'z'))},
         {SILENT},
         0,
         "success",
         1,
         1,
         0,
         1},
        {"woc is busy once", {SILENT}, {refuses("", 429), WOC_TAKES}, {SILENT}, 0, "success", 1, 2, 0, 1},
        {"woc is busy twice, ARC takes it",
         {SILENT},
         {refuses("", 429)},
         {ARC_SEEN},
         0,
         "success",
         1,
         2,
         1,
         1},
        {"woc refuses a transaction it has",
         {SILENT},
         {takes("unexpected response code 500: 257: txn-already-known", 400)},
         {SILENT},
         0,
         "success",
         1,
         1,
         0,
         1},
        {"woc has it already",
         {SILENT},
         {takes("I already have it", 400)},
         {SILENT},
         0,
         "success",
         1,
         1,
         0,
         1},
        {"a longer word that holds the sign",
         {SILENT},
         {takes("xmempool-conflicts", 400)},
         {SILENT},
         0,
         "success",
         1,
         1,
         0,
         1},
        {"a conflict with another, ARC agrees",
         {SILENT},
         {refuses("txn-mempool-conflict")},
         {refuses(R"({"txStatus":"DOUBLE_SPEND_ATTEMPTED","extraInfo":"competing"})", 200)},
         0,
         "error: broadcast failed: DOUBLE_SPEND_ATTEMPTED: competing",
         1,
         1,
         1,
         8},
        {"woc has an HTML page, ARC has it",
         {SILENT},
         {refuses("<html>", 500)},
         {ARC_SEEN},
         0,
         "success",
         1,
         1,
         1,
         1},
        {"woc is down, ARC has it", {SILENT}, {SILENT}, {ARC_SEEN}, 0, "success", 1, 1, 1, 1},
        {"ARC takes it and it never shows",
         {SILENT},
         {refuses("<html>", 500)},
         {ARC_SEEN},
         -1,
         "error: broadcast failed: HTTP 500",
         1,
         1,
         1,
         8},
        {"woc forgets it, ARC has it",
         {SILENT},
         {refuses("\"TXID\"", 200)},
         {ARC_SEEN},
         0,
         "success",
         1,
         1,
         1,
         9},
        {"woc and ARC forget it",
         {SILENT},
         {refuses("\"TXID\"", 200)},
         {refuses(R"({"txStatus":"SEEN_ON_NETWORK"})", 200)},
         0,
         NOT_TAKEN,
         1,
         1,
         1,
         16},
        {"woc forgets it, ARC refuses",
         {SILENT},
         {refuses("\"TXID\"", 200)},
         {refuses(R"({"txStatus":"REJECTED","extraInfo":"REJECTED"})", 200)},
         0,
         "error: broadcast failed: REJECTED",
         1,
         1,
         1,
         8},
        {"both refuse",
         {HOME_REFUSES},
         {refuses("64: dust\n")},
         {refuses("fees too low", 465)},
         0,
         "error: broadcast failed: HTTP 465 – fees too low",
         1,
         1,
         1,
         0},
        {"ARC is busy",
         {SILENT},
         {refuses("64: dust\n")},
         {refuses("", 429)},
         0,
         "error: broadcast failed: " + BUSY,
         1,
         1,
         2,
         0},
    };
}

}  // namespace

class BroadcastPaths : public testing::TestWithParam<Path> {};

TEST_P(BroadcastPaths, EndsAsToldWithTheRequestsTold) {
    const Path& path = GetParam();
    ReadyPayment payment;
    PlayNetwork& net = payment.net;
    net.home_does(path.home);
    net.woc_does(path.woc);
    net.arc_does(path.arc);
    net.misses = path.misses;

    const std::string result = payment.broadcast();

    const bool success = path.result == "success";
    EXPECT_EQ(payment.txid, payment.expected);
    EXPECT_EQ(result, success ? "success: " + payment.expected : path.result);
    EXPECT_EQ(net.posts("/oi/submit"), path.home_posts);
    EXPECT_EQ(net.posts("/woc/tx/raw"), path.woc_posts);
    EXPECT_EQ(net.posts("/arc/tx"), path.arc_posts);
    EXPECT_EQ(net.probes(), path.probes);

    const WalletLock lock = qv_clasp_lock_wallet();
    const QvClaspCoinRecords& records = qv_clasp_coin_records();
    EXPECT_EQ(records.last_broadcast_txid, success ? payment.expected : "");
    EXPECT_EQ(qv_clasp_is_spent(payment.coins[0].txid, payment.coins[0].vout), success);
    EXPECT_EQ(qv_clasp_is_pending(payment.expected, 1), success);
}

INSTANTIATE_TEST_SUITE_P(All, BroadcastPaths, testing::ValuesIn(paths()), [](const auto& row) {
    std::string name;
    for (const char c : row.param.what) name += is_ascii_alnum(c) ? c : '_';
    return name;
});

TEST(Broadcast, WaitsBetweenProbesAndNotAfterTheLast) {
    ReadyPayment payment;
    payment.net.home_does({takes("{}")});
    payment.net.woc_does({SILENT});
    payment.net.arc_does({SILENT});
    payment.net.misses = -1;
    payment.broadcast();
    EXPECT_EQ(FakeClock::sleeps(), std::vector<std::int64_t>(7, 700));
}

TEST(Broadcast, HandsTheSameTransactionToEachTarget) {
    ReadyPayment payment;
    payment.net.home_does({refuses("{}", 200)});
    payment.net.woc_does({refuses("no")});
    EXPECT_EQ(payment.broadcast(), "success: " + payment.expected);
    const std::vector<sandbox::Transaction> payments = payment.net.payments();
    ASSERT_EQ(payments.size(), 1U);
    EXPECT_EQ(payments[0].txid, payment.expected);
    EXPECT_EQ(payments[0].outputs[0].sats, 1000);
}

// The submit to the family's host is a courtesy: two seconds, then the chain service. Real time passes here.
TEST(Broadcast, ASlowHomeHoldsNothingUp) {
    ReadyPayment payment;
    payment.net.home_does({{false, {.body = R"({"ok":true})", .delay_ms = 3500}}});
    EXPECT_EQ(payment.broadcast(), "success: " + payment.expected);
    EXPECT_EQ(payment.net.posts("/woc/tx/raw"), 1U);
    EXPECT_EQ(payment.net.probes(), 1U);
}

TEST(Broadcast, ACoinWithoutATxidIsNotSent) {
    ReadyPayment payment;
    payment.coins[0].txid = "?";
    EXPECT_EQ(payment.broadcast(), "error: serialize failed.");
    EXPECT_EQ(payment.txid, "");
    EXPECT_EQ(payment.net.posts(""), 0U);
}

TEST(ArcVerdict, FollowsTheStatusTable) {
    struct Case {
        std::string body;
        std::string txid;
        bool accepted;
        std::string error;
    };
    std::vector<Case> cases = {
        {R"({"txStatus":"MINED","extraInfo":"some text"})", TXID, true, ""},
        {R"({"txStatus":"ANNOUNCED_TO_NETWORK","extraInfo":"Missing inputs"})", TXID, false,
         "Missing inputs"},
        {R"({"txStatus":"MINED","extraInfo":"missingorspent"})", TXID, false, "missingorspent"},
        {R"({"txStatus":"MINED","extraInfo":"MISSING INPUTS"})", TXID, true, ""},
        {R"({"txStatus":"REJECTED"})", TXID, false, "REJECTED"},
        {R"({"txStatus":"REJECTED","extraInfo":"REJECTED"})", TXID, false, "REJECTED"},
        {R"({"txStatus":"REJECTED","extraInfo":"Missing inputs"})", TXID, false, "REJECTED: Missing inputs"},
        {R"({"txStatus":"SEEN_IN_ORPHAN_MEMPOOL","extraInfo":"x"})", "", false, "SEEN_IN_ORPHAN_MEMPOOL: x"},
        {R"({"txStatus":"QUEUED","extraInfo":"later"})", TXID, false, "later"},
        {R"({"txStatus":"QUEUED"})", TXID, false, "QUEUED"},
        {R"({"txStatus":"mined"})", TXID, false, "mined"},
        {R"({"txStatus":7,"extraInfo":null})", TXID, false, "broadcast did not confirm"},
        {"{}", TXID, false, "broadcast did not confirm"},
        {"[]", TXID, false, "broadcast did not confirm"},
        {"null", TXID, false, "broadcast did not confirm"},
        {R"({"txStatus":"MINED"})", "", false, "arc did not return a txid"},
        {R"({"txStatus":"MINED","txid":"short"})", "", false, "arc did not return a txid"},
        {R"({"txStatus":"MINED","txid":"short"})", TXID, true, ""},
        {R"({"txStatus":"MINED","txid":")" + TXID + "\"}", "", true, ""},
        {"", TXID, false, "bad arc response"},
        {"<html>bad gateway</html>", TXID, false, "<html>bad gateway</html>"},
        {R"({"txStatus":"MINED")", TXID, false, R"({"txStatus":"MINED")"},
    };
    for (const std::string status :
         {"RECEIVED", "STORED", "ANNOUNCED_TO_NETWORK", "REQUESTED_BY_NETWORK", "SENT_TO_NETWORK",
          "ACCEPTED_BY_NETWORK", "SEEN_ON_NETWORK", "MINED", "CONFIRMED"}) {
        cases.push_back({R"({"txStatus":")" + status + "\"}", TXID, true, ""});
    }
    for (const Case& row : cases) {
        std::string error = "left over";
        EXPECT_EQ(arc_verdict(row.body, row.txid, error), row.accepted) << row.body;
        EXPECT_EQ(error, row.error) << row.body;
    }
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
