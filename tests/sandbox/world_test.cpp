#include "sandbox/world.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <algorithm>
#include <map>

#include "base/decimal_text.h"
#include "base/hex.h"
#include "sandbox/scripts.h"
#include "sandbox/wallet_files.h"
#include "tests/support/test_home.h"

namespace {

using namespace sandbox;

WorldOptions options_of(int holders, std::uint64_t seed = 1) {
    WorldOptions options;
    options.holders = holders;
    options.seed = seed;
    options.home_domain = "barley.test";
    options.write_files = false;
    return options;
}

struct Made {
    Chain chain;
    Directory directory;
    World world;
    explicit Made(const WorldOptions& options) { world = make_world(options, chain, directory); }
};

std::string token_lots(const TxOutput& output, const std::string& outpoint, const std::string& token_id) {
    const Json token = read_script(output.script).token;
    const bool is_deploy = json_text(token, "op") == "deploy+mint" && outpoint == token_id;
    const bool is_transfer = json_text(token, "op") == "transfer" && json_text(token, "id") == token_id;
    return is_deploy || is_transfer ? json_text(token, "amt") : "";
}

// Lots by address, in the unspent outputs; and that no transaction makes or loses a lot, the deploy apart.
std::map<std::string, std::string> balances(const Chain& chain, const std::string& token_id) {
    std::map<std::string, std::string> by_address;
    std::map<std::string, std::string> by_outpoint;
    for (const Transaction& tx : chain.all()) {
        std::string in = "0";
        std::string out = "0";
        for (const TxInput& input : tx.inputs) {
            const auto spent = by_outpoint.find(input.txid + "_" + std::to_string(input.vout));
            if (spent != by_outpoint.end()) in = dec_add(in, spent->second);
        }
        for (std::uint32_t vout = 0; vout < tx.outputs.size(); ++vout) {
            const std::string outpoint = tx.txid + "_" + std::to_string(vout);
            const std::string lots = token_lots(tx.outputs[vout], outpoint, token_id);
            if (lots.empty()) continue;
            EXPECT_EQ(tx.outputs[vout].sats, 1) << outpoint;
            by_outpoint[outpoint] = lots;
            out = dec_add(out, lots);
            if (chain.spender(tx.txid, vout)) continue;
            std::string& held = by_address[address_of(*read_script(tx.outputs[vout].script).owner)];
            held = dec_add(held, lots);
        }
        if (tx.txid == token_id.substr(0, 64)) continue;
        EXPECT_EQ(in, out) << tx.txid;
    }
    return by_address;
}

// What the board must make of the balances: the directory's answers for each address, folded by identity key.
struct Row {
    std::string who, dest, pubkey, lots;
};
std::vector<Row> fold(const World& world, const Directory& directory,
                      const std::map<std::string, std::string>& by_address) {
    const std::string own_pub = qv_clasp_hex_encode(world.main_wallet.identity().pub);
    const std::string own_coin_address = world.main_wallet.receive(0).address;
    std::map<std::string, Row> rows;
    for (const auto& [owner, lots] : by_address) {
        Paymail entry;
        std::string kind;
        directory.by_address(owner, entry, kind);
        Row& row = rows[entry.pubkey.empty() ? owner : entry.pubkey];
        row.lots = dec_add(row.lots, lots);
        row.pubkey = entry.pubkey;
        row.who = entry.alias.empty() ? owner : entry.alias + "@" + world.options.home_domain;
        row.dest = entry.address;
        const bool own = entry.pubkey == own_pub || owner == own_coin_address;
        if (own) {
            row.dest.clear();
        } else if (entry.alias.empty()) {
            row.dest = kind == "ordinal" || kind == "bn" ? "" : owner;
        } else if (row.dest.empty()) {
            Paymail named;
            EXPECT_TRUE(directory.by_alias(entry.alias, named));
            row.dest = named.address;
        }
    }
    std::vector<Row> list;
    for (const auto& [key, row] : rows) list.push_back(row);
    return list;
}

void expect_consistent(const Made& made) {
    const World& world = made.world;
    const auto by_address = balances(made.chain, world.token_id);
    std::vector<Row> rows = fold(world, made.directory, by_address);
    ASSERT_EQ(rows.size(), world.holders.size());
    std::map<std::string, Row> by_who;
    for (const Row& row : rows) by_who[row.who] = row;
    std::size_t addresses = 0;
    std::string total = "0";
    for (const Holder& holder : world.holders) {
        const Row& row = by_who[holder.who];
        EXPECT_EQ(row.lots, holder.lots) << holder.who;
        EXPECT_EQ(row.dest, holder.dest) << holder.who << " " << holder.kind;
        EXPECT_EQ(row.pubkey, holder.pubkey) << holder.who;
        ASSERT_EQ(holder.keys.size(), holder.owners.size());
        for (std::size_t i = 0; i < holder.owners.size(); ++i) {
            EXPECT_EQ(holder.keys[i].address, holder.owners[i]);
            EXPECT_TRUE(by_address.contains(holder.owners[i])) << holder.owners[i];
        }
        addresses += holder.owners.size();
        total = dec_add(total, holder.lots);
    }
    EXPECT_EQ(addresses, by_address.size());
    EXPECT_EQ(total, world.total_lots);
    EXPECT_EQ(dec_add(world.in_market_lots, world.reserve_lots), world.total_lots);
    const auto deploy = made.chain.find(world.token_id.substr(0, 64));
    ASSERT_TRUE(deploy.has_value());
    EXPECT_EQ(token_lots(deploy->outputs[0], world.token_id, world.token_id), world.total_lots);
    for (const Transaction& tx : made.chain.all()) EXPECT_GT(tx.height, 0);
}

class WorldOfSize : public testing::TestWithParam<int> {};

TEST_P(WorldOfSize, TheBoardIsWhatTheChainAndTheDirectoryMakeIt) {
    const Made made(options_of(GetParam()));
    EXPECT_EQ(made.world.holders.size(), static_cast<std::size_t>(GetParam()) + 1);
    expect_consistent(made);
    const auto board_order = [](const Holder& a, const Holder& b) {
        if ((a.kind == "reserve") != (b.kind == "reserve")) return b.kind == "reserve";
        const int lots = dec_cmp(a.lots, b.lots);
        return lots != 0 ? lots > 0 : a.who < b.who;
    };
    EXPECT_TRUE(std::is_sorted(made.world.holders.begin(), made.world.holders.end(), board_order));
}

INSTANTIATE_TEST_SUITE_P(Sizes, WorldOfSize, testing::Values(0, 1, 5, 25, 61, 2000));

TEST(SandboxWorld, HasHoldersOfEveryKind) {
    const Made made(options_of(25));
    std::map<std::string, int> kinds;
    bool several_outputs = false;
    for (const Holder& holder : made.world.holders) {
        ++kinds[holder.kind];
        const bool payable = holder.kind != "reserve" && holder.kind != "token address";
        EXPECT_EQ(!holder.dest.empty(), payable) << holder.kind;
        EXPECT_EQ(holder.owners.size(), holder.kind == "two addresses" ? 2U : 1U) << holder.kind;
        EXPECT_EQ(dec_cmp(holder.lots, "3") <= 0, holder.kind == "dust");
        if (holder.kind != "address") continue;
        several_outputs = several_outputs || made.chain.unspent(holder.owners[0]).size() > 1;
    }
    EXPECT_EQ(kinds.size(), 6U);
    EXPECT_EQ(kinds["reserve"], 1);
    EXPECT_TRUE(several_outputs);
}

// A reader that follows the token for a limited number of steps sees a part of a large world only; no address
// may then hold one output within its reach and one beyond.
TEST(SandboxWorld, InALargeWorldAnAddressHoldsOneOutput) {
    const Made made(options_of(300));
    for (const Holder& holder : made.world.holders) {
        for (const std::string& owner : holder.owners)
            EXPECT_EQ(made.chain.unspent(owner).size(), 1U) << owner;
    }
}

TEST(SandboxWorld, IsTheSameForASeedAndAnotherForAnother) {
    const Made first(options_of(25, 7));
    const Made again(options_of(25, 7));
    const Made other(options_of(25, 8));
    EXPECT_EQ(first.chain.txids(), again.chain.txids());
    EXPECT_EQ(first.world.main_wallet.mnemonic, again.world.main_wallet.mnemonic);
    EXPECT_EQ(first.world.main_wallet.id, again.world.main_wallet.id);
    EXPECT_NE(first.world.token_id, other.world.token_id);
    EXPECT_NE(first.world.total_lots, other.world.total_lots);
    EXPECT_NE(first.world.main_wallet.mnemonic, other.world.main_wallet.mnemonic);
}

std::int64_t coins_on_receive(const Chain& chain, const Wallet& wallet) {
    std::int64_t sats = 0;
    for (std::uint32_t i = 0; i <= wallet.receive_index; ++i) {
        for (const Coin& coin : chain.unspent(wallet.receive(i).address)) {
            if (!read_script(coin.script).inscribed) sats += coin.sats;
        }
    }
    return sats;
}

TEST(SandboxWorld, TheWalletsHaveTheMoneyThatWasAskedFor) {
    for (const std::int64_t sats : {std::int64_t{0}, std::int64_t{7}, std::int64_t{123'456'789}}) {
        WorldOptions options = options_of(3);
        options.wallet_sats = sats;
        const Made made(options);
        EXPECT_EQ(coins_on_receive(made.chain, made.world.main_wallet), sats);
        EXPECT_EQ(coins_on_receive(made.chain, made.world.other_wallet), made.world.other_sats);
    }
    const Made made(options_of(3));
    EXPECT_GT(made.world.main_wallet.receive_index, 0U);
    EXPECT_GT(made.chain.unspent(made.world.main_wallet.receive(3).address).size(), 1U);
}

TEST(SandboxWorld, ATokenCanLieAmongTheCoins) {
    WorldOptions options = options_of(25);
    options.token_among_coins = true;
    const Made made(options);
    expect_consistent(made);
    std::size_t tokens = 0;
    for (const Coin& coin : made.chain.unspent(made.world.main_wallet.receive(0).address)) {
        if (read_script(coin.script).inscribed) ++tokens;
    }
    EXPECT_EQ(tokens, 1U);
}

TEST(SandboxWorld, TheFilesAreAWalletDocumentForEachWalletAndARegistryOfBoth) {
    const TestHome home;
    WorldOptions options = options_of(5);
    options.folder = home.folder();
    options.write_files = true;
    const Made made(options);
    const Wallet& main = made.world.main_wallet;

    const Json registry = home.read_json("/wallets.json");
    ASSERT_EQ(json_member(registry, "wallets").size(), 2U) << "with one wallet nobody would have to connect";
    EXPECT_EQ(json_text(registry["wallets"][0], "id"), main.id);
    EXPECT_TRUE(home.read("/wallets.json").ends_with("}\n"));

    const Json document = home.read_json("/wallets/" + main.id + "/wallet.json");
    EXPECT_TRUE(home.read("/wallets/" + main.id + "/wallet.json").ends_with("}"))
        << "no line break at the end";
    EXPECT_EQ(json_int(document, "version"), 2);
    EXPECT_EQ(json_text(document, "mnemonic"), main.mnemonic);
    EXPECT_TRUE(json_bool(document, "backup"));
    EXPECT_EQ(json_member(document, "recv"), Json({0, main.receive_index, 0, 0, 0, main.ordinal_index}));
    EXPECT_EQ(json_int(document, "show"), main.receive_index);
    EXPECT_EQ(json_text(document, "identity"), main.identity().address);
    EXPECT_EQ(json_text(document, "address"), main.receive(main.receive_index).address);
    EXPECT_EQ(json_text(document, "paymail"), main.paymail);
    ASSERT_EQ(json_member(document, "ord_owned").size(), 1U);
    const Json& deploy = document["ord_owned"][0];
    EXPECT_EQ(json_text(deploy, "origin"), made.world.token_id);
    EXPECT_EQ(json_text(deploy, "amt"), made.world.total_lots);
    EXPECT_TRUE(json_bool(deploy, "created"));

    const Json other = home.read_json("/wallets/" + made.world.other_wallet.id + "/wallet.json");
    EXPECT_FALSE(other.contains("ord_owned"));
    EXPECT_FALSE(other.contains("paymail"));
    EXPECT_EQ(json_text(legacy_document(main.identity()), "address"), main.identity().address);
}

// A claim as a wallet would send it, signed over the text that its fields make.
struct Claimant {
    KeyPair identity = key_from_priv(Bytes(32, 3));
    KeyPair bn = key_from_priv(Bytes(32, 4));
    Json body;

    Claimant() {
        body = {{"alias", "miller"},
                {"pubkey", qv_clasp_hex_encode(identity.pub)},
                {"address", key_from_priv(Bytes(32, 5)).address},
                {"avatar", ""},
                {"ordAddress", key_from_priv(Bytes(32, 6)).address},
                {"bnPub", qv_clasp_hex_encode(bn.pub)},
                {"bnAddress", bn.address},
                {"ts", 1700000000}};
        sign("QV-PAYMAIL-CLAIM|miller|" + json_text(body, "pubkey") + "|" + json_text(body, "address") +
             "||" + json_text(body, "ordAddress") + "|" + json_text(body, "bnPub") + "|" + bn.address +
             "|1700000000");
    }
    void sign(const std::string& text) {
        const Bytes rs = sign_compact(identity, message_digest(text));
        std::string base64(89, '\0');
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(base64.data()), rs.data(), 64);
        base64.resize(88);
        body["sig"] = base64;
    }
};

TEST(SandboxDirectory, TakesAnHonestClaimAndAnswersForAllItsAddresses) {
    Directory directory;
    const Claimant claimant;
    EXPECT_EQ(directory.claim(claimant.body), "");
    EXPECT_EQ(directory.claim(claimant.body), "") << "one's own name can be claimed again";
    EXPECT_EQ(directory.claims(), 2U);
    for (const auto& [key, kind] : {std::pair{"address", "payment"}, std::pair{"ordAddress", "ordinal"},
                                    std::pair{"bnAddress", "bn"}}) {
        Paymail row;
        std::string found;
        ASSERT_TRUE(directory.by_address(json_text(claimant.body, key), row, found)) << key;
        EXPECT_EQ(found, kind);
        EXPECT_EQ(row.alias, "miller");
        EXPECT_EQ(row.address, json_text(claimant.body, "address"));
    }
}

TEST(SandboxDirectory, AShorterClaimIsSignedOverAShorterText) {
    Claimant claimant;
    claimant.body.erase("bnPub");
    claimant.body.erase("bnAddress");
    const std::string start = "QV-PAYMAIL-CLAIM|miller|" + json_text(claimant.body, "pubkey") + "|" +
                              json_text(claimant.body, "address") + "||";
    claimant.sign(start + json_text(claimant.body, "ordAddress") + "|1700000000");
    EXPECT_EQ(Directory().claim(claimant.body), "");
    claimant.body.erase("ordAddress");
    EXPECT_EQ(Directory().claim(claimant.body), "bad signature");
    claimant.sign(start + "1700000000");
    EXPECT_EQ(Directory().claim(claimant.body), "");
}

TEST(SandboxDirectory, RefusesAClaimWithOneFault) {
    const std::string other_pub = qv_clasp_hex_encode(key_from_priv(Bytes(32, 9)).pub);
    struct Fault {
        const char* key;
        Json value;
        const char* error;
    };
    const std::vector<Fault> faults{
        {"alias", "other", "bad signature"},
        {"alias", "", "bad alias"},
        {"alias", "Miller", "bad alias"},
        {"alias", 5, "claim has no text alias"},
        {"pubkey", other_pub, "bad signature"},
        {"pubkey", "02", "bad pubkey"},
        {"address", key_from_priv(Bytes(32, 9)).address, "bad signature"},
        {"address", "1abc", "bad address"},
        {"avatar", "x_0", "bad signature"},
        {"avatar", nullptr, "claim has no text avatar"},
        {"ordAddress", key_from_priv(Bytes(32, 9)).address, "bad signature"},
        {"ordAddress", "", "bad ordAddress"},
        {"bnPub", other_pub, "bnAddress is not that of bnPub"},
        {"bnAddress", "", "bad bnAddress"},
        {"ts", 1700000001, "bad signature"},
        {"ts", "1700000000", "bad timestamp"},
        {"ts", 0, "bad timestamp"},
        {"ts", 1700000000.0, "bad timestamp"},
        {"sig", std::string(88, 'A'), "bad signature form"},
        {"sig", "", "bad signature form"},
    };
    for (const Fault& fault : faults) {
        Directory directory;
        Claimant claimant;
        claimant.body[fault.key] = fault.value;
        EXPECT_EQ(directory.claim(claimant.body), fault.error)
            << fault.key << " " << dump_json(fault.value, -1);
        EXPECT_EQ(directory.claims(), 0U);
    }
    EXPECT_EQ(Directory().claim(Json::array()), "claim is not an object");
    Claimant half;
    half.body.erase("bnPub");
    EXPECT_EQ(Directory().claim(half.body), "bnPub without bnAddress");
}

TEST(SandboxDirectory, ANameOfAnotherKeyIsTaken) {
    Directory directory;
    Paymail row;
    row.alias = "miller";
    row.pubkey = qv_clasp_hex_encode(key_from_priv(Bytes(32, 9)).pub);
    directory.put(row);
    EXPECT_EQ(directory.claim(Claimant().body), "miller is already taken");
    EXPECT_TRUE(directory.by_alias("miller", row));
    EXPECT_EQ(row.pubkey, qv_clasp_hex_encode(key_from_priv(Bytes(32, 9)).pub));
}

TEST(SandboxDirectory, ANewRowOfANameReplacesItsOldAddresses) {
    Directory directory;
    Paymail row;
    row.alias = "miller";
    row.address = "old";
    directory.put(row);
    row.address = "new";
    row.pays_by_name_only = true;
    directory.put(row);
    std::string kind;
    EXPECT_FALSE(directory.by_address("old", row, kind));
    ASSERT_TRUE(directory.by_address("new", row, kind));
    EXPECT_EQ(row.address, "") << "told by name only";
    ASSERT_TRUE(directory.by_alias("miller", row));
    EXPECT_EQ(row.address, "new");
    directory.set_role("key", "dev");
    EXPECT_EQ(directory.role("key"), "dev");
    EXPECT_EQ(directory.role("another"), "");
}

Json request(const std::string& id) {
    return {{"id", id}, {"app", "The Bursaria"}, {"instance", "C:\\here"}, {"ts", 1700000000}};
}

TEST(SandboxHandshake, EveryRequestGetsOneReply) {
    const TestHome home;
    EXPECT_EQ(answer_connects(home.root(), "w1"), 0) << "no folder yet";
    home.write("/connect/w100.req.json", request("w100"));
    home.write("/connect/w200.req.json", request("w200"));
    home.write("/connect/w200.rep.json", Json{{"ok", false}});
    EXPECT_EQ(answer_connects(home.root(), "w1"), 1);
    EXPECT_EQ(home.read_json("/connect/w100.rep.json"), Json({{"ok", true}, {"wallet_id", "w1"}}));
    EXPECT_EQ(home.read_json("/connect/w200.rep.json"), Json({{"ok", false}})) << "an old reply stays";
    EXPECT_FALSE(home.exists("/connect/w100.rep.json.tmp"));
    EXPECT_EQ(answer_connects(home.root(), "w2"), 0);
}

TEST(SandboxHandshake, WithoutAWalletTheReplyIsARefusal) {
    const TestHome home;
    home.write("/connect/w100.req.json", request("w100"));
    EXPECT_EQ(answer_connects(home.root(), ""), 1);
    EXPECT_EQ(home.read_json("/connect/w100.rep.json"), Json({{"ok", false}}));
}

TEST(SandboxHandshake, ARequestThatIsNotWholeWaits) {
    const TestHome home;
    const std::string whole = dump_json(request("w100"), 2);
    for (const std::string& part :
         {std::string(), whole.substr(0, 20), std::string("[]"), dump_json(request("w9"), 2)}) {
        home.write("/connect/w100.req.json", part);
        EXPECT_EQ(answer_connects(home.root(), "w1"), 0) << part;
    }
    EXPECT_FALSE(home.exists("/connect/w100.rep.json"));
    home.write("/connect/w100.req.json", whole);
    EXPECT_EQ(answer_connects(home.root(), "w1"), 1);
}

}  // namespace
