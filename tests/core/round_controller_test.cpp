#include "core/round_controller.h"

#include <gtest/gtest.h>

#include "base/settings.h"
#include "base/text.h"
#include "records/payout_ledger.h"
#include "tests/core/fake_round.h"

namespace {

struct RoundController : testing::Test, FakeRound {
    RoundState& state = round.state;

    void deliver(unsigned number, std::optional<std::string> text) {
        RoundMessage message;
        message.number = number;
        message.text = std::move(text);
        on_message(round, message);
    }
    void expect_no_frozen_list() {
        EXPECT_TRUE(state.preview.empty());
        EXPECT_EQ(state.frozen_token_id, "");
        EXPECT_EQ(state.frozen_pot + state.frozen_fee_estimate + state.frozen_remainder, 0);
        EXPECT_EQ(state.frozen_skips, 0);
        EXPECT_FALSE(pay_enabled());
    }
};

const std::vector<int> BUSY_CONTROLS = {1001, 1002, 1006, 1008, 1012, 1013, 1021, 1022, 1024};
const HolderBoard TWO_HOLDERS = board().market("alice", "3").reserve("me", "10").market("bob", "1");

}  // namespace

TEST_F(RoundController, GuardsAnswerInTheStatusLine) {
    on_connect(round);
    EXPECT_EQ(status(), "Already connected. Unbind to pick another wallet.");
    EXPECT_TRUE(jobs.empty());

    wallet.connected = false;
    on_load_tokens(round);
    EXPECT_EQ(status(), "Connect a Clasp wallet first.");
    EXPECT_TRUE(jobs.empty());

    wallet.connected = true;
    type_origin(token_id_of('c'));
    on_snapshot(round);
    ASSERT_EQ(jobs.size(), 1U);
    for (void (*action)(Round&) : {on_connect, on_load_tokens, on_snapshot}) {
        set_status(round, "x", true);
        action(round);
        EXPECT_EQ(status(), "Already working...");
        EXPECT_FALSE(dots_run);
    }
    on_pay(round);
    EXPECT_EQ(jobs.size(), 1U);
    EXPECT_TRUE(messages.empty()) << "Pay alone answers nothing";
}

TEST_F(RoundController, TheBusyStateKeepsOnlyThePressedButtonAlive) {
    type_origin(token_id_of('c'));
    on_snapshot(round);
    for (const int control : BUSY_CONTROLS) EXPECT_EQ(enabled[control], control == 1008) << control;
    EXPECT_EQ(texts[1008], "Wait...");
    work();
    for (const int control : BUSY_CONTROLS) EXPECT_EQ(enabled[control], control != 1013) << control;
    EXPECT_EQ(texts[1008], "Snapshot");
    EXPECT_EQ(state.busy_control, 0);
}

TEST_F(RoundController, ASnapshotDropsTheFrozenListWhenPressedAndClearsExclusionsWhenDone) {
    freeze(TWO_HOLDERS, "1");
    on_set_excluded(round, 2, true);
    on_preview(round);
    ASSERT_TRUE(pay_enabled());
    on_snapshot(round);
    expect_no_frozen_list();
    EXPECT_EQ(state.excluded[2], 1) << "kept until the result comes";
    state.selected_row = 1;
    work();
    EXPECT_EQ(state.excluded, (std::vector<std::uint8_t>{0, 0, 0}));
    EXPECT_EQ(state.selected_row, -1);
    EXPECT_EQ(status(), "Snapshot ready. Enter a BSV amount and Preview.");
    EXPECT_EQ(lines.size(), 3U);
}

TEST_F(RoundController, AFailedSnapshotEmptiesTheBoardButNotTheSummaryPane) {
    freeze(TWO_HOLDERS, "1");
    const std::string pane = texts[CONTROL_SUMMARY];
    wallet.snapshot_result = "error: no such token";
    on_snapshot(round);
    work();
    EXPECT_EQ(status(), "error: no such token");
    EXPECT_EQ(state.board.token_id, "");
    EXPECT_FALSE(state.board.loaded);
    EXPECT_TRUE(state.board.rows.empty() && state.excluded.empty() && lines.empty());
    EXPECT_EQ(texts[CONTROL_SUMMARY], pane);
    on_preview(round);
    EXPECT_EQ(messages.back().text, "Snapshot the board first.");
}

TEST_F(RoundController, APreviewFreezesOrTellsWhyNot) {
    // The edit is read up to its 63rd character.
    freeze(TWO_HOLDERS, "0.001" + std::string(58, '0') + "oops");
    EXPECT_EQ(state.frozen_pot, 100'000);
    EXPECT_TRUE(pay_enabled());
    EXPECT_EQ(preview_text.substr(0, 16), "Dividend preview");
    EXPECT_EQ(status(), "Preview frozen. Pay sends that list - Snapshot again for a new round.");
    EXPECT_TRUE(messages.empty());
    on_load_tokens(round);
    EXPECT_FALSE(pay_enabled());
    work_until_idle();
    EXPECT_TRUE(pay_enabled()) << "the list outlives a load of tokens";

    type_amount("nonsense");
    expect_no_frozen_list();
    const std::string before = status();
    on_preview(round);
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].title, "Preview");
    EXPECT_EQ(messages[0].text, "Enter how much BSV to pay as a dividend (e.g. 0.01).");
    EXPECT_EQ(status(), before);
}

TEST_F(RoundController, OnlySkipsNeverEnablePayNotEvenBehindAnotherAction) {
    freeze(TWO_HOLDERS, "0.00000005");
    EXPECT_EQ(state.preview.size(), 2U);
    EXPECT_FALSE(pay_enabled());
    EXPECT_EQ(messages.back().title, "Preview");
    on_load_tokens(round);
    work_until_idle();
    EXPECT_FALSE(pay_enabled());
}

TEST_F(RoundController, WhatChangesTheRoundDropsTheFrozenList) {
    freeze(TWO_HOLDERS, "1");
    const std::string line = status();
    on_amount_changed(round);
    expect_no_frozen_list();
    EXPECT_EQ(status(), line);

    on_preview(round);
    on_token_selection_changed(round);
    expect_no_frozen_list();

    on_preview(round);
    on_set_excluded(round, 0, true);
    expect_no_frozen_list();
    EXPECT_EQ(status(), "Excluded alice.");
    EXPECT_EQ(lines[0].role, "excluded");
    on_set_excluded(round, 0, false);
    EXPECT_EQ(status(), "Included alice.");
    EXPECT_EQ(lines[0].role, "in-market");
}

TEST_F(RoundController, ExcludingIgnoresReserveRowsAndRowsThatAreNotThere) {
    freeze(TWO_HOLDERS, "1");
    for (const int row : {-1, 1, 3, 1000}) on_set_excluded(round, row, true);
    EXPECT_TRUE(pay_enabled());
    EXPECT_EQ(state.excluded, (std::vector<std::uint8_t>{0, 0, 0}));

    state.excluded.assign(1, 1);
    on_set_excluded(round, 2, true);
    EXPECT_EQ(state.excluded, (std::vector<std::uint8_t>{0, 0, 1})) << "flags of another size are cleared";
}

TEST_F(RoundController, APayIsAskedForSentAndDropped) {
    freeze(TWO_HOLDERS, "0.0004");
    wallet.status_calls = 0;
    on_pay(round);
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].title, "Pay");
    EXPECT_TRUE(messages[0].confirm);
    EXPECT_EQ(messages[0].primary_label, "Pay");
    EXPECT_EQ(messages[0].text.substr(0, 25), "Pay this frozen snapshot?");
    EXPECT_EQ(status(), "Paying .");
    EXPECT_EQ(state.busy_control, 1013);
    EXPECT_TRUE(wallet.sends.empty());
    work();
    const std::vector<FakeSend> sends = {
        {settings().fee_address, 1000000, ""}, {"1alice", 30000, ""}, {"1bob", 10000, ""}};
    EXPECT_EQ(wallet.sends, sends);
    expect_no_frozen_list();
    EXPECT_FALSE(state.busy);
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_EQ(messages[1].title, "Pay");
    EXPECT_EQ(messages[1].txids.size(), 3U);
    EXPECT_EQ(messages[1].text, status());
    EXPECT_EQ(status().substr(0, 8), "Paid 2.\n");
    EXPECT_EQ(lines[0].received, "0.00030000");
    EXPECT_EQ(lines[1].received, "-");
    EXPECT_NE(texts[CONTROL_SUMMARY].find("Paid out: 0.00040000 BSV"), std::string::npos);
    EXPECT_EQ(history_reloads, 1);
    work();
    EXPECT_EQ(wallet.status_calls, 1) << "the summary asks for a new balance";

    on_pay(round);
    EXPECT_EQ(messages.size(), 2U);
    EXPECT_TRUE(jobs.empty());
    EXPECT_EQ(wallet.sends.size(), 3U);
}

TEST_F(RoundController, AStoppedPayDropsTheListToo) {
    freeze(TWO_HOLDERS, "0.0004");
    wallet.send_results = {"error: no coins"};
    on_pay(round);
    work();
    expect_no_frozen_list();
    EXPECT_EQ(status(), "App fee failed. Holders were not paid.\nerror: no coins");

    deliver(WM_APP_PAY, "Paid 57, stopped on error.\nHTTP 500 \xE2\x80\x93 caf\xC3");
    EXPECT_EQ(utf16_from_utf8(messages[2].text), u"Paid 57, stopped on error.\nHTTP 500 \u2013 caf\uFFFD");

    deliver(WM_APP_PAY, std::nullopt);
    EXPECT_EQ(status(), "Pay finished.");
    EXPECT_EQ(messages.size(), 3U) << "no window without a text";
}

TEST_F(RoundController, ACancelledPayChangesNothing) {
    freeze(TWO_HOLDERS, "0.0004");
    const std::string line = status();
    confirm_answer = false;
    on_pay(round);
    EXPECT_TRUE(pay_enabled());
    EXPECT_EQ(state.preview.size(), 2U);
    EXPECT_EQ(status(), line);
    EXPECT_TRUE(jobs.empty());
}

TEST_F(RoundController, AListDroppedWhileTheQuestionStandsIsNotPaid) {
    freeze(TWO_HOLDERS, "0.0004");
    while_asking = [this] { invalidate_preview(round); };
    on_pay(round);
    EXPECT_TRUE(jobs.empty());
    EXPECT_FALSE(state.busy);
}

TEST_F(RoundController, UnbindEmptiesTheRoundButNotTheEdits) {
    wallet.tokens = {{TWO_HOLDERS.token_id, "Meadow", "10", false}};
    on_load_tokens(round);
    work_until_idle();
    freeze(TWO_HOLDERS, "1");
    const std::string pane = texts[CONTROL_SUMMARY];
    on_unbind(round);
    expect_no_frozen_list();
    EXPECT_TRUE(state.board.rows.empty() && state.excluded.empty() && state.tokens.empty());
    EXPECT_TRUE(token_items.empty() && lines.empty());
    EXPECT_EQ(texts[1001], "Connect");
    EXPECT_EQ(texts[1003], "not connected");
    EXPECT_EQ(texts[CONTROL_AMOUNT], "1");
    EXPECT_EQ(texts[CONTROL_ORIGIN], TWO_HOLDERS.token_id);
    EXPECT_EQ(texts[CONTROL_SUMMARY], pane);
    EXPECT_EQ(status(), "Unbound. Connect again to pick a wallet in Clasp.");
}

TEST_F(RoundController, LogLinesReachTheStatusLineUnlessEmpty) {
    const TextSink sink = status_line_sink(round.workers);
    sink("");
    EXPECT_TRUE(posted.empty());
    set_status(round, "Paying", true);
    sink("Broadcast refused, trying again");
    work();
    EXPECT_EQ(status(), "Broadcast refused, trying again");
    EXPECT_FALSE(dots_run);
}
