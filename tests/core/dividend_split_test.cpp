#include "core/dividend_split.h"

#include <gtest/gtest.h>

#include <random>

#include "base/amounts.h"
#include "base/settings.h"
#include "tests/core/board_builder.h"
#include "tests/core/fake_wallet.h"

namespace {

struct SplitTest : testing::Test {
    FakeWallet wallet;
    RoundState state;
    std::string text;

    bool split(const HolderBoard& holders, const std::string& amount,
               std::vector<std::uint8_t> excluded = {}) {
        state.board = holders;
        state.excluded = std::move(excluded);
        return compute_preview(state, amount, wallet.functions(), text);
    }
    std::vector<std::int64_t> shares() const {
        std::vector<std::int64_t> sats;
        for (const PreviewRow& row : state.preview) sats.push_back(row.sats);
        return sats;
    }
    void known_balance(std::int64_t sats) {
        wallet.status.balance_known = true;
        wallet.status.balance_sats = sats;
    }
};

using DividendSplit = SplitTest;
using Shares = std::vector<std::int64_t>;

const std::string AMOUNT_TEXT = "Enter how much BSV to pay as a dividend (e.g. 0.01).";
const std::string SNAPSHOT_TEXT = "Snapshot the board first.";
const std::string FLOAT_TEXT = "Float is zero - every lot is reserve on this wallet. Nothing to pay.";
const std::string PAYABLE_TEXT =
    "No payable lots - every in-market holder is excluded. Include someone, or Snapshot again.";

}  // namespace

TEST_F(DividendSplit, TheFirstFailingTestDecidesTheText) {
    struct Case {
        const char* name;
        HolderBoard board;
        std::string amount;
        std::vector<std::uint8_t> excluded;
        std::string text;
    };
    const HolderBoard one_holder = board().market("a", "1");
    const std::string digits21 = "100000000000000000000";
    const Case cases[] = {
        {"no amount and no board", {}, "", {}, AMOUNT_TEXT},
        {"an amount of zero", one_holder, "0.000000001", {}, AMOUNT_TEXT},
        {"no rows", board(), "1", {}, SNAPSHOT_TEXT},
        {"no right to the token", board().market("a", "1").not_loaded(), "1", {}, SNAPSHOT_TEXT},
        {"a float of zero", board().reserve("me", "5"), "1", {}, FLOAT_TEXT},
        {"an empty float", board().market("a", "1").float_of(""), "1", {}, FLOAT_TEXT},
        {"everybody excluded", one_holder, "1", {1}, PAYABLE_TEXT},
        {"a float of two zeros", board().market("a", "1").float_of("00"), "1", {}, PAYABLE_TEXT},
        {"a float of 21 digits", board().market("a", "1").float_of(digits21), "1", {}, PAYABLE_TEXT},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        state.preview.assign(1, PreviewRow());
        EXPECT_FALSE(split(one.board, one.amount, one.excluded));
        EXPECT_EQ(text, one.text);
        EXPECT_TRUE(state.preview.empty());
    }
    EXPECT_TRUE(wallet.estimates.empty());
    EXPECT_EQ(wallet.status_calls, 0);
}

TEST_F(DividendSplit, ASkippedRowKeepsItsShareInTheWalletAndItsLotsInTheDivision) {
    EXPECT_TRUE(split(board().market("a", "900").nowhere("b", "99").market("c", "1"), "0.00545"));
    EXPECT_EQ(shares(), (Shares{490500, 53955, 545}));
    EXPECT_FALSE(state.preview[0].skip);
    EXPECT_TRUE(state.preview[1].skip);
    EXPECT_TRUE(state.preview[2].skip);
    EXPECT_EQ(state.frozen_skips, 2);
    EXPECT_EQ(state.frozen_remainder, 53955 + 545);

    EXPECT_TRUE(split(board().market("a", "900").nowhere("b", "99").market("c", "1"), "0.00546"));
    EXPECT_FALSE(state.preview[2].skip) << "546 satoshis are paid";
}

TEST_F(DividendSplit, ExcludedRowsRaiseTheOthersAndReserveRowsNeverCount) {
    const HolderBoard holders =
        board().reserve("me", "1000").market("a", "3").market("b", "1").market("c", "1");
    EXPECT_TRUE(split(holders, "0.01", {1, 1, 0, 0}));
    EXPECT_EQ(shares(), (Shares{500000, 500000}));
    EXPECT_EQ(state.preview[0].name, "b");
    EXPECT_EQ(state.preview[1].dest, "1c");
    EXPECT_EQ(state.frozen_remainder, 0);
}

TEST_F(DividendSplit, TheLargestPotAndTheLargestLotsDoNotOverflow) {
    const std::string most_pot = "92233720368.54775807";
    EXPECT_TRUE(split(board().market("a", "18446744073709551615"), most_pot));
    EXPECT_EQ(shares(), (Shares{9223372036854775807}));
    EXPECT_EQ(state.frozen_remainder, 0);

    // Pot, app fee and miner fees exceed 63 bits: no balance is enough.
    wallet.fee_estimate = 9223372036854775807;
    known_balance(5);
    EXPECT_FALSE(split(board().market("a", "1"), most_pot));
    EXPECT_EQ(text.substr(0, 14), "Not enough BSV");
    EXPECT_TRUE(state.preview.empty());
}

TEST_F(DividendSplit, NeverPaysOutMoreThanThePot) {
    // A float of 2 to the power of 65 still has 20 digits, of which only the first 19 fit in 64 bits.
    const std::string half = "18446744073709551615";
    EXPECT_FALSE(split(board().market("a", half).market("b", half).float_of("36893488147419103230"), "1"));
    EXPECT_EQ(text, PAYABLE_TEXT);
    EXPECT_TRUE(state.preview.empty());
    EXPECT_TRUE(wallet.estimates.empty());
}

TEST_F(DividendSplit, FeesAreEstimatedForPaidRowsAndTheAppFeeOnly) {
    wallet.fee_estimate = 11;
    EXPECT_TRUE(split(board().market("a", "3").nowhere("b", "3").market("c", "3"), "0.0009"));
    const std::vector<FakeSend> asked = {
        {"1a", 30000, ""}, {"1c", 30000, ""}, {settings().fee_address, 1000000, ""}};
    EXPECT_EQ(wallet.estimates, asked);
    EXPECT_EQ(state.frozen_fee_estimate, 33);

    for (const std::int64_t no_estimate : {0, -1, -2}) {
        wallet.fee_estimate = no_estimate;
        EXPECT_TRUE(split(board().market("a", "3"), "0.0009"));
        EXPECT_EQ(state.frozen_fee_estimate, 0);
    }
}

TEST_F(DividendSplit, TheBalanceMustCoverPotAppFeeAndMinerFees) {
    wallet.fee_estimate = 7;
    const std::int64_t need = 90000 + 1000000 + 14;
    known_balance(need);
    EXPECT_TRUE(split(board().market("a", "3"), "0.0009"));

    known_balance(need + 90000 - 1);
    EXPECT_FALSE(split(board().market("a", "3"), "0.0018"));
    EXPECT_EQ(text,
              "Not enough BSV on the connected Clasp for this pot, the 0.01 BSV app fee, plus miner fees.\n"
              "Have 0.01180013 BSV.");
    EXPECT_TRUE(state.preview.empty());
    EXPECT_EQ(state.frozen_pot, 90000) << "the frozen figures keep what they held";

    wallet.status.balance_known = false;
    EXPECT_TRUE(split(board().market("a", "3"), "1")) << "an unknown balance stops no round";
}

TEST_F(DividendSplit, ThePreviewTextIsWhole) {
    wallet.fee_estimate = 20;
    const HolderBoard holders = board()
                                    .market("alice@bursaria.test", "6")
                                    .reserve("me", "50")
                                    .market("bob", "2")
                                    .nowhere("carol", "2")
                                    .market("dave", "7");
    ASSERT_TRUE(split(holders, "0.5", {0, 0, 0, 0, 1}));
    EXPECT_EQ(text,
              "Dividend preview (this list is frozen until you Snapshot again)\n\n"
              "Pot: 0.50000000 BSV\n"
              "In-market lots: 17\n"
              "Excluded lots: 7\n"
              "Payable lots: 10\n"
              "Payable heads: 2\n"
              "Dust / no-dest skips: 1  (those sats stay in the connected Clasp)\n"
              "Remainder after pro-rata: 0.10000000 BSV  (stays in the connected Clasp)\n"
              "Miner fee estimate: 60 sats  (from the connected Clasp, on top of the pot)\n"
              "App fee: 0.01000000 BSV to " +
                  settings().fee_handle + "\n  " + settings().fee_address +
                  "\n  (once per Pay, not taken from holders)\n\n"
                  "alice@bursaria.test  6 lots  ->  0.30000000 BSV\n"
                  "bob  2 lots  ->  0.10000000 BSV\n"
                  "carol  2 lots  ->  skip\n");
}

TEST_F(DividendSplit, SharesAndRemainderMakeThePotOnAnyBoard) {
    std::mt19937 random(20240607);
    std::uniform_int_distribution<std::int64_t> any_lots(1, 2'000'000'000);
    std::uniform_int_distribution<std::int64_t> any_pot(1, 2'000'000'000);
    for (int round = 0; round < 200; ++round) {
        BoardBuilder builder;
        std::vector<std::int64_t> lots;
        std::int64_t all_lots = 0;
        for (int row = 0; row < round % 17 + 1; ++row) {
            lots.push_back(any_lots(random));
            all_lots += lots.back();
            builder.market("h" + std::to_string(row), std::to_string(lots.back()));
        }
        const std::int64_t pot = any_pot(random);
        split(builder, format_bsv(pot));
        ASSERT_EQ(state.preview.size(), lots.size());
        std::int64_t paid = 0;
        for (std::size_t row = 0; row < lots.size(); ++row) {
            const PreviewRow& one = state.preview[row];
            // The floor of the quotient, told by multiplication.
            ASSERT_LE(one.sats * all_lots, pot * lots[row]);
            ASSERT_GT((one.sats + 1) * all_lots, pot * lots[row]);
            ASSERT_EQ(one.skip, one.sats < 546);
            if (!one.skip) paid += one.sats;
        }
        ASSERT_EQ(paid + state.frozen_remainder, pot);
    }
}
