#include "core/round_display.h"

#include <gtest/gtest.h>

#include "records/payout_ledger.h"
#include "tests/core/fake_round.h"

namespace {

struct RoundDisplay : testing::Test, FakeRound {
    void tokens(const std::vector<TokenRow>& rows) {
        round.state.tokens = rows;
        refresh_token_list(round);
    }
};

const std::string A = token_id_of('a');
const std::string B = token_id_of('b');

}  // namespace

TEST_F(RoundDisplay, TypedTextOfFullLengthWinsOverTheBox) {
    tokens({{A, "", "", false}, {B, "", "", false}});
    selected_token = 1;
    type_origin("");
    EXPECT_EQ(selected_token_id(round), B);
    type_origin(std::string(65, 'x'));
    EXPECT_EQ(selected_token_id(round), B);
    type_origin(" \t" + std::string(66, 'x') + " \r\n");
    EXPECT_EQ(selected_token_id(round), std::string(66, 'x'));
    type_origin(std::string(200, 'x'));
    EXPECT_EQ(selected_token_id(round), std::string(159, 'x'));
    type_origin("");
    for (const int nowhere : {-1, 2}) {
        selected_token = nowhere;
        EXPECT_EQ(selected_token_id(round), "");
    }
}

TEST_F(RoundDisplay, OneStatusWorkerRunsAtATime) {
    refresh_wallet_summary(round);
    refresh_wallet_summary(round);
    EXPECT_EQ(jobs.size(), 1U);
    wallet.status = {true, true, true, "1WalletAddress", 77};
    work();
    EXPECT_EQ(wallet.status_calls, 1);
    EXPECT_EQ(texts[1004], "0.00000077 BSV");
    refresh_wallet_summary(round);
    EXPECT_EQ(jobs.size(), 1U) << "the one before has ended";
    work();

    window_exists = false;
    refresh_wallet_summary(round);
    EXPECT_TRUE(jobs.empty());
}

TEST_F(RoundDisplay, BoardLinesShowWhatEachHolderReceivedOnThisToken) {
    RoundState& state = round.state;
    state.board = board()
                      .market("alice", "3")
                      .reserve("me", "9")
                      .nowhere("nobody", "2")
                      .market_at("twin", "1", "1alice");
    state.excluded = {0, 1, 1, 0};
    append_payout(state.board.token_id, "t1", 700, "1alice", "alice", "Meadow", "payout");
    append_payout(state.board.token_id, "t2", 50, "1alice", "twin", "Meadow", "");
    append_payout(state.board.token_id, "t3", 9, "", "nobody", "Meadow", "payout");
    append_payout(A, "t4", 5000, "1alice", "alice", "Other", "payout");
    append_payout("app_fee", "t5", 1000000, "1alice", "fee", "BA fee", "app_fee");
    refresh_board(round);

    const auto line = [this](std::size_t row) {
        const BoardLine& one = lines.at(row);
        return one.holder + "|" + one.lots + "|" + one.pay_to + "|" + one.role + "|" + one.received +
               (one.excluded ? "|off" : "");
    };
    EXPECT_EQ(line(0), "alice|3|1alice|in-market|0.00000750");
    EXPECT_EQ(line(1), "me|9|-|reserve|-");
    EXPECT_EQ(line(2), "nobody|2|-|excluded|-|off");
    EXPECT_EQ(line(3), "twin|1|1alice|in-market|0.00000750");
    EXPECT_EQ(texts[CONTROL_SUMMARY],
              "Token: Meadow\r\nTotal lots: 15      In-market: 6      This wallet: 9      Excluded: 2\r\n"
              "Heads: 2      Paid out: 0.00000759 BSV");

    state.board.token_name.clear();
    refresh_board(round);
    EXPECT_EQ(texts[CONTROL_SUMMARY].substr(0, 73), "Token: " + state.board.token_id);
}
