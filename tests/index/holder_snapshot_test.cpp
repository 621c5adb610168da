#include "index/holder_snapshot.h"

#include <gtest/gtest.h>

#include "index/own_addresses.h"
#include "tests/index/token_world.h"
#include "wallet/wallet_document.h"

namespace {

const std::string NO_RIGHT = "error: this wallet does not hold that token and did not mint it.";
const std::string CHANGED = "error: wallet changed.";
const std::string TOKEN = out(1);

std::string pubkey(char digit) {
    return "02" + std::string(64, digit);
}
std::string ordinal_address(unsigned index) {
    return one_wallet_key("5'/0/" + std::to_string(index)).address;
}
std::string identity_pub() {
    return qv_clasp_hex_encode(one_wallet_key("100'/0/0").pub);
}

// A bound wallet whose ordinal chain is at index 2, and a token with that wallet among its holders.
struct SnapshotWorld : TokenWorld {
    HolderBoard board;
    Json holders = Json::array();

    explicit SnapshotWorld(const Json& owned = Json::array()) {
        Json document = one_wallet_document();
        document["recv"] = {0, 0, 0, 0, 0, 2};
        document["ord_owned"] = owned;
        bind_one_wallet(home, document);
    }
    void add_holder(const std::string& address, const std::string& lots) {
        holders.push_back({{"address", address}, {"amt", lots}});
    }
    void add_own_lots(const std::string& lots = "1") { add_holder(receive_address(0), lots); }
    std::string take(const std::string& token_id = TOKEN) {
        add_holders(1, holders);
        return qv_clasp_snapshot_holders(token_id, board);
    }
    const HolderRow& row(const std::string& who) const {
        for (const HolderRow& row : board.rows) {
            if (row.who == who) return row;
        }
        static const HolderRow NONE;
        ADD_FAILURE() << "no row of " << who;
        return NONE;
    }
    std::vector<std::string> order() const {
        std::vector<std::string> names;
        for (const HolderRow& row : board.rows) names.push_back(row.who);
        return names;
    }
};

Json local_name(const std::string& pub, const std::string& address, const std::string& ord_address) {
    return {{"pubkey", pub}, {"address", address}, {"ordAddress", ord_address}};
}

}  // namespace

TEST(HolderSnapshot, RefusesWithoutAnIdOrAWallet) {
    TokenWorld world;
    HolderBoard board;
    board.rows.resize(3);
    board.loaded = true;
    EXPECT_EQ(qv_clasp_snapshot_holders(tx_number(1), board),
              "error: token id looks wrong (need deploy origin txid_vout).");
    EXPECT_EQ(board.token_id, tx_number(1));
    EXPECT_TRUE(board.rows.empty());
    EXPECT_FALSE(board.loaded);
    start_program_in(world.home);
    EXPECT_EQ(qv_clasp_snapshot_holders(TOKEN, board), "error: connect a Clasp wallet first.");
    EXPECT_EQ(world.server.requests().size() + world.home_host.requests().size(), 0U);
}

TEST(HolderSnapshot, MergesWalkAndIndexerIntoOneBoard) {
    SnapshotWorld world;
    world.add_deploy(1, person_hash(0), "1000");
    world.add_spend(1, 0, 2);
    const std::string named =
        R"({"p":"bsv-20","op":"transfer","id":")" + TOKEN + R"(","amt":"300","name":"Chain name"})";
    world.add_tx(2, {token_output(person_hash(1), named),
                     token_output(one_wallet_key("1'/0/0").hash160, transfer(TOKEN, "600"))});
    world.add_holder(person(1), "999");  // the walk's figure stands
    world.add_holder(person(2), "100");  // the walk did not reach him
    ASSERT_EQ(world.take(), "");
    EXPECT_TRUE(world.board.loaded);
    EXPECT_EQ(world.board.token_id, TOKEN);
    EXPECT_EQ(world.board.token_name, "Chain name") << "the indexer gave none";
    EXPECT_EQ(world.board.total_lots, "1000");
    EXPECT_EQ(world.board.reserve_lots, "600");
    EXPECT_EQ(world.board.in_market_lots, "400");
    EXPECT_EQ(world.order(), (std::vector<std::string>{person(1), person(2), receive_address(0)}));
    EXPECT_EQ(world.row(person(1)).lots, "300");
    EXPECT_EQ(world.row(person(1)).dest, person(1));
    EXPECT_TRUE(world.row(receive_address(0)).reserve);
    EXPECT_EQ(world.row(receive_address(0)).dest, "");
}

TEST(HolderSnapshot, OnlyAHolderOrTheMinterMayLook) {
    const auto minted = [](const Json& row) {
        SnapshotWorld world(Json::array({row}));
        world.add_holder(person(1), "5");
        world.home.write("/ord_cache/" + out(0x77) + ".bin", transfer(TOKEN, "5"));
        qv_clasp_wipe_session();
        return world.take();
    };
    EXPECT_EQ(minted({{"origin", TOKEN}, {"created", true}}), "");
    EXPECT_EQ(minted({{"origin", TOKEN}, {"created", false}}), NO_RIGHT);
    EXPECT_EQ(minted({{"origin", out(0x77)}, {"created", true}}), "") << "its inscription names the token";
    EXPECT_EQ(minted({{"origin", out(0x77)}, {"created", false}}), NO_RIGHT);
    EXPECT_EQ(minted({{"origin", out(0x78)}, {"created", true}}), NO_RIGHT);
    SnapshotWorld world(Json::array({{{"origin", TOKEN}, {"created", true}}}));
    qv_clasp_wipe_session();
    EXPECT_EQ(world.take(), "") << "minted, and no row at all";
    EXPECT_TRUE(world.board.loaded);
    EXPECT_EQ(world.board.total_lots, "0");
}

TEST(HolderSnapshot, EveryOwnAddressCountsAsReserve) {
    SnapshotWorld world(Json::array({{{"origin", out(5)}, {"address", person(40)}},
                                     {{"origin", out(6)}, {"address", person(41)}, {"hidden", true}}}));
    const std::vector<std::string> own = {receive_address(0), one_wallet_key("100'/0/0").address,
                                          ordinal_address(0), ordinal_address(1),
                                          ordinal_address(2), person(40)};
    for (const std::string& address : own) world.add_holder(address, "10");
    world.add_holder(person(41), "1");          // hidden: not the wallet's
    world.add_holder(receive_address(1), "1");  // beyond the counter
    world.add_holder(person(42), "1");
    world.add_directory(person(42), {{"alias", "me"}, {"pubkey", ascii_upper(identity_pub())}});
    ASSERT_EQ(world.take(), "");
    EXPECT_EQ(world.board.reserve_lots, "61");
    EXPECT_EQ(world.board.in_market_lots, "2");
    EXPECT_TRUE(world.row("me@" + settings().home_domain).reserve)
        << "the wallet's identity under another address";
    for (const std::string& address : own) EXPECT_TRUE(world.row(address).reserve) << address;
}

TEST(HolderSnapshot, AddressesOfOnePersonAreOneRow) {
    SnapshotWorld world;
    world.home.write("/quorvelle_paymail.json",
                     Json{{"names", {{"dora", local_name(pubkey('d'), person(1), person(2))}}}});
    world.add_own_lots();
    world.add_holder(person(1), "5");  // by the local registry
    world.add_holder(person(2), "6");  // his token address
    world.add_holder(person(3), "7");  // by the remote directory
    world.add_directory(person(3),
                        {{"alias", "Dora"}, {"pubkey", ascii_upper(pubkey('d'))}, {"address", person(8)}});
    world.add_holder(person(4), "8");
    world.add_holder(person(5), "9");
    world.add_directory(person(4), {{"alias", "eve"}, {"pubkey", pubkey('e')}, {"address", person(9)}});
    world.add_directory(person(5), {{"alias", "eve2"}, {"pubkey", pubkey('e')}, {"address", person(10)}});
    ASSERT_EQ(world.take(), "");
    EXPECT_EQ(world.board.rows.size(), 3U);
    const HolderRow& dora = world.row("dora@" + settings().home_domain);
    EXPECT_EQ(dora.lots, "18");
    EXPECT_EQ(dora.pubkey, pubkey('d'));
    EXPECT_EQ(dora.dest, person(1)) << "the first answer stands";
    const HolderRow& eve = world.row("eve@" + settings().home_domain);
    EXPECT_EQ(eve.lots, "17");
    EXPECT_EQ(eve.dest, person(9));
    EXPECT_EQ(world.home_host.count("GET", person(1)), 0U) << "the local registry knew all of him";
}

TEST(HolderSnapshot, WhereAHolderIsPaid) {
    const std::string current = ordinal_address(2);
    const std::string owner = person(1), paid = person(9), resolved = person(8);
    const std::string alias = "bob@" + settings().home_domain;
    const auto bob = [](const std::string& address) { return Json{{"alias", "bob"}, {"address", address}}; };
    struct Case {
        const char* what;
        Json directory;
        std::string resolves_to, who, dest;
    };
    const Case cases[] = {
        {"nobody knows him", nullptr, "", owner, owner},
        {"a token address without an alias", {{"address", paid}, {"kind", "ordinal"}}, "", owner, ""},
        {"a payment address", bob(paid), "", alias, paid},
        {"an alias that resolves", {{"alias", "bob"}, {"kind", "ordinal"}}, resolved, alias, resolved},
        {"an alias that does not", {{"alias", "bob"}}, "", alias, ""},
        {"it resolves to this wallet's ordinals", {{"alias", "bob"}}, current, alias, ""},
        {"his payment address is this wallet's", bob(current), resolved, alias, resolved},
        {"a payment address that is none", bob("carol"), resolved, alias, resolved},
        {"types that are wrong", {{"alias", 5}, {"address", {}}, {"pubkey", nullptr}}, "", owner, owner},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        SnapshotWorld world;
        world.add_own_lots();
        world.add_holder(owner, "5");
        if (!c.directory.is_null()) world.add_directory(owner, c.directory);
        if (!c.resolves_to.empty())
            world.home_host.on("GET", "/api/bsvalias/address/" + alias,
                               R"({"address":")" + c.resolves_to + "\"}");
        ASSERT_EQ(world.take(), "");
        EXPECT_EQ(world.row(c.who).dest, c.dest);
        EXPECT_EQ(world.row(c.who).lots, "5");
    }
}

TEST(HolderSnapshot, OrderOfTheBoard) {
    SnapshotWorld world;
    world.add_own_lots("1000000");
    for (const auto& [number, lots] :
         {std::pair<unsigned, const char*>{1, "9"}, {2, "10"}, {3, "10"}, {4, "10"}}) {
        world.add_holder(person(number), lots);
    }
    world.add_directory(person(2), {{"alias", "zoe"}, {"address", person(9)}});
    world.add_directory(person(3), {{"alias", "amy"}, {"address", person(9)}});
    ASSERT_EQ(world.take(), "");
    const std::string at = "@" + settings().home_domain;
    EXPECT_EQ(world.order(),
              (std::vector<std::string>{person(4), "amy" + at, "zoe" + at, person(1), receive_address(0)}));
}

TEST(HolderSnapshot, AWalletSwitchedMeanwhileEndsIt) {
    const std::string moments[] = {"/api/bsv20/id/" + TOKEN + "/holders", "/api/bsv20/id/" + TOKEN,
                                   "/woc/tx/" + tx_number(1), "/api/paymail/address/" + person(1),
                                   "/api/bsvalias/address/bob@" + settings().home_domain};
    for (const std::string& moment : moments) {
        SCOPED_TRACE(moment);
        SnapshotWorld world;
        world.add_own_lots();
        world.add_holder(person(1), "5");
        world.add_directory(person(1), {{"alias", "bob"}});
        const auto switch_wallet = [&moment](const ScriptedRequest& request, ScriptedAnswer&) {
            if (request.path != moment) return false;
            const WalletLock lock = qv_clasp_lock_wallet();  // which nobody holds during a request
            qv_clasp_wipe_session();
            return false;
        };
        world.server.on_any(switch_wallet);
        world.home_host.on_any(switch_wallet);
        EXPECT_EQ(world.take(), CHANGED);
        EXPECT_EQ(world.board.token_id, TOKEN);
    }
}
