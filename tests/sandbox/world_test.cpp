#include "sandbox/world.h"

#include <gtest/gtest.h>

#include <map>

#include "base/decimal_text.h"
#include "base/hex.h"
#include "sandbox/scripts.h"
#include "sandbox/service_reply.h"
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

TEST(SandboxWorld, IsTheSameForASeedAndAnotherForAnother) {
    const Made first(options_of(25, 7));
    const Made again(options_of(25, 7));
    const Made other(options_of(25, 8));
    EXPECT_EQ(first.chain.txids(), again.chain.txids());
    EXPECT_EQ(first.world.main_wallet.mnemonic, again.world.main_wallet.mnemonic);
    EXPECT_NE(first.world.token_id, other.world.token_id);
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
    void sign(const std::string& text) { body["sig"] = base64(sign_compact(identity, message_digest(text))); }
};

TEST(SandboxDirectory, TakesAnHonestClaimAndRefusesOneWithAFault) {
    Directory honest;
    EXPECT_EQ(honest.claim(Claimant().body), "");
    EXPECT_EQ(honest.claim(Claimant().body), "") << "one's own name can be claimed again";
    for (const auto& [key, kind] : {std::pair{"address", "payment"}, std::pair{"ordAddress", "ordinal"},
                                    std::pair{"bnAddress", "bn"}}) {
        Paymail row;
        std::string found;
        ASSERT_TRUE(honest.by_address(json_text(Claimant().body, key), row, found)) << key;
        EXPECT_EQ(found, kind);
        EXPECT_EQ(row.alias, "miller");
    }
    const std::string other_pub = qv_clasp_hex_encode(key_from_priv(Bytes(32, 9)).pub);
    struct Fault {
        const char* key;
        Json value;
        const char* error;
    };
    const std::vector<Fault> faults{
        {"alias", "other", "bad signature"},
        {"alias", "Miller", "bad alias"},
        {"alias", 5, "claim has no text alias"},
        {"pubkey", other_pub, "bad signature"},
        {"pubkey", "02", "bad pubkey"},
        {"address", key_from_priv(Bytes(32, 9)).address, "bad signature"},
        {"address", "1abc", "bad address"},
        {"avatar", "x_0", "bad signature"},
        {"ordAddress", key_from_priv(Bytes(32, 9)).address, "bad signature"},
        {"bnPub", other_pub, "bnAddress is not that of bnPub"},
        {"ts", 1700000001, "bad signature"},
        {"ts", "1700000000", "bad timestamp"},
        {"sig", std::string(88, 'A'), "bad signature form"},
    };
    for (const Fault& fault : faults) {
        Directory directory;
        Claimant claimant;
        claimant.body[fault.key] = fault.value;
        EXPECT_EQ(directory.claim(claimant.body), fault.error)
            << fault.key << " " << dump_json(fault.value, -1);
        EXPECT_EQ(directory.claims(), 0U);
    }
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

Json request(const std::string& id) {
    return {{"id", id}, {"app", "The Bursaria"}, {"instance", "C:\\here"}, {"ts", 1700000000}};
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
