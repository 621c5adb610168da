#include "index/token_list.h"

#include <gtest/gtest.h>

#include "tests/index/sweep_world.h"

namespace {

struct Listed {
    std::string error;
    std::vector<std::string> rows;  // id, name, lots, "minted"
};
Listed list_tokens(bool refresh) {
    std::vector<TokenRow> rows{{"stale", "", "", false}};
    Listed listed;
    listed.error = qv_clasp_list_tokens(rows, refresh);
    for (const TokenRow& row : rows)
        listed.rows.push_back(row.token_id + "|" + row.name + "|" + row.lots +
                              (row.minted ? "|minted" : "|"));
    return listed;
}
using Rows = std::vector<std::string>;

}  // namespace

TEST(TokenList, FromWhatTheWalletRemembersAlone) {
    SweepWorld world(
        Json::array({owned_row(out(1)), owned_row(out(2), {{"created", true}}), owned_row(out(3)),
                     owned_row(out(4)), owned_row(out(5), {{"hidden", true}, {"created", true}}),
                     owned_row(out(6), {{"name", "Not cached"}}), owned_row(out(7), {{"name", "Own label"}}),
                     owned_row(out(8))}));
    const auto cache = [&](unsigned tx, const std::string& body) {
        world.cache_body(out(tx), "application/bsv-20", body);
    };
    cache(1, transfer(out(0x21), "5"));
    cache(2, sandbox::deploy_mint_body("TWO", "9", 0, "", "Zwei"));
    cache(3, transfer("", "5"));
    cache(4, transfer("too-short", "5"));
    cache(5, transfer(out(0x21), "5"));
    cache(7, transfer(out(0x20), "5"));
    cache(8, "just a text");
    const Listed listed = list_tokens(false);
    EXPECT_EQ(listed.error, "");
    EXPECT_EQ(listed.rows, (Rows{out(0x21) + "|00000000...0021_0||", out(0x20) + "|Own label||",
                                 out(2) + "|Zwei||minted"}));
    EXPECT_TRUE(world.server.requests().empty() && world.home_host.requests().empty());
}

TEST(TokenList, OwnLotsComeFromASnapshotOfEachToken) {
    SweepWorld world(Json::array({owned_row(out(1), {{"created", true}})}));
    world.cache_body(out(1), "application/bsv-20", sandbox::deploy_mint_body("SOLD", "9", 0, "", "Sold Out"));
    world.add_deploy(1, world.address_hash, "9", "Sold Out");
    world.add_spend(1, 0, 2);
    world.add_tx(2, {token_output(person_hash(1), transfer(out(1), "9"))});
    // Held, and known to the indexer only.
    world.list_token(world.address, 5, 0, out(0x31), "70");
    world.list_token(world.address, 6, 0, out(0x30), "80");
    world.add_holders(0x31, Json::array({{{"address", world.address}, {"amt", "70"}},
                                         {{"address", person(2)}, {"amt", "5"}}}));
    for (unsigned token : {0x30U, 0x31U})
        world.server.on("GET", "/api/bsv20/id/" + out(token), R"({"name":"Same name"})");
    const Listed listed = list_tokens(true);
    EXPECT_EQ(listed.error, "");
    EXPECT_EQ(listed.rows,
              (Rows{out(0x30) + "|Same name||", out(0x31) + "|Same name|70|", out(1) + "|Sold Out||minted"}))
        << "no snapshot, a reserve, and a mint that is sold out";
}
