// What the wallet is told of its tokens, with the indexer there, never there and gone later; and sizes.
#include <algorithm>
#include <chrono>

#include "base/text.h"
#include "index/ordinal_listing.h"
#include "sandbox/sighash.h"
#include "tests/journeys/journey.h"

using namespace sandbox;

namespace {

class TokenJourney : public Journey {
 protected:
    KeyPair stranger = key_from_priv(Bytes(32, 7));
    std::string foreign_id;

    Coin put(const TxOutput& output) { return {chain().fund({output}), 0, output.sats, output.script, 0}; }
    Coin put_deploy(const Hash160& owner, const std::string& name, const std::string& amt) {
        return put({1, token_script(owner, deploy_mint_body("SYM", amt, 0, "", name))});
    }
    static TxOutput transfer(const Hash160& owner, const Coin& deploy, const std::string& amt) {
        return {1, token_script(owner, transfer_body(deploy.txid + "_0", amt))};
    }
    // Spends a token output into others; the stranger pays the fee.
    void move(const Coin& token, const KeyPair& owner, std::vector<TxOutput> outputs) {
        const Coin money = put({10'000, p2pkh_script(stranger.hash160)});
        Transaction tx;
        tx.outputs = std::move(outputs);
        tx.outputs.push_back({9'000, p2pkh_script(stranger.hash160)});
        add_input(tx, token);
        add_input(tx, money);
        sign_transaction(tx, {{token, owner}, {money, stranger}});
        ASSERT_TRUE(chain().submit(tx.raw).accepted);
    }
    void remember(const Coin& deploy, const KeyPair& owner, const Json& more) {
        Json row{{"origin", deploy.txid + "_0"},
                 {"txid", deploy.txid},
                 {"vout", 0},
                 {"type", "application/bsv-20"},
                 {"address", owner.address}};
        row.update(more);
        const std::string path = "/wallets/" + world().main_wallet.id + "/wallet.json";
        Json document = home.read_json(path);
        document["ord_owned"].push_back(row);
        home.write(path, document);
    }

    // Tokens beside the world's: one bought from a stranger, one minted here of which every lot is sold, and
    // one that the user has hidden.
    void make_tokens() {
        const KeyPair own = world().main_wallet.ordinal(1);
        const Coin foreign = put_deploy(stranger.hash160, "Foreign", "1000");
        foreign_id = foreign.txid + "_0";
        move(foreign, stranger,
             {transfer(own.hash160, foreign, "50"), transfer(stranger.hash160, foreign, "950")});
        const Coin minted = put_deploy(own.hash160, "All Sold", "300");
        move(minted, own, {transfer(stranger.hash160, minted, "300")});
        remember(minted, own, {{"name", "All Sold"}, {"created", true}});
        remember(put_deploy(own.hash160, "Hidden", "9"), own, {{"hidden", true}});
        chain().mine();
    }

    void expect_tokens(const std::vector<std::string>& expected) {
        std::vector<TokenRow> rows;
        EXPECT_EQ(qv_clasp_list_tokens(rows, true), "");
        std::vector<std::string> got;
        for (const TokenRow& row : rows)
            got.push_back(row.name + "|" + row.lots + "|" + (row.minted ? "minted" : ""));
        EXPECT_EQ(got, expected);
    }
    std::vector<std::string> all_tokens(const std::string& foreign_name) {
        std::vector<std::string> tokens{"All Sold||minted", foreign_name + "|50|",
                                        "Barley Shares|" + world().reserve_lots + "|minted"};
        std::sort(tokens.begin(), tokens.end());
        return tokens;
    }
};

TEST_F(TokenJourney, TheListOutlivesTheIndexer) {
    open(4, 9);
    make_tokens();
    connect();
    expect_tokens(all_tokens("Foreign"));
    fail("ordinals", "down");
    expect_tokens(all_tokens("Foreign"));
    restart();
    expect_tokens(all_tokens("Foreign"));
}

TEST_F(TokenJourney, AnIndexerThatWasNeverThere) {
    open(4, 9);
    make_tokens();
    connect();
    fail("ordinals", "html500");
    // Its transfer is all that the chain shows of the bought token, and that does not bear its name.
    expect_tokens(all_tokens(foreign_id.substr(0, 8) + "..." + foreign_id.substr(60)));
}

TEST_F(TokenJourney, TwoThousandOrdinalsOnFortyAddressesInOneSweep) {
    constexpr std::uint32_t ADDRESSES = 33;  // with five for change, the current one and the identity: 40
    constexpr std::size_t ORDINALS = 2'000;
    open(2);
    const std::string path = "/wallets/" + world().main_wallet.id + "/wallet.json";
    Json document = home.read_json(path);
    document["recv"][5] = ADDRESSES - 1;
    home.write(path, document);
    std::vector<Hash160> owners;
    for (std::uint32_t i = 0; i < ADDRESSES; ++i) owners.push_back(world().main_wallet.ordinal(i).hash160);
    std::vector<TxOutput> outputs;
    for (std::size_t i = 0; i < ORDINALS; ++i) {
        const std::string text = "thing " + std::to_string(i);
        outputs.push_back(
            {1, inscription_script(owners[i % ADDRESSES], "text/plain", Bytes(text.begin(), text.end()))});
        if (outputs.size() < 100) continue;
        chain().fund(outputs);
        outputs.clear();
    }
    connect();
    // The first sweep reads each content once; both look at each address's history.
    for (const std::size_t most_requests : {ORDINALS + 400, std::size_t{400}}) {
        box->clear_requests();
        const auto start = std::chrono::steady_clock::now();
        std::vector<QvClaspOrdRow> rows;
        EXPECT_EQ(qv_clasp_list_ordinals(rows), "");
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(100));
        EXPECT_GE(rows.size(), ORDINALS);
        EXPECT_EQ(box->count("GET", "/api/txos/address/"), 40U);
        EXPECT_EQ(box->count("GET", "/api/bsv20/1"), 40U);
        EXPECT_LE(box->requests().size(), most_requests);
        RecordProperty("requests", static_cast<int>(box->requests().size()));
    }
}

}  // namespace
