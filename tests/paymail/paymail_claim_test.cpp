#include "paymail/paymail_claim.h"

#include <gtest/gtest.h>

#include "base/hex.h"
#include "base/sinks.h"
#include "sandbox/service_reply.h"
#include "tests/support/fake_clock.h"
#include "tests/support/one_wallet.h"
#include "tests/support/scripted_server.h"
#include "wallet/name_registry.h"
#include "wallet/wallet_document.h"
#include "wallet/wallet_session.h"

namespace {

std::string identity_pub() {
    return qv_clasp_hex_encode(one_wallet_key("100'/0/0").pub);
}

// A bound wallet, loaded, and the family's host.
struct ClaimWorld {
    ScriptedServer host{ScriptedServer::Transport::Tls};
    TestHome home;
    FakeClock clock;
    std::vector<std::string> events;

    explicit ClaimWorld(const Json& document = one_wallet_document()) {
        home.use_settings(settings_on("http://127.0.0.1:1", "localhost:" + std::to_string(host.port())));
        bind_one_wallet(home, document);
        const WalletLock lock = qv_clasp_lock_wallet();
        EXPECT_TRUE(qv_clasp_load());
        qv_clasp_set_event_sink([this](const std::string& event) { events.push_back(event); });
    }
    ~ClaimWorld() {
        qv_clasp_set_event_sink({});
        const WalletLock lock = qv_clasp_lock_wallet();
        qv_clasp_wipe_session();
    }
    void write_names(const Json& names, const std::string& self = "") const {
        home.write("/quorvelle_paymail.json", Json{{"names", names}, {"self", self}});
    }
    Json registry() const { return home.read_json("/quorvelle_paymail.json"); }
    void sync() const {
        const WalletLock lock = qv_clasp_lock_wallet();
        qv_clasp_sync_paymail();
    }
};

}  // namespace

TEST(PaymailClaim, TheMessageAndTheBodyToTheByte) {
    const auto claim = [](std::string ord_address, std::string bn_pub, std::string bn_address) {
        return PaymailClaim{"eve", "02ab", "1Pay", "", ord_address, bn_pub, bn_address, 1790000000};
    };
    const std::string start = "QV-PAYMAIL-CLAIM|eve|02ab|1Pay||";
    const std::string body = R"({"address":"1Pay","alias":"eve","avatar":"",)";
    const std::string end = R"("pubkey":"02ab","sig":"SIG","ts":1790000000})";
    const std::string ord = R"("ordAddress":"1Ord",)", bn = R"("bnAddress":"1Bn","bnPub":"03cd",)";
    struct Case {
        const char* what;
        PaymailClaim claim;
        std::string message, body;
    };
    const Case cases[] = {
        {"an empty avatar keeps its place", claim("", "", ""), start + "1790000000", body + end},
        {"an ordinal address", claim("1Ord", "", ""), start + "1Ord|1790000000", body + ord + end},
        {"the BN key", claim("1Ord", "03cd", "1Bn"), start + "1Ord|03cd|1Bn|1790000000",
         body + bn + ord + end},
        {"the BN key alone", claim("", "03cd", "1Bn"), start + "|03cd|1Bn|1790000000", body + bn + end},
        {"half a BN key counts as none", claim("1Ord", "03cd", ""), start + "1Ord|1790000000",
         body + ord + end},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(paymail_claim_message(c.claim), c.message) << c.what;
        EXPECT_EQ(paymail_claim_body(c.claim, "SIG"), c.body) << c.what;
    }
}

// The host can check a claim with nothing but the body: the message is rebuilt from its fields here.
TEST(PaymailClaim, ThePostedClaimVerifiesAgainstTheIdentity) {
    ClaimWorld world;
    world.host.on("POST", "/api/paymail/claim", "{}");
    std::string upper = identity_pub();
    for (char& c : upper) c = static_cast<char>(std::toupper(c));
    EXPECT_EQ(qv_clasp_claim_paymail("@Eve@anything", upper, "1Pay", "", "1Ord"), "");
    ASSERT_EQ(world.host.requests().size(), 1U);
    Json body;
    ASSERT_TRUE(parse_json(world.host.requests()[0].body, body));
    const sandbox::KeyPair bn = one_wallet_key("102'/0/0");
    EXPECT_EQ(json_text(body, "alias"), "eve");
    EXPECT_EQ(json_text(body, "pubkey"), identity_pub());
    EXPECT_EQ(json_text(body, "bnPub"), qv_clasp_hex_encode(bn.pub));
    EXPECT_EQ(json_text(body, "bnAddress"), bn.address);
    EXPECT_EQ(json_int(body, "ts"), 1790000000);
    const std::string message = "QV-PAYMAIL-CLAIM|eve|" + identity_pub() + "|1Pay||1Ord|" +
                                qv_clasp_hex_encode(bn.pub) + "|" + bn.address + "|1790000000";
    EXPECT_TRUE(sandbox::verify_compact(one_wallet_key("100'/0/0").pub, sandbox::message_digest(message),
                                        sandbox::from_base64(json_text(body, "sig"))));
}

TEST(PaymailClaim, WhyAClaimFails) {
    ClaimWorld world;
    struct Case {
        const char* what;
        ScriptedAnswer answer;
        std::string error;
    };
    const Case cases[] = {
        {"the host says why", {.status = 409, .body = R"({"error":"name is taken"})"}, "name is taken"},
        {"an error of another type", {.status = 400, .body = R"({"error":7})"}, "HTTP 400 – {\"error\":7}"},
        {"no JSON", {.status = 500, .body = "out of order\n"}, "HTTP 500 – out of order"},
        {"nothing", {.status = 502, .body = ""}, "HTTP 502"},
    };
    for (const Case& c : cases) {
        world.host.on("POST", "/api/paymail/claim", {c.answer});
        EXPECT_EQ(qv_clasp_claim_paymail("eve", identity_pub(), "", "", ""), c.error) << c.what;
    }
    world.host.clear_requests();
    EXPECT_EQ(qv_clasp_claim_paymail("@", identity_pub(), "", "", ""), "need alias and pubkey");
    EXPECT_EQ(qv_clasp_claim_paymail("eve", "", "", "", ""), "need alias and pubkey");
    EXPECT_EQ(qv_clasp_claim_paymail("eve", "02" + std::string(64, 'a'), "", "", ""),
              "identity pubkey mismatch");
    EXPECT_TRUE(world.host.requests().empty());
}

TEST(PaymailClaim, OneClaimIsSentOnce) {
    ClaimWorld world;
    const auto claim = [](const std::string& paymail, const std::string& avatar) {
        qv_clasp_claim_once(paymail, identity_pub(), "1Pay", avatar, "1Ord");
    };
    const auto sent = [&] { return world.host.count("POST"); };
    world.host.on("POST", "/api/paymail/claim", {{.status = 503, .body = "later"}, {.body = "{}"}});
    claim("", "");
    qv_clasp_claim_once("eve", "", "1Pay", "", "1Ord");
    EXPECT_EQ(sent(), 0U);
    claim("eve", "");
    EXPECT_EQ(sent(), 1U) << "refused";
    claim("eve", "");
    EXPECT_EQ(sent(), 2U) << "so it is sent again";
    claim("eve", "");
    EXPECT_EQ(sent(), 2U) << "and not once more";
    {
        const WalletLock lock = qv_clasp_lock_wallet();
        qv_clasp_wipe_session();
    }
    claim("eve", "");
    EXPECT_EQ(sent(), 2U) << "the memory survives the session";
    claim("eve", "aa_0");
    EXPECT_EQ(sent(), 3U) << "a new avatar is a new claim";
    claim("eve", "");
    EXPECT_EQ(sent(), 4U) << "only the last one is remembered";
}

TEST(PaymailClaim, AWalletWithoutANameAdoptsOneFromTheRegistry) {
    ClaimWorld world;
    world.write_names({{"zoe", {{"pubkey", identity_pub()}}},
                       {"adam", {{"pubkey", identity_pub()}}},
                       {"aaron", {{"pubkey", "02ff"}}}},
                      "zoe");
    world.sync();
    EXPECT_EQ(qv_clasp_session().paymail, "zoe");
    EXPECT_EQ(json_text(world.home.read_json(ONE_WALLET_PATH), "paymail"), "zoe");
    EXPECT_EQ(json_text(world.home.read_json("/wallets.json")["wallets"][0], "name"), "zoe");
    EXPECT_EQ(json_text(world.registry()["names"]["zoe"], "address"), receive_address(0));
    EXPECT_EQ(world.events,
              std::vector<std::string>{"[QV-CLASP]\x1fpaymail\x1fzoe@" + settings().home_domain});
}

TEST(PaymailClaim, ANameThatSomeoneElseHoldsHereStaysTheirsAndTheWallets) {
    Json document = one_wallet_document();
    document["paymail"] = "eve";
    ClaimWorld world(document);
    world.write_names({{"eve", {{"pubkey", "02ff"}, {"address", "1Other"}}}});
    world.sync();
    EXPECT_EQ(qv_clasp_session().paymail, "eve");
    EXPECT_EQ(world.registry()["names"]["eve"]["pubkey"], "02ff");
    EXPECT_EQ(world.registry()["names"]["eve"]["address"], "1Other");
}
