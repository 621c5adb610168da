#include "core/round_display.h"

#include <gtest/gtest.h>

#include "records/holder_notes.h"
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

TEST_F(RoundDisplay, TheTokenBoxNamesLotsOrMinted) {
    tokens({{A, "Meadow", "12", true}, {B, "", "0", true}, {A, "Plain", "", false}});
    EXPECT_EQ(token_items, (std::vector<std::string>{"Meadow  12 lots", "(unnamed)  minted", "Plain  "}));
}

TEST_F(RoundDisplay, TheBoxKeepsATypedTokenSelectedAndFillsAShortEdit) {
    const std::tuple<std::string, int, std::string> cases[] = {
        {"", 0, A}, {B, 1, B}, {B + "9", 1, B + "9"}, {"abc", 0, A}, {token_id_of('e'), 0, token_id_of('e')}};
    for (const auto& [typed, selected, origin] : cases) {
        type_origin(typed);
        tokens({{A, "", "", false}, {B, "", "", false}});
        EXPECT_EQ(selected_token, selected) << typed;
        EXPECT_EQ(texts[CONTROL_ORIGIN], origin) << typed;
    }
    type_origin("abc");
    tokens({});
    EXPECT_EQ(selected_token, -1);
    EXPECT_EQ(texts[CONTROL_ORIGIN], "abc");
}

TEST_F(RoundDisplay, TheWalletCardPrefersPaymailThenAddress) {
    const auto shown = [this] {
        const WalletSummary summary = wallet_summary(round.wallet);
        return summary.label + " | " + summary.balance;
    };
    wallet.paymail = "me@bursaria.test";
    EXPECT_EQ(shown(), "me@bursaria.test | ...");
    wallet.paymail.clear();
    wallet.balance = 0;
    EXPECT_EQ(shown(), "1WalletAddress | 0.00000000 BSV");
    wallet.address.clear();
    EXPECT_EQ(shown(), "connected | 0.00000000 BSV");
    wallet.connected = false;
    EXPECT_EQ(shown(), "not connected | -");
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

TEST_F(RoundDisplay, AHolderWithANoteOnThisTokenIsMarked) {
    RoundState& state = round.state;
    state.board = board().market("alice", "3").reserve("me", "9").market("bob", "1");
    state.board.rows[0].pubkey = "02ab";
    write_note(state.board.token_id, "p:02ab", "alice", "3", "pays late");
    write_note(state.board.token_id, "n:me", "me", "9", "the till");
    write_note(A, "n:bob", "bob", "1", "on another token");
    refresh_board(round);
    EXPECT_EQ(lines.at(0).holder, "alice  \xc3\x82\xc2\xb7 note");
    EXPECT_EQ(lines.at(1).holder, "me  \xc3\x82\xc2\xb7 note");
    EXPECT_EQ(lines.at(2).holder, "bob");
    write_note(state.board.token_id, "p:02ab", "alice", "3", " ");
    refresh_board(round);
    EXPECT_EQ(lines.at(0).holder, "alice");
}
