#include "spend/send.h"

#include <gtest/gtest.h>

#include "base/hex.h"
#include "spend/coin_guard.h"
#include "tests/spend/play_network.h"
#include "wallet/coin_records.h"
#include "wallet/wallet_document.h"

namespace {

const std::string STRANGER = "1BoatSLRHtKNngkdXEeobR76b53LETtpyT";
const std::string OTHER_STRANGER = "16UwLL9Risc3QfPqBUvKofHmBQ7wMtjvM";
const Turn SILENT = hangs_up();
const Turn CONFLICT = refuses("257: txn-mempool-conflict");
const Turn MISSING = refuses("25: Missing inputs");

std::string own() {
    return receive_address(0);
}

std::string txid_in(const std::string& result) {
    return result.starts_with("success: ") ? result.substr(9) : "";
}

// No target takes anything, and all say this.
void all_say(PlayNetwork& net, const Turn& turn) {
    net.home_does({SILENT});
    net.woc_does({turn});
    net.arc_does({turn});
}

bool spent(const std::string& txid, std::uint32_t vout) {
    const WalletLock lock = qv_clasp_lock_wallet();
    return qv_clasp_is_spent(txid, vout);
}

// As if the program had been started anew.
void restart() {
    const WalletLock lock = qv_clasp_lock_wallet();
    qv_clasp_wipe_session();
}

}  // namespace

TEST(Send, RefusesBeforeAnyTraffic) {
    PlayNetwork net;
    net.fund(own(), {50'000});
    EXPECT_EQ(qv_clasp_send("nobody", 0, ""), "error: amount must be positive.");
    EXPECT_EQ(qv_clasp_send(STRANGER, -1, ""), "error: amount must be positive.");
    for (const char* dest : {"", "nobody", "alice@localhost", "3J98t1WpEZ73CNmQviecrnyiWrnqRhWNLy"}) {
        EXPECT_EQ(qv_clasp_send(dest, 1, ""), "error: destination is not a legacy P2PKH address.") << dest;
    }
    Settings oracles = settings();
    oracles.house_oracles[1].oracle_a = own();
    net.home_folder.use_settings(oracles);
    EXPECT_EQ(qv_clasp_send(STRANGER, 1, ""), "error: change would land on a house oracle.");
    {
        const WalletLock lock = qv_clasp_lock_wallet();
        qv_clasp_drop_bind();
        qv_clasp_wipe_session();
    }
    EXPECT_EQ(qv_clasp_send(STRANGER, 1, ""), "error: no Quorvelle Clasp wallet. Use clasp create first.");
    EXPECT_EQ(net.gets("") + net.posts(""), 0U);
}

// The chain service lists yesterday's coins; the two record files bring back what was spent and what came of
// it.
TEST(Send, ARestartBetweenTwoSendsLosesNothing) {
    PlayNetwork net;
    const std::string money = net.fund(own(), {60'000});
    net.freeze_lists(own());
    const std::string first = txid_in(qv_clasp_send(STRANGER, 1000, ""));
    ASSERT_NE(first, "");
    restart();
    const std::string second = txid_in(qv_clasp_send(STRANGER, 1000, ""));
    ASSERT_NE(second, "");
    EXPECT_EQ(net.chain.find(second)->inputs[0].txid, first);
    EXPECT_TRUE(spent(money, 0));
    EXPECT_EQ(net.record("_change.json")["coins"][0]["txid"], second);
}

TEST(Send, AConflictMovesOnToOtherCoins) {
    PlayNetwork net;
    const std::string money = net.fund(own(), {90'000, 80'000});
    net.freeze_lists(own());
    net.spend_elsewhere(money, 0);
    net.home_does({refuses(R"({"ok":false})", 200)});
    const std::string txid = txid_in(qv_clasp_send(STRANGER, 1000, ""));
    ASSERT_NE(txid, "");
    const auto tx = net.chain.find(txid);
    ASSERT_EQ(tx->inputs.size(), 1U);
    EXPECT_EQ(tx->inputs[0].vout, 1U);
    EXPECT_EQ(net.posts("/woc/tx/raw"), 2U);
    EXPECT_EQ(net.posts("/arc/tx"), 1U);
    // Eight for the conflict, one before the rebuild, one for the second transaction.
    EXPECT_EQ(net.probes(), 10U);
    EXPECT_TRUE(spent(money, 0));
    EXPECT_EQ(net.owned(STRANGER), 1000);
}

TEST(Send, ThreeConflictsEndIt) {
    PlayNetwork net;
    const std::string money = net.fund(own(), {90'000, 80'000, 70'000, 60'000});
    all_say(net, CONFLICT);
    EXPECT_EQ(qv_clasp_send(STRANGER, 1000, ""), "error: broadcast failed after retry.");
    EXPECT_EQ(net.posts("/woc/tx/raw"), 3U);
    for (std::uint32_t vout = 0; vout < 3; ++vout) EXPECT_TRUE(spent(money, vout)) << vout;
    EXPECT_FALSE(spent(money, 3));
    EXPECT_EQ(net.payments().size(), 0U);
}

TEST(Send, MissingInputsAreLookedUpInTheIndex) {
    for (const bool index_lists_them : {true, false}) {
        PlayNetwork net;
        const std::string money = net.fund(own(), {90'000, 80'000});
        net.home_does({SILENT});
        net.woc_does({MISSING, takes("\"TXID\"")});
        net.arc_does({MISSING});
        net.index_answers = index_lists_them;
        const std::string txid = txid_in(qv_clasp_send(STRANGER, 1000, ""));
        ASSERT_NE(txid, "");
        // Coins that the index still lists are given back and chosen again.
        EXPECT_EQ(net.chain.find(txid)->inputs[0].vout, index_lists_them ? 0U : 1U);
        EXPECT_TRUE(spent(money, 0));
        EXPECT_EQ(net.gets("/api/txos"), 2U) << "receive and identity address";
    }
}

TEST(Send, OtherFailuresAreFinalAndMarkNothing) {
    PlayNetwork net;
    const std::string money = net.fund(own(), {90'000});
    all_say(net, refuses("64: too-long-mempool-chain"));
    EXPECT_EQ(qv_clasp_send(STRANGER, 1000, ""),
              "error: broadcast failed: HTTP 400 – 64: too-long-mempool-chain");
    EXPECT_EQ(net.posts("/woc/tx/raw"), 1U);
    EXPECT_EQ(net.probes(), 1U);
    EXPECT_FALSE(spent(money, 0));

    net.home_does({takes("{}")});
    EXPECT_NE(txid_in(qv_clasp_send(STRANGER, 1000, "")), "");
    EXPECT_EQ(net.owned(STRANGER), 1000);
}

// The network has it, and every service that was told breaks off: the probe before the end finds it.
TEST(Send, ASilentlyTakenTransactionIsASuccessAndItsChangeIsSpent) {
    PlayNetwork net;
    net.fund(own(), {90'000});
    net.freeze_lists(own());
    net.home_does({hangs_up(true), takes("{}")});
    net.woc_does({SILENT});
    net.arc_does({SILENT});
    const std::string first = txid_in(qv_clasp_send(STRANGER, 1000, ""));
    ASSERT_NE(first, "");
    EXPECT_EQ(net.payments().size(), 1U);
    const std::string second = txid_in(qv_clasp_send(OTHER_STRANGER, 1000, ""));
    ASSERT_NE(second, "");
    EXPECT_EQ(net.chain.find(second)->inputs[0].txid, first);
}

struct LateSight {
    std::string what;
    int misses;
    bool lists_show_it;
};

// A conflict with this very transaction, which no look-up shows for a while: wherever it turns up, nobody is
// paid twice.
class LateSightOfASend : public testing::TestWithParam<LateSight> {};

TEST_P(LateSightOfASend, NeverPaysTwice) {
    PlayNetwork net;
    const std::string money = net.fund(own(), {90'000});
    if (!GetParam().lists_show_it) net.freeze_lists(own());
    net.home_does({hangs_up(true)});
    net.woc_does({CONFLICT});
    net.arc_does({CONFLICT});
    net.misses = GetParam().misses;
    const std::string txid = txid_in(qv_clasp_send(STRANGER, 1000, ""));
    EXPECT_NE(txid, "");
    ASSERT_EQ(net.payments().size(), 1U);
    EXPECT_EQ(net.payments()[0].txid, txid);
    EXPECT_EQ(net.owned(STRANGER), 1000);
    EXPECT_TRUE(spent(money, 0));
    EXPECT_EQ(net.record("_change.json")["coins"][0]["txid"], txid);
}

INSTANTIATE_TEST_SUITE_P(All, LateSightOfASend,
                         testing::Values(LateSight{"InTheProbesOfTheBroadcast", 7, false},
                                         LateSight{"BeforeTheRebuild", 8, false},
                                         LateSight{"WithNoCoinLeft", 9, false},
                                         LateSight{"WithNoCoinLeftTheSecondTime", 10, false},
                                         LateSight{"OnlyInTheListOfCoins", -1, true}),
                         [](const auto& row) { return row.param.what; });

// The home host has passed it on, and no look-up answers: with other coins the same person would be paid
// again.
TEST(Send, WhatTheNetworkMayHoldIsNotReplacedByASecondPayment) {
    for (const Turn& turn : {CONFLICT, MISSING}) {
        PlayNetwork net;
        const std::string money = net.fund(own(), {90'000, 80'000});
        net.freeze_lists(own());
        net.home_does({hangs_up(true)});
        net.woc_does({turn});
        net.arc_does({turn});
        net.misses = -1;
        net.looks_answer = false;
        const std::string result = qv_clasp_send(STRANGER, 1000, "");
        EXPECT_TRUE(result.starts_with("error: broadcast failed: ")) << result;
        EXPECT_TRUE(result.ends_with(turn.answer.body)) << result;
        EXPECT_EQ(net.owned(STRANGER), 1000) << result;
        EXPECT_EQ(net.posts("/woc/tx/raw"), 1U) << result;
        EXPECT_FALSE(spent(money, 0)) << result;
    }
}

// ARC took it, the chain service is behind with everything that it shows: a conflict text is no reason to pay
// the same person with other coins.
TEST(Send, WhatAServiceTookIsNotReplacedByASecondPayment) {
    PlayNetwork net;
    const std::string money = net.fund(own(), {90'000, 80'000});
    net.freeze_lists(own());
    net.home_does({SILENT});
    net.woc_does({CONFLICT});
    net.misses = -1;
    const std::string result = qv_clasp_send(STRANGER, 1000, "");
    EXPECT_TRUE(result.ends_with(CONFLICT.answer.body)) << result;
    EXPECT_EQ(net.owned(STRANGER), 1000) << result;
    EXPECT_EQ(net.posts("/woc/tx/raw"), 1U) << result;
    EXPECT_FALSE(spent(money, 0)) << result;
}

// The index is silent too, and the row of the change's address counts as fresh from before: only a new look
// at the lists tells that the first transaction is out.
TEST(Send, WhatTheListsShowIsNotPaidAgainWhereTheIndexIsSilent) {
    PlayNetwork net;
    net.fund(own(), {90'000, 80'000});
    std::string error;
    {
        WalletLock lock = qv_clasp_lock_wallet();
        ASSERT_TRUE(qv_clasp_refresh_coins(lock, error)) << error;
    }
    net.home_does({hangs_up(true)});
    net.woc_does({MISSING});
    net.arc_does({MISSING});
    net.misses = -1;
    net.index_answers = false;
    const std::string txid = txid_in(qv_clasp_send(STRANGER, 1000, ""));
    EXPECT_EQ(net.owned(STRANGER), 1000);
    ASSERT_EQ(net.payments().size(), 1U);
    EXPECT_EQ(net.payments()[0].txid, txid);
}

TEST(Send, AnEmptyHandSaysWhyTheListsWereNotRead) {
    PlayNetwork net;
    net.fund(own(), {90'000});
    net.lists_answer = false;
    const std::string result = qv_clasp_send(STRANGER, 1000, "");
    EXPECT_TRUE(result.starts_with("error: you have 0 in your Clasp wallet. (HTTP ")) << result;
    EXPECT_TRUE(result.ends_with(")")) << result;
    net.lists_answer = true;
    EXPECT_NE(txid_in(qv_clasp_send(STRANGER, 1000, "")), "") << "nothing is remembered of it";
}

TEST(Send, CoinsOfOneSatoshiAreNeverTaken) {
    PlayNetwork net;
    net.fund(own(), {1, 1, 1});
    EXPECT_EQ(qv_clasp_send(STRANGER, 1, ""), "error: you have 0 in your Clasp wallet.");
    EXPECT_EQ(net.list_reads(), 4U) << "two addresses, and again after the cache was expired";
    EXPECT_EQ(net.posts(""), 0U);
}

// Another wallet is bound while the lock is free; its coins must not pay, and least of all to the old one's
// change.
TEST(Send, AWalletThatChangesMeanwhileStopsIt) {
    for (const std::string part : {"/woc/address/", "/api/txos/"}) {
        PlayNetwork net;
        const std::string other = "w1700000000002";
        add_wallet(net.home_folder, other, one_wallet_document(OTHER_WORDS));
        net.fund(own(), {90'000});
        net.fund(sandbox::derive(OTHER_WORDS, "m/44'/236'/1'/0/0").address, {80'000});
        all_say(net, MISSING);
        std::atomic<bool> changed{false};
        net.on_request([&](const std::string& path) {
            if (!path.starts_with(part) || changed.exchange(true)) return;
            const WalletLock lock = qv_clasp_lock_wallet();
            qv_clasp_set_active_wallet_id(other);
            qv_clasp_wipe_session();
        });
        EXPECT_EQ(qv_clasp_send(STRANGER, 1000, ""), "error: wallet changed.") << part;
        EXPECT_EQ(net.posts("/woc/tx/raw"), part == "/api/txos/" ? 1U : 0U);
    }
}

TEST(Send, AKeyThatDoesNotSignSendsNothing) {
    const sandbox::KeyPair key = one_wallet_key("1'/0/0");
    PlayNetwork net(Json{{"priv", qv_clasp_hex_encode(key.priv)}, {"pub", ""}, {"address", ""}});
    net.fund(key.address, {90'000});
    ASSERT_NE(txid_in(qv_clasp_send(STRANGER, 1000, "")), "") << "a legacy wallet pays";
    {
        const WalletLock lock = qv_clasp_lock_wallet();
        qv_clasp_session().priv.assign(std::string(64, '0'));
    }
    net.clear_requests();
    EXPECT_EQ(qv_clasp_send(STRANGER, 1000, ""), "error: signing failed.");
    EXPECT_EQ(net.posts(""), 0U);
}

TEST(Send, SaysWhatIsMissingAfterThreeLooks) {
    PlayNetwork net;
    net.fund(own(), {700, 300});
    EXPECT_EQ(qv_clasp_send(STRANGER, 1000, ""),
              "error: insufficient funds. Need 1034 sats, you have 1000 in your Clasp wallet.");
    EXPECT_EQ(net.posts(""), 0U);
    EXPECT_EQ(net.probes(), 0U);
}

TEST(ConflictText, IsFoundInAnyCase) {
    for (const char* text :
         {"258: txn-mempool-conflict", "DOUBLE_SPEND_ATTEMPTED: x", "a Double Spend",
          "SEEN_IN_ORPHAN_MEMPOOL", "txn-already-in-mempool", "error: TXN-ALREADY-KNOWN"}) {
        EXPECT_TRUE(is_conflict_text(text)) << text;
    }
    for (const char* text : {"", "Missing inputs", "txn-already", "doublespend", "mempool conflict"}) {
        EXPECT_FALSE(is_conflict_text(text)) << text;
    }
}
