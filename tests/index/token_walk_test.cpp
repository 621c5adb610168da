#include "index/token_walk.h"

#include <gtest/gtest.h>

#include <map>

#include "index/chain_view.h"
#include "index/content_cache.h"
#include "tests/index/token_world.h"

namespace {

// Holdings as outpoint and lots.
using Holdings = std::map<std::string, std::string>;

Holdings walk(const std::string& token_id, std::uint64_t generation = 0) {
    std::vector<HolderTxo> rows;
    qv_clasp_trace_token_rows(token_id, rows, generation);
    Holdings holdings;
    for (const HolderTxo& row : rows) {
        EXPECT_TRUE(holdings.emplace(row.outpoint, row.lots).second) << "twice: " << row.outpoint;
    }
    return holdings;
}

// Deploy 1 of 1000, spent by 2: 300 to person 1, 700 to person 2; the second is spent by 3: 700 to person 3.
void add_small_token(TokenWorld& world) {
    world.add_deploy(1, person_hash(0), "1000", "Small");
    world.add_spend(1, 0, 2);
    world.add_tx(2, {token_output(person_hash(1), transfer(out(1), "0300")),
                     token_output(person_hash(2), transfer(out(1), "700"))});
    world.add_spend(2, 1, 3);
    world.add_tx(3, {output_json(sandbox::p2pkh_script(person_hash(9))),
                     token_output(person_hash(3), transfer(out(1), "700"))});
}

}  // namespace

TEST(TokenWalk, FollowsTheTokenFromItsDeployToItsHolders) {
    TokenWorld world;
    add_small_token(world);
    std::vector<HolderTxo> rows;
    qv_clasp_trace_token_rows(out(1), rows, 0);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].outpoint, out(3, 1)) << "the last output that was pushed comes first";
    EXPECT_EQ(rows[1].txid, tx_number(2));
    EXPECT_EQ(rows[1].vout, 0U);
    EXPECT_EQ(rows[1].lots, "300");
    EXPECT_EQ(rows[1].op, "transfer");
    EXPECT_EQ(rows[1].owner, person(1));
    EXPECT_EQ(rows[1].owner_hash, person_hash(1));
    std::string type;
    Bytes body;
    EXPECT_TRUE(qv_clasp_cache_get(out(1), type, body)) << "bodies met on the way are kept";
}

TEST(TokenWalk, ClimbsFromALaterOutputAndVisitsNothingTwice) {
    TokenWorld world;
    add_small_token(world);
    EXPECT_EQ(walk(out(3, 1)), (Holdings{{out(2), "300"}, {out(3, 1), "700"}}));
    EXPECT_EQ(world.server.count("GET", TokenWorld::spent_path(3, 1)), 1U);
}

TEST(TokenWalk, WhichOutputsOfASpenderBelongToTheToken) {
    TokenWorld world;
    world.add_deploy(1, person_hash(0), "1000");
    world.add_spend(1, 0, 2);
    Json moved = token_output(person_hash(5), transfer(out(1), "5"));
    moved["n"] = 6;  // its own number, not its place
    world.add_tx(
        2, {token_output(person_hash(1), transfer(out(1), "1")),
            token_output(person_hash(2), transfer(out(0x99), "2")),
            token_output(person_hash(3), transfer("", "3")),
            token_output(person_hash(4), sandbox::deploy_mint_body("X", "4", 0, "", "")), nullptr, 7, moved});
    EXPECT_EQ(walk(out(1)), (Holdings{{out(2, 0), "1"}, {out(2, 2), "3"}, {out(2, 6), "5"}}));
    EXPECT_EQ(world.server.count("GET", "/woc/tx/" + tx_number(0x99)), 0U)
        << "the other token is not followed";
}

TEST(TokenWalk, ABranchEndsWhereTheChainIsNotKnown) {
    const std::string spender = R"({"txid":")" + tx_number(2) + "\"}";
    const auto after = [](int spent_status, const std::string& spent, int tx_status, const std::string& tx) {
        TokenWorld world;
        qv_clasp_clear_spend_cache();
        world.add_deploy(1, person_hash(0), "1000");
        world.server.on("GET", TokenWorld::spent_path(1, 0), spent, spent_status);
        world.server.on("GET", "/woc/tx/" + tx_number(2), tx, tx_status);
        return walk(out(1));
    };
    EXPECT_EQ(after(404, "", 200, ""), (Holdings{{out(1), "1000"}})) << "unspent";
    EXPECT_EQ(after(500, "x", 200, ""), Holdings{}) << "spend unknown";
    EXPECT_EQ(after(200, spender, 500, ""), Holdings{}) << "spender unknown";
    EXPECT_EQ(after(200, spender, 200, R"({"vout":{}})"), Holdings{}) << "spender without outputs";
    TokenWorld world;
    EXPECT_EQ(walk(tx_number(1)), Holdings{}) << "a bare txid is no token id";
    EXPECT_EQ(world.server.requests().size(), 0U);
    world.add_deploy(4, person_hash(0), "1000");
    EXPECT_EQ(walk(tx_number(4) + "_00").size(), 1U)
        << "one output is one holding, however its number is written";
}

TEST(TokenWalk, StopsAfter256PopsAndTheOwnedWalkAfter48) {
    TokenWorld world;
    // A chain of single transfers: the pop of number n reads transaction n.
    world.add_deploy(1, person_hash(0), "9");
    for (unsigned n = 1; n <= 300; ++n) {
        world.add_spend(n, 0, n + 1);
        world.add_tx(n + 1, {token_output(person_hash(n), transfer(out(1), "9"))});
    }
    std::vector<LocalOrd> found;
    qv_clasp_trace_owned(out(1), {person(1)}, found, true, 0);
    EXPECT_EQ(world.server.count("GET", TokenWorld::spent_path(48, 0)), 1U);
    EXPECT_EQ(world.server.count("GET", TokenWorld::spent_path(49, 0)), 0U);
    EXPECT_EQ(walk(out(1)), Holdings{});
    EXPECT_EQ(world.server.count("GET", TokenWorld::spent_path(256, 0)), 1U);
    EXPECT_EQ(world.server.count("GET", TokenWorld::spent_path(257, 0)), 0U);
}
