// One dividend after another, with nothing going wrong.
#include <algorithm>
#include <sstream>

#include "console/console_window.h"
#include "console/message_queue.h"
#include "core/round_controller.h"
#include "tests/journeys/journey.h"

using namespace sandbox;

namespace {

// A round as the window drives it, with nobody at the screen.
struct DrivenRound {
    DrivenRound() {
        window.assume_yes = true;
        round.window = round_window_of(window);
        round.wallet = library_wallet();
        round.workers = queue.workers();
    }
    ~DrivenRound() {
        finish();
        queue.join_workers();
    }

    void finish() {
        while (round.state.busy || *round.status_worker_runs != 0) {
            // A status worker posts first and ends a moment later.
            const std::unique_ptr<RoundMessage> message = queue.wait(20);
            if (!message) continue;
            if (message->number == WM_APP_PAY) stopped = message->stopped;
            on_message(round, *message);
        }
    }

    std::istringstream in;
    std::ostringstream out;
    std::ostringstream err;
    ConsoleWindow window{ConsoleStreams{in, out, err}};
    MessageQueue queue;
    Round round;
    bool stopped = false;
};

class PayRunJourney : public Journey {
 protected:
    void expect_board_of_the_world(const HolderBoard& board) {
        EXPECT_TRUE(board.loaded);
        EXPECT_EQ(board.token_name, world().token_name);
        EXPECT_EQ(board.total_lots, world().total_lots);
        EXPECT_EQ(board.reserve_lots, world().reserve_lots);
        EXPECT_EQ(board.in_market_lots, world().in_market_lots);
        ASSERT_EQ(board.rows.size(), world().holders.size());
        for (std::size_t i = 0; i < board.rows.size(); ++i) {
            const Holder& holder = world().holders[i];
            const HolderRow& row = board.rows[i];
            EXPECT_EQ(row.who, holder.who) << i << " " << holder.kind;
            EXPECT_EQ(row.dest, holder.dest) << holder.who;
            EXPECT_EQ(row.pubkey, holder.pubkey) << holder.who;
            EXPECT_EQ(row.lots, holder.lots) << holder.who;
            EXPECT_EQ(row.reserve, holder.kind == "reserve") << holder.who;
        }
    }

    // The transactions since the mark are the fee and the due rows, in order, each with its payment first and
    // change to the wallet behind it; the ledger's new entries say the same.
    void expect_paid(const RoundState& frozen, std::size_t mark, std::size_t ledger_mark) {
        std::vector<PreviewRow> payments{
            {settings().fee_handle, settings().fee_address, "", 1'000'000, false}};
        for (const PreviewRow& row : due_rows(frozen)) payments.push_back(row);
        const std::vector<Transaction> sent = transactions_since(mark);
        std::vector<PayoutEntry> ledger = read_payout_entries();
        ASSERT_EQ(sent.size(), payments.size());
        ASSERT_EQ(ledger.size(), ledger_mark + payments.size());
        const std::string change_address =
            world().main_wallet.receive(world().main_wallet.receive_index).address;
        for (std::size_t i = 0; i < sent.size(); ++i) {
            ASSERT_EQ(sent[i].outputs.size(), 2U) << i;
            EXPECT_EQ(sent[i].outputs[0].sats, payments[i].sats);
            EXPECT_EQ(address_of(*script_owner(sent[i].outputs[0].script)), payments[i].dest);
            EXPECT_EQ(address_of(*script_owner(sent[i].outputs[1].script)), change_address);
            const PayoutEntry& entry = ledger[ledger_mark + i];
            EXPECT_EQ(entry.txid, sent[i].txid);
            EXPECT_EQ(entry.sats, payments[i].sats);
            EXPECT_EQ(entry.dest, payments[i].dest);
            EXPECT_EQ(entry.name, payments[i].name);
            EXPECT_EQ(entry.token_id, i == 0 ? "app_fee" : world().token_id);
            if (i > 0) {
                EXPECT_EQ(sent[i].inputs[0].txid, sent[i - 1].txid) << "not the change before it";
            }
        }
    }

    std::int64_t spent_since(std::size_t mark) {
        std::int64_t sats = 0;
        for (const Transaction& tx : transactions_since(mark)) sats += tx.outputs[0].sats + miner_fee(tx);
        return sats;
    }
};

TEST_F(PayRunJourney, TwoDividendsFromConnectToTheLastSatoshi) {
    open(14, 3);
    DrivenRound driven;
    Round& round = driven.round;
    EXPECT_FALSE(qv_clasp_is_connected());
    on_connect(round);
    driven.finish();
    ASSERT_TRUE(qv_clasp_is_connected()) << driven.window.status;
    EXPECT_EQ(qv_clasp_active_wallet_id(), world().main_wallet.id);
    ASSERT_EQ(round.state.tokens.size(), 1U) << driven.window.status;
    EXPECT_EQ(round.state.tokens[0].token_id, world().token_id);
    EXPECT_EQ(round.state.tokens[0].lots, world().reserve_lots);
    EXPECT_TRUE(round.state.tokens[0].minted);
    clock = std::make_unique<FakeClock>();

    std::string first_change;
    for (const char* pot : {"0.02", "0.0150001"}) {
        driven.window.edits[CONTROL_ORIGIN] = world().token_id;
        on_snapshot(round);
        driven.finish();
        expect_board_of_the_world(round.state.board);
        driven.window.edits[CONTROL_AMOUNT] = pot;
        on_amount_changed(round);
        on_preview(round);
        ASSERT_TRUE(driven.window.enabled[CONTROL_PAY]) << driven.window.message;
        const RoundState frozen = round.state;
        EXPECT_GE(frozen.frozen_skips, 2) << "the holder with dust, and the one without an address";

        const std::size_t mark = chain().txids().size();
        const std::size_t ledger_mark = read_payout_entries().size();
        const std::int64_t before = wallet_sats();
        on_pay(round);
        driven.finish();
        EXPECT_FALSE(driven.stopped) << driven.window.message;
        EXPECT_TRUE(round.state.preview.empty());
        expect_paid(frozen, mark, ledger_mark);
        EXPECT_EQ(wallet_sats(), before - spent_since(mark));
        std::int64_t paid = 0;
        for (const PreviewRow& row : due_rows(frozen)) paid += row.sats;
        EXPECT_EQ(paid + frozen.frozen_remainder, frozen.frozen_pot);
        const std::vector<Transaction> sent = transactions_since(mark);
        if (!first_change.empty()) {
            EXPECT_EQ(sent.front().inputs[0].txid, first_change);
        }
        first_change = sent.back().txid;
        // The figure shown afterwards is what the chain has.
        QvClaspStatus status;
        FakeClock::advance_seconds(60);
        qv_clasp_status(status);
        EXPECT_TRUE(status.balance_known);
        EXPECT_EQ(status.balance_sats, wallet_sats());
    }
}

TEST_F(PayRunJourney, AHolderCostsOnePostAndOneGet) {
    open(50, 11);
    connect();
    const RoundState frozen = frozen_round("0.1");
    const std::size_t heads = due_rows(frozen).size();
    ASSERT_GT(heads, 40U);
    const std::size_t mark = chain().txids().size();
    box->clear_requests();
    const std::unique_ptr<RoundMessage> message = run_pay(job_of(frozen), library_wallet());
    EXPECT_FALSE(message->stopped) << *message->text;
    expect_paid(frozen, mark, 0);

    const std::vector<SeenRequest> requests = box->requests();
    EXPECT_EQ(count_requests(requests, "POST"), heads + 1);
    EXPECT_EQ(count_requests(requests, "POST", "/oi/submit"), heads + 1);
    // Behind the app fee's POST nothing is read but whether each transaction is there.
    const auto fee = std::find_if(requests.begin(), requests.end(),
                                  [](const SeenRequest& request) { return request.method == "POST"; });
    const std::vector<SeenRequest> run(fee, requests.end());
    EXPECT_EQ(run.size(), 2 * (heads + 1));
    for (const PayoutEntry& entry : read_payout_entries())
        EXPECT_EQ(count_requests(run, "GET", entry.txid), 1U) << entry.name;
}

}  // namespace
