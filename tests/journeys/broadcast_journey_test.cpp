// Each road of one payment onto the network, and runs that are cut short: what the user is told, what the
// ledger holds and what the chain holds always belong together, and nobody is paid twice.
#include "base/text.h"
#include "tests/journeys/journey.h"
#include "wallet/coin_records.h"

using namespace sandbox;

namespace {

struct Order {
    const char* service;
    const char* failure;
    const char* path_part = "";
    int times = -1;
};
struct Road {
    const char* name;
    std::vector<Order> orders;
    bool paid;
    const char* text;            // part of the failure's text
    std::size_t home, woc, arc;  // broadcasts that each service sees
};

const std::vector<Road> ROADS{
    {"all is well", {}, true, "", 1, 0, 0},
    {"the home host is down", {{"home", "down"}}, true, "", 1, 1, 0},
    {"the home host refuses", {{"home", "missing_inputs"}}, true, "", 1, 1, 0},
    {"the home host takes it and nobody keeps it", {{"home", "drop_after_accept"}}, true, "", 1, 1, 0},
    {"the home host takes it and says that it failed", {{"home", "accept_silently"}}, true, "", 1, 1, 0},
    {"only the third service is well", {{"home", "down"}, {"woc", "html500", "POST"}}, true, "", 1, 1, 1},
    {"the chain service is busy once", {{"home", "down"}, {"woc", "429", "POST", 1}}, true, "", 1, 2, 0},
    {"the chain service takes it and drops it once",
     {{"home", "down"}, {"woc", "drop_after_accept", "", 1}},
     true,
     "",
     1,
     1,
     1},
    {"taken, and answered as a failure by everybody",
     {{"home", "accept_silently"}, {"woc", "accept_silently"}, {"arc", "accept_silently"}},
     true,
     "",
     1,
     1,
     1},
    {"a conflict everywhere, once",
     {{"home", "conflict", "", 1}, {"woc", "conflict", "", 1}, {"arc", "conflict", "", 1}},
     true,
     "",
     2,
     1,
     1},
    {"missing inputs, and an index that still lists the coins",
     {{"home", "missing_inputs", "", 1}, {"woc", "missing_inputs", "", 1}, {"arc", "missing_inputs", "", 1}},
     true,
     "",
     2,
     1,
     1},
    {"nobody can be reached",
     {{"home", "down"}, {"woc", "down", "POST"}, {"arc", "down"}},
     false,
     "error: broadcast failed: ",
     1,
     1,
     1},
    {"everybody takes it and drops it",
     {{"home", "drop_after_accept"}, {"woc", "drop_after_accept"}, {"arc", "drop_after_accept"}},
     false,
     "error: the network did not take that transaction. Nothing was sent.",
     1,
     1,
     1},
};

class BroadcastJourney : public Journey, public testing::WithParamInterface<Road> {};

TEST_P(BroadcastJourney, PaysOnceOrNotAtAll) {
    const Road& road = GetParam();
    open(2, 5);
    connect();
    const std::string dest = world().holders[0].keys[0].address;
    const std::string next_dest = world().holders[1].keys[0].address;
    for (const Order& order : road.orders) fail(order.service, order.failure, order.path_part, order.times);
    const std::int64_t before = wallet_sats();
    const std::size_t mark = chain().txids().size();
    box->clear_requests();
    const std::string result = qv_clasp_send(dest, 12'345, "");

    EXPECT_EQ(result.starts_with("success: "), road.paid) << result;
    if (!road.paid) {
        EXPECT_TRUE(contains(result, road.text)) << result;
    }
    EXPECT_EQ(received(dest), road.paid ? 12'345 : 0);
    EXPECT_EQ(box->count("POST", "/oi/submit"), road.home);
    EXPECT_EQ(box->count("POST", "/tx/raw"), road.woc);
    EXPECT_EQ(box->count("POST", "/v1/tx"), road.arc);
    std::int64_t fees = 0;
    for (const Transaction& tx : transactions_since(mark)) fees += miner_fee(tx);
    EXPECT_EQ(wallet_sats(), before - fees - (road.paid ? 12'345 : 0));
    if (road.paid) {
        EXPECT_EQ(result, "success: " + chain().txids().back());
    }

    // The wallet goes on from there, with services that are well.
    box->faults().clear();
    const std::string next = qv_clasp_send(next_dest, 999, "");
    EXPECT_TRUE(next.starts_with("success: ")) << next;
    EXPECT_EQ(received(next_dest), 999);
    EXPECT_EQ(received(dest), road.paid ? 12'345 : 0);
}

std::string road_name(const testing::TestParamInfo<Road>& info) {
    std::string name;
    for (const char* at = info.param.name; *at != 0; ++at)
        if (std::isalnum(static_cast<unsigned char>(*at))) name += *at;
    return name;
}
INSTANTIATE_TEST_SUITE_P(Roads, BroadcastJourney, testing::ValuesIn(ROADS), road_name);

class CutShort : public Journey {};

TEST_F(CutShort, ARunStopsAtTheFirstFailureAndTellsSo) {
    open(9, 4);
    connect();
    const RoundState frozen = frozen_round("0.05");
    const std::vector<PreviewRow> due = due_rows(frozen);
    ASSERT_GE(due.size(), 5U);
    constexpr std::size_t PAID = 3;
    RoundWallet wallet = library_wallet();
    std::size_t sends = 0;
    wallet.send = [&](const std::string& dest, std::int64_t sats, const std::string& memo) {
        if (sends++ == PAID + 1)
            for (const char* service : {"home", "woc", "arc"}) fail(service, "down", "POST");
        return qv_clasp_send(dest, sats, memo);
    };
    const std::size_t mark = chain().txids().size();
    const std::unique_ptr<RoundMessage> message = run_pay(job_of(frozen), wallet);
    EXPECT_TRUE(message->stopped);
    const std::string& text = *message->text;
    EXPECT_TRUE(text.starts_with("Paid 3, stopped on error.\nApp fee 0.01 BSV to ")) << text;
    EXPECT_TRUE(contains(text, "\n" + due[PAID].name + " error: broadcast failed: ")) << text;
    EXPECT_EQ(transactions_since(mark).size(), PAID + 1);
    EXPECT_EQ(read_payout_entries().size(), PAID + 1);
    EXPECT_EQ(extract_txids(text).size(), PAID + 1);
    for (std::size_t i = 0; i < due.size(); ++i) EXPECT_EQ(received(due[i].dest), i < PAID ? due[i].sats : 0);

    // A new round lists everybody again, and the ledger tells who has been paid.
    box->faults().clear();
    const RoundState again = frozen_round("0.05");
    EXPECT_EQ(again.preview.size(), frozen.preview.size());
    EXPECT_EQ(received_by(world().token_id, due[0].dest), due[0].sats);
    EXPECT_EQ(received_by(world().token_id, due[PAID].dest), 0);
}

TEST_F(CutShort, AFeeThatFailsPaysNobody) {
    open(4, 4);
    connect();
    const RoundState frozen = frozen_round("0.05");
    for (const char* service : {"home", "woc", "arc"}) fail(service, "down", "POST");
    const std::size_t mark = chain().txids().size();
    const std::unique_ptr<RoundMessage> message = run_pay(job_of(frozen), library_wallet());
    EXPECT_TRUE(message->stopped);
    EXPECT_TRUE(message->text->starts_with("App fee failed. Holders were not paid.\nerror: "))
        << *message->text;
    EXPECT_TRUE(transactions_since(mark).empty());
    EXPECT_TRUE(read_payout_entries().empty());
}

TEST_F(CutShort, ARestartBetweenTwoSendsKeepsChangeAndSpentCoins) {
    open(2, 6);
    connect();
    const std::string dest = world().holders[0].keys[0].address;
    ASSERT_TRUE(qv_clasp_send(dest, 1'000, "").starts_with("success"));
    const std::string first = chain().txids().back();
    restart();
    ASSERT_TRUE(qv_clasp_is_connected());
    box->set_index_lag(1);  // the lists still show what the first payment spent, and not its change
    const std::string result = qv_clasp_send(dest, 2'000, "");
    ASSERT_TRUE(result.starts_with("success")) << result;
    EXPECT_EQ(chain().find(chain().txids().back())->inputs[0].txid, first);
    EXPECT_EQ(received(dest), 3'000);
    const std::string scope = world().main_wallet.id;
    EXPECT_EQ(home.read_json("/ord_snap/" + scope + "_change.json")["coins"].size(), 1U);
    EXPECT_EQ(home.read_json("/ord_snap/" + scope + "_spent.json")["outpoints"].size(), 4U);
}

TEST_F(CutShort, AWalletThatIsSwitchedDuringASnapshotEndsIt) {
    open(6, 2);
    connect();
    fail("ordinals", "slow", "/holders", 1, 1'000);
    HolderBoard board;
    {
        const std::jthread other = when_asked("/holders", [this] { switch_wallet(); });
        EXPECT_EQ(qv_clasp_snapshot_holders(world().token_id, board), "error: wallet changed.");
    }
    EXPECT_FALSE(board.loaded);
    EXPECT_EQ(qv_clasp_snapshot_holders(world().token_id, board),
              "error: this wallet does not hold that token and did not mint it.");
}

TEST_F(CutShort, AWalletThatIsSwitchedDuringTheReadsOfASendPaysNothing) {
    open(2, 2);
    connect();
    const std::string current = world().main_wallet.receive(3).address;
    fail("woc", "slow", "/address/" + current, 1, 1'000);
    const std::size_t mark = chain().txids().size();
    {
        const std::jthread other = when_asked("/address/" + current, [this] { switch_wallet(); });
        EXPECT_EQ(qv_clasp_send(world().holders[0].keys[0].address, 1'000, ""), "error: wallet changed.");
    }
    EXPECT_TRUE(transactions_since(mark).empty());
    EXPECT_FALSE(home.exists("/ord_snap/" + world().other_wallet.id + "_spent.json"));
}

TEST_F(CutShort, AnUnbindDuringASweepLeavesNoTokens) {
    open(4, 2);
    connect();
    fail("ordinals", "slow", "/txos/address/", 1, 1'000);
    std::vector<TokenRow> tokens;
    {
        const std::jthread other =
            when_asked("/txos/address/", [] { EXPECT_EQ(qv_clasp_unbind(), "success"); });
        EXPECT_EQ(qv_clasp_list_tokens(tokens, true), "error: no Clasp wallet.");
    }
    EXPECT_TRUE(tokens.empty());
    EXPECT_FALSE(qv_clasp_is_connected());
    EXPECT_TRUE(file_exists(world().main_wallet.document));
}

}  // namespace
