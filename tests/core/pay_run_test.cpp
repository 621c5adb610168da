#include "core/pay_run.h"

#include <gtest/gtest.h>

#include "base/settings.h"
#include "records/payout_ledger.h"
#include "tests/core/fake_wallet.h"
#include "tests/support/test_home.h"

namespace {

struct PayRunTest : testing::Test {
    TestHome home;
    FakeWallet wallet;
    PayJob job{{}, token_id_of('c'), "Meadow"};

    std::unique_ptr<RoundMessage> run() { return run_pay(job, wallet.functions()); }
    std::string fee_line(const std::string& txid) const {
        return "App fee 0.01 BSV to " + settings().fee_handle + " ok success:" + txid + "\n";
    }
    static std::vector<std::string> ledger_names() {
        std::vector<std::string> names;
        for (const PayoutEntry& entry : read_payout_entries()) names.push_back(entry.name);
        return names;
    }
};

using PayRun = PayRunTest;
using Names = std::vector<std::string>;

}  // namespace

TEST_F(PayRun, SendsTheFeeAndThenEachDueHolderInOrder) {
    job.rows = {{"alice", "1alice", "5", 5000, false},
                {"dust", "1dust", "1", 545, false},
                {"skipped", "1skipped", "9", 9000, true},
                {"nowhere", "", "9", 9000, false},
                {"bob", "1bob", "1", 546, false}};
    const auto message = run();

    const std::vector<FakeSend> sends = {
        {settings().fee_address, 1000000, ""}, {"1alice", 5000, ""}, {"1bob", 546, ""}};
    EXPECT_EQ(wallet.sends, sends);
    EXPECT_EQ(message->number, 32772U);
    EXPECT_FALSE(message->stopped);
    EXPECT_EQ(message->text, "Paid 2.\n" + fee_line(FakeWallet::txid(0)) + "alice ok success:" +
                                 FakeWallet::txid(1) + "\nbob ok success:" + FakeWallet::txid(2) + "\n");
}

TEST_F(PayRun, EachPaymentIsInTheLedgerBeforeTheNextIsSent) {
    job.rows = {{"alice", "1alice", "5", 5000, false}, {"bob", "1bob", "1", 546, false}};
    const RoundWallet scripted = wallet.functions();
    RoundWallet watched = scripted;
    std::vector<std::size_t> entries_before_send;
    watched.send = [&](const std::string& dest, std::int64_t sats, const std::string& memo) {
        entries_before_send.push_back(read_payout_entries().size());
        return scripted.send(dest, sats, memo);
    };
    run_pay(job, watched);
    EXPECT_EQ(entries_before_send, (std::vector<std::size_t>{0, 1, 2}));

    const std::vector<PayoutEntry> entries = read_payout_entries();
    ASSERT_EQ(entries.size(), 3U);
    const auto told = [](const PayoutEntry& entry) {
        return entry.token_id + "|" + entry.token_name + "|" + entry.name + "|" + entry.dest + "|" +
               entry.kind + "|" + std::to_string(entry.sats) + "|" + entry.txid;
    };
    EXPECT_EQ(told(entries[0]), "app_fee|BA fee|" + settings().fee_handle + "|" + settings().fee_address +
                                    "|app_fee|1000000|" + FakeWallet::txid(0));
    EXPECT_EQ(told(entries[2]), job.token_id + "|Meadow|bob|1bob|payout|546|" + FakeWallet::txid(2));
}

TEST_F(PayRun, AFailedAppFeeTouchesNobody) {
    job.rows = {{"alice", "1alice", "5", 5000, false}};
    wallet.send_results = {"error: no coins"};
    const auto message = run();
    EXPECT_TRUE(message->stopped);
    EXPECT_EQ(message->text, "App fee failed. Holders were not paid.\nerror: no coins");
    EXPECT_EQ(wallet.sends.size(), 1U);
    EXPECT_TRUE(ledger_names().empty());
}

TEST_F(PayRun, StopsAtTheFirstFailureAndLeavesTheRest) {
    job.rows = {{"alice", "1alice", "5", 5000, false},
                {"bob", "1bob", "5", 5000, false},
                {"carol", "1carol", "5", 5000, false}};
    const std::string id = hex_id('e');
    const std::string handle = settings().fee_handle;
    const std::string lines[] = {"alice error: refused\n",
                                 "alice ok success:" + id + "\nbob error: refused\n"};
    for (const std::size_t paid : {0U, 1U}) {
        const TestHome fresh;
        wallet.sends.clear();
        wallet.send_results.assign(paid + 1, "success: " + id);
        wallet.send_results.push_back("error: refused");
        const auto message = run();
        EXPECT_TRUE(message->stopped);
        EXPECT_EQ(message->text,
                  "Paid " + std::to_string(paid) + ", stopped on error.\n" + fee_line(id) + lines[paid]);
        EXPECT_EQ(wallet.sends.size(), paid + 2);
        EXPECT_EQ(ledger_names(), paid == 0 ? Names{handle} : (Names{handle, "alice"}));
    }
}

TEST_F(PayRun, ASuccessWithoutATxidStillCountsAsPaid) {
    job.rows = {{"alice", "1alice", "5", 5000, false}};
    wallet.send_results = {"success", "success: soon"};
    const auto message = run();
    EXPECT_FALSE(message->stopped);
    EXPECT_EQ(message->text, "Paid 1.\n" + fee_line("") + "alice ok success:\n");
    EXPECT_EQ(ledger_names(), (Names{settings().fee_handle, "alice"}));
    EXPECT_EQ(read_payout_entries()[1].txid, "");
}

TEST_F(PayRun, ALedgerThatCannotBeWrittenDoesNotStopTheRun) {
    home.write("/bursaria/none_paid.json/in_the_way", std::string("a folder stands in the ledger's place"));
    job.rows = {{"alice", "1alice", "5", 5000, false}};
    EXPECT_FALSE(run()->stopped);
    EXPECT_EQ(wallet.sends.size(), 2U);
}

TEST(FindTxid, ReadsTheFirstRunOfASuccess) {
    const std::string a = hex_id('a'), b = hex_id('B');
    const std::pair<std::string, std::string> cases[] = {
        {"success: " + a, a}, {"success:" + b + " " + a, b}, {"success " + a.substr(1) + "g" + b, b},
        {"error: " + a, ""},  {" success: " + a, ""},        {"success: " + a.substr(1), ""},
    };
    for (const auto& [text, txid] : cases) EXPECT_EQ(find_txid(text), txid) << text;
}

TEST(ExtractTxids, FindsEachRunOnceInOrder) {
    const std::string a = hex_id('a'), b = hex_id('b'), c = hex_id('C');
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"", {}},
        {a, {a}},
        {"x " + b + "\ny " + a + "\nz " + b, {b, a}},
        {a + b, {a, b}},
        {"1" + a, {"1" + a.substr(1)}},
        {c + "," + hex_id('c'), {c, hex_id('c')}},
    };
    for (const auto& [text, txids] : cases) EXPECT_EQ(extract_txids(text), txids) << text;
}
