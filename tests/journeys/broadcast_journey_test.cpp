// Runs that are cut short: what the user is told, what the ledger holds and what the chain holds belong
// together, and nobody is paid twice.
#include "base/text.h"
#include "tests/journeys/journey.h"

using namespace sandbox;

namespace {

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

}  // namespace
