#include "index/ordinal_listing.h"

#include <gtest/gtest.h>

#include "sandbox/service_reply.h"
#include "tests/index/sweep_world.h"
#include "wallet/coin_records.h"

namespace {

const std::string UNAVAILABLE = "error: 1Sat index unavailable. 1-sat coins are held back from spend.";
using Origins = std::vector<std::string>;

}  // namespace

TEST(OrdinalListing, AListedTokenIsReadRememberedAndKept) {
    SweepWorld world;
    world.list_token(world.address, 1, 0, "", "1000");
    world.tokens[world.address][0]["dec"] = 2;
    world.tokens[world.address][0]["script"] = sandbox::base64(sandbox::token_script(
        world.address_hash, sandbox::deploy_mint_body("COIN", "1000", 2, out(9), "Long Coin Name")));
    const Swept swept = sweep();
    EXPECT_EQ(swept.error, "");
    ASSERT_EQ(swept.rows.size(), 1U);
    const QvClaspOrdRow& row = swept.rows[0];
    EXPECT_EQ(row.origin, out(1));
    EXPECT_EQ(row.token_id, out(1)) << "a deploy is its own token";
    EXPECT_EQ(row.amt + "/" + row.dec + "/" + row.name + "/" + row.icon, "1000/2/Long Coin Name/" + out(9));
    EXPECT_EQ(row.address, world.address);
    EXPECT_EQ(row.type, "application/bsv-20");
    EXPECT_TRUE(row.named);
    EXPECT_FALSE(row.needs_name);
    EXPECT_EQ(row.outpoints, Origins{out(1)});
    EXPECT_EQ(world.owned(), Json::array({owned_row(out(1), {{"type", "application/bsv-20"},
                                                             {"name", "Long Coin Name"},
                                                             {"icon", out(9)},
                                                             {"amt", "1000"},
                                                             {"dec", "2"},
                                                             {"token_id", out(1)}})}));
    EXPECT_EQ(json_text(world.snapshot()["lots"][0], "origin"), out(1));
    EXPECT_EQ(world.snapshot()["token_ids"], Json::array({out(1)}));
    EXPECT_EQ(world.home.read("/ord_cache/" + out(1) + ".nam"), "Long Coin Name");
    EXPECT_EQ(world.spend_checks(1, 0), 0U) << "what the indexer lists is not asked about";
}

TEST(OrdinalListing, RowsOfOneTokenAreFolded) {
    SweepWorld world;
    const std::string receive = receive_address(0);
    world.list_token(world.address, 1, 0, out(8), "9999999999999999999999");
    world.list_token(world.address, 2, 1, out(8), "1");
    world.list_token(receive, 3, 0, out(8), "0007");
    world.list_token(receive, 4, 0, out(7), "5");
    world.server.on("GET", "/api/bsv20/id/" + out(8), R"({"name":"Eight of them","icon":"i8"})");
    world.server.on("GET", "/api/bsv20/id/" + out(7), R"({"name":"Seven of them"})");
    const Swept swept = sweep();
    ASSERT_EQ(swept.rows.size(), 2U);
    // The current receive address is asked about first.
    const QvClaspOrdRow& eight = swept.rows[0];
    EXPECT_EQ(eight.origin, out(3));
    EXPECT_EQ(eight.amt, "10000000000000000000007");
    EXPECT_EQ(eight.outpoints, (Origins{out(3), out(1), out(2, 1)}));
    EXPECT_EQ(eight.name + "/" + eight.icon, "Eight of them/i8");
    EXPECT_EQ(swept.rows[1].token_id + swept.rows[1].amt, out(7) + "5");
    EXPECT_EQ(world.server.count("GET", "/api/bsv20/id/" + out(8)), 1U) << "each token is asked about once";
}

TEST(OrdinalListing, WithTheIndexerDownAndNothingRememberedItSaysSo) {
    SweepWorld world;
    world.indexer_up = false;
    const Swept swept = sweep();
    EXPECT_EQ(swept.error, UNAVAILABLE);
    EXPECT_TRUE(swept.rows.empty());
    world.indexer_up = true;
    EXPECT_EQ(sweep().error, "") << "an empty listing is an answer";
    world.outputs[world.address] = {{"error", "out of order"}};
    for (const char* path : {"1'/0/0", "100'/0/0", "5'/1/0", "5'/1/1", "5'/1/2", "5'/1/3", "5'/1/4"})
        world.silent.insert(one_wallet_key(path).address);
    EXPECT_EQ(sweep().error, UNAVAILABLE) << "an object is none";
}

TEST(OrdinalListing, ASilentIndexerIsBridgedByAWalkOverTheChain) {
    SweepWorld world(Json::array({owned_row(
        out(5),
        {{"type", "application/bsv-20"}, {"amt", "9"}, {"token_id", out(4)}, {"name", "Nine Coin"}})}));
    world.cache_body(out(5), "application/bsv-20", transfer(out(4), "9"));
    world.add_tx(5, {token_output(world.address_hash, transfer(out(4), "9"))});
    world.add_spend(5, 0, 6);
    world.add_tx(6, {token_output(person_hash(1), transfer(out(4), "7")),
                     token_output(world.address_hash, transfer(out(4), "2"))});
    world.indexer_up = false;
    const Swept swept = sweep();
    ASSERT_EQ(swept.origins(), Origins{out(6, 1)}) << "the spent output has gone";
    EXPECT_EQ(swept.rows[0].amt, "2");
    EXPECT_EQ(swept.rows[0].token_id, out(4));
    ASSERT_EQ(world.owned().size(), 1U) << "and is not remembered any more";
    EXPECT_EQ(world.owned()[0]["origin"], out(6, 1));
}

TEST(OrdinalListing, JunkIsHiddenForGood) {
    SweepWorld world(
        Json::array({owned_row(out(1), {{"type", "application/bsv-20"}, {"name", "JUNK"}}),
                     owned_row(out(2), {{"type", "application/bsv-20"}, {"name", "A whole name"}}),
                     owned_row(out(3), {{"type", "application/bsv-20"}, {"amt", "4"}}),
                     owned_row(out(4), {{"created", true}})}));
    world.cache_body(out(4), "application/bsv-20", sandbox::deploy_mint_body("MINT", "9", 0, "", ""));
    EXPECT_EQ(sweep().origins(), (Origins{out(2), out(3), out(4)}))
        << "what is named, has an amount, or is remembered without a type";
    EXPECT_EQ(world.owned()[0]["hidden"], true);
    for (int i = 1; i <= 3; ++i) EXPECT_FALSE(world.owned()[i].contains("hidden")) << i;
}

TEST(OrdinalListing, ATokenThatTheIndexerDoesNotListIsAskedAboutOnTheChain) {
    const auto token = [](unsigned tx) {
        return owned_row(
            out(tx), {{"type", "application/bsv-20"}, {"amt", "4"}, {"name", "Token " + std::to_string(tx)}});
    };
    SweepWorld world(Json::array({token(1), token(2), token(3), token(4), token(5)}));
    world.add_spend(1, 0, 9);
    world.server.on("GET", TokenWorld::spent_path(3, 0), "out of order", 500);
    world.server.on("GET", TokenWorld::spent_path(5, 0), "no such transaction", 400);
    {
        const WalletLock lock = qv_clasp_lock_wallet();
        ASSERT_TRUE(qv_clasp_load());
        qv_clasp_mark_spent(tx_number(4), 0);
    }
    EXPECT_EQ(sweep().origins(), (Origins{out(2), out(3), out(5)})) << "spent there, and by this program";
    EXPECT_EQ(world.owned().size(), 5U) << "with a listing nothing is forgotten";
}

TEST(OrdinalListing, AnAddressThatDoesNotAnswerHasNotLostItsTokens) {
    SweepWorld world;
    world.list_token(world.address, 1, 0, out(8), "5");
    world.server.on("GET", "/api/bsv20/id/" + out(8), R"({"name":"Eight of them","icon":"i"})");
    ASSERT_EQ(sweep().rows.size(), 1U);
    world.silent.insert(world.address);
    EXPECT_EQ(sweep().rows.size(), 1U);
    EXPECT_EQ(world.spend_checks(1, 0), 0U) << "its last listing still counts";
    world.silent.clear();
    world.tokens.clear();
    world.add_spend(1, 0, 2);
    EXPECT_TRUE(sweep().rows.empty());
    EXPECT_EQ(world.spend_checks(1, 0), 1U) << "but not against its own answer";
}

TEST(OrdinalListing, WhatASwitchedWalletLeavesBehind) {
    SweepWorld world;
    world.list_token(world.address, 1, 0, out(8), "5");
    const std::string before = world.home.read(ONE_WALLET_PATH);
    world.during = [] {
        const WalletLock lock = qv_clasp_lock_wallet();
        qv_clasp_wipe_session();
        qv_clasp_drop_bind();
    };
    const Swept swept = sweep();
    EXPECT_EQ(swept.error, "error: wallet changed.");
    EXPECT_TRUE(swept.rows.empty());
    EXPECT_EQ(world.home.read(ONE_WALLET_PATH), before);
    EXPECT_EQ(sweep().error, "error: no Clasp wallet.");
}

TEST(OrdinalListing, ASilentIndexerIsBridgedByTheLastSnapshot) {
    SweepWorld world(Json::array({owned_row(out(3), {{"hidden", true}, {"type", "image/png"}})}));
    const auto lot = [](unsigned tx) {
        return Json{{"origin", out(tx)},
                    {"txid", tx_number(tx)},
                    {"vout", 0},
                    {"type", "image/png"},
                    {"name", "One"}};
    };
    world.home.write("/ord_snap/" + ONE_WALLET_ID + ".json", Json{{"lots", {lot(2), lot(3)}}});
    EXPECT_TRUE(sweep().rows.empty()) << "an indexer that answers is believed";
    world.home.write("/ord_snap/" + ONE_WALLET_ID + ".json", Json{{"lots", {lot(2), lot(3)}}});
    world.indexer_up = false;
    const Swept swept = sweep();
    EXPECT_EQ(swept.error, "");
    EXPECT_EQ(swept.origins(), Origins{out(2)}) << "but what is hidden";
    EXPECT_EQ(world.snapshot()["lots"].size(), 1U) << "and it stays for the next time";
}
