#include <gtest/gtest.h>

#include <random>

#include "spend/coin_guard.h"
#include "spend/send.h"
#include "spend/transaction.h"
#include "tests/spend/play_network.h"
#include "wallet/coin_records.h"
#include "wallet/wallet_document.h"

namespace {

const std::string STRANGER = "1BoatSLRHtKNngkdXEeobR76b53LETtpyT";

// The candidates of a payment as they stand now.
std::vector<QvClaspCoin> candidates() {
    WalletLock lock = qv_clasp_lock_wallet();
    std::vector<QvClaspCoin> coins;
    std::string error;
    std::int64_t total = 0;
    EXPECT_TRUE(qv_clasp_refresh_coins(lock, error));
    EXPECT_TRUE(qv_clasp_collect_coins(coins, total, error));
    return coins;
}

// What building the payment from these coins asks for.
std::int64_t fee_of_building(std::vector<QvClaspCoin> coins, std::int64_t sats) {
    std::vector<QvClaspTxOutput> outputs;
    std::string error;
    std::int64_t fee = 0;
    qv_clasp_build_tx(coins, outputs, Hash160{}, Hash160{}, sats, "", fee, error);
    return fee;
}

}  // namespace

TEST(FeeEstimate, IsWhatBuildingAsksFor) {
    std::mt19937 random(7);
    for (const std::int64_t largest : {40, 900, 100'000}) {
        PlayNetwork net;
        std::vector<std::int64_t> values;
        for (int i = 0; i < 60; ++i) values.push_back(2 + static_cast<std::int64_t>(random()) % largest);
        net.fund(receive_address(0), values);
        const std::vector<QvClaspCoin> coins = candidates();
        for (int i = 0; i < 300; ++i) {
            const std::int64_t sats = 1 + static_cast<std::int64_t>(random()) % (largest * 70);
            ASSERT_EQ(qv_clasp_estimate_send_fee(STRANGER, sats), fee_of_building(coins, sats)) << sats;
        }
    }
}

TEST(FeeEstimate, FollowsAPaymentAtOnceAndLeavesItsChangeAlone) {
    PlayNetwork net;
    net.fund(receive_address(0), {1'000'000});
    EXPECT_EQ(qv_clasp_estimate_send_fee(STRANGER, 990'000), 23);
    ASSERT_TRUE(qv_clasp_send(STRANGER, 999'000, "").starts_with("success"));
    // 977 satoshis are left.
    EXPECT_EQ(qv_clasp_estimate_send_fee(STRANGER, 957), 20);
    const WalletLock lock = qv_clasp_lock_wallet();
    ASSERT_EQ(qv_clasp_coin_records().pending_coins.size(), 1U);
    EXPECT_EQ(qv_clasp_coin_records().pending_coins[0].sats, 977);
}

TEST(FeeEstimate, FollowsAChangeOfWalletAlsoInTheMiddleOfARead) {
    for (const bool in_the_middle : {false, true}) {
        PlayNetwork net;
        add_wallet(net.home_folder, "w1700000000002", one_wallet_document(OTHER_WORDS));
        net.fund(receive_address(0), {100, 100, 100, 100, 100'000});
        net.fund(sandbox::derive(OTHER_WORDS, "m/44'/236'/1'/0/0").address, {600, 600});
        const auto change_wallet = [] {
            const WalletLock lock = qv_clasp_lock_wallet();
            qv_clasp_set_active_wallet_id("w1700000000002");
            qv_clasp_wipe_session();
        };
        std::atomic<bool> changed{!in_the_middle};
        net.on_request([&](const std::string&) {
            if (!changed.exchange(true)) change_wallet();
        });
        EXPECT_EQ(qv_clasp_estimate_send_fee(STRANGER, 1000), in_the_middle ? -2 : 23);
        if (!in_the_middle) change_wallet();
        EXPECT_EQ(qv_clasp_estimate_send_fee(STRANGER, 1000), 38);
    }
}

TEST(FeeEstimate, SaysWhyThereIsNone) {
    {
        PlayNetwork net;
        EXPECT_EQ(qv_clasp_estimate_send_fee(STRANGER, 1000), 5)
            << "an empty wallet: a transaction without inputs";
    }
    {
        PlayNetwork net;
        net.lists_answer = false;
        for (int i = 0; i < 50; ++i) EXPECT_EQ(qv_clasp_estimate_send_fee(STRANGER, 1000), -2);
        EXPECT_EQ(net.list_reads(), 2U) << "a service that is down is not asked for every holder";
        net.lists_answer = true;
        net.fund(receive_address(0), {50'000});
        FakeClock::advance_seconds(6);
        EXPECT_EQ(qv_clasp_estimate_send_fee(STRANGER, 1000), 23);
    }
    PlayNetwork net;
    {
        const WalletLock lock = qv_clasp_lock_wallet();
        qv_clasp_drop_bind();
        qv_clasp_wipe_session();
    }
    EXPECT_EQ(qv_clasp_estimate_send_fee(STRANGER, 1000), -1);
    EXPECT_EQ(net.gets(""), 0U);
}
