#include "paymail/paymail_resolve.h"

#include <gtest/gtest.h>

#include "tests/support/one_wallet.h"
#include "tests/support/scripted_server.h"

namespace {

const std::string ALICE = "1BvBMSEYstWetqTFn5Au4m4GFg7xJaNVN2";
const std::string BOB = "17Bt1KmcUDt53RhzmAzZtSKmMeZRDBKE7n";

// The family's host and its local resolver, both over TLS, and nothing else on the network.
struct Directory {
    ScriptedServer host{ScriptedServer::Transport::Tls};
    ScriptedServer resolver{ScriptedServer::Transport::Tls};
    TestHome home;

    Directory() {
        Settings changed = settings_on("http://127.0.0.1:1", "localhost:" + std::to_string(host.port()));
        changed.local_resolver_port = resolver.port();
        home.use_settings(changed);
        home.write("/quorvelle_paymail.json",
                   Json{{"names",
                         {{"carol", {{"pubkey", "02aa"}, {"address", BOB}}},
                          {"dave", {{"pubkey", "02bb"}, {"address", "1notanaddressatall11111111111"}}}}}});
    }
    std::size_t requests() const { return host.requests().size() + resolver.requests().size(); }
};

std::string alias_path(const std::string& name) {
    return "/api/bsvalias/address/" + name + "@" + settings().home_domain;
}

struct ParsedDest {
    bool ok = false;
    std::string address, alias, error;
};
ParsedDest parse(const std::string& dest) {
    ParsedDest parsed{false, "stale", "stale", "stale"};
    parsed.ok = qv_clasp_parse_dest(dest, parsed.address, parsed.alias, parsed.error);
    return parsed;
}

}  // namespace

TEST(PaymailResolve, DestinationsThatAreUnderstood) {
    const Directory directory;
    const std::string domain = settings().home_domain;
    struct Case {
        const char* what;
        std::string dest, address, alias;
    };
    const Case cases[] = {
        {"an address keeps its capitals", " " + ALICE + "\r\n", ALICE, ""},
        {"a bare name", " @Eve", "", "eve"},
        {"a paymail of the family, in capitals", "EVE@" + domain, "", "eve"},
        {"a name that the registry knows", "Carol", BOB, ""},
        {"a paymail that the registry knows", "carol@" + domain, BOB, ""},
        {"a registered address that does not decode", "dave", "", "dave"},
        {"25 characters that begin with 1", "1BvBMSEYstWetqTFn5Au4m4GF", "", "1bvbmseystwetqtfn5au4m4gf"},
        {"looks like an address, does not decode", "1" + std::string(30, '0'), "",
         "1" + std::string(30, '0')},
    };
    for (const Case& c : cases) {
        const ParsedDest parsed = parse(c.dest);
        EXPECT_TRUE(parsed.ok) << c.what;
        EXPECT_EQ(parsed.address, c.address) << c.what;
        EXPECT_EQ(parsed.alias, c.alias) << c.what;
        EXPECT_EQ(parsed.error, "") << c.what;
    }
    EXPECT_EQ(directory.requests(), 0U);
}

TEST(PaymailResolve, DestinationsThatAreRefused) {
    const Directory directory;
    const std::string nothing = "enter a handle, paymail, or 1-address.";
    const std::string foreign = "use a 1-address or an @" + settings().home_domain + " paymail.";
    const std::pair<std::string, std::string> cases[] = {
        {"", nothing},
        {"@ @" + settings().home_domain, nothing},
        {"eve@", foreign},
        {"eve@elsewhere.example", foreign},
        {"eve@x@" + settings().home_domain, foreign},
        {"carol@" + settings().home_domain + ".example", foreign},
    };
    for (const auto& [dest, error] : cases) {
        const ParsedDest parsed = parse(dest);
        EXPECT_FALSE(parsed.ok) << dest;
        EXPECT_EQ(parsed.address + parsed.alias, "") << dest;
        EXPECT_EQ(parsed.error, error) << dest;
    }
}

TEST(PaymailResolve, WithoutAUsableAnswerTheLocalResolverIsAsked) {
    Directory directory;
    directory.resolver.on("GET", alias_path("eve"), R"({"address":")" + BOB + R"("})");
    const std::pair<const char*, ScriptedAnswer> cases[] = {
        {"an error status", {.status = 500, .body = R"({"address":")" + ALICE + R"("})"}},
        {"no JSON", {.body = "<html>"}},
        {"an address that does not decode", {.body = R"({"address":"1BvBMSEYstWetqTFn5Au4m4GFg7xJaNVN3"})"}},
        {"an address of another type", {.body = R"({"address":17})"}},
        {"a dead connection", {.hang_up = true}},
    };
    for (const auto& [what, answer] : cases) {
        directory.host.otherwise(answer);
        std::string error;
        EXPECT_EQ(qv_clasp_resolve_alias("eve", error), BOB) << what;
    }
}

// "eve?x" must never be paid to the address of "eve".
TEST(PaymailResolve, ANameIsOnePieceOfThePath) {
    Directory directory;
    directory.host.otherwise({.body = "{}"});
    std::string error;
    const std::string domain = "@" + settings().home_domain;
    for (const std::string name : {"eve?x", "eve#x", "eve/../bob", "e v\xc3\xa9"})
        qv_clasp_resolve_alias(name, error);
    std::vector<std::string> paths;
    for (const ScriptedRequest& request : directory.host.requests()) paths.push_back(request.path);
    const std::string root = "/api/bsvalias/address/";
    EXPECT_EQ(paths,
              (std::vector<std::string>{root + "eve%3Fx" + domain, root + "eve%23x" + domain,
                                        root + "eve%2F..%2Fbob" + domain, root + "e%20v%C3%A9" + domain}));
}

TEST(PaymailResolve, AnAddressIsLookedUpAtTheHost) {
    Directory directory;
    struct Case {
        int status;
        std::string body;
        bool found;
        std::string holder;  // alias, pubkey, address, kind
    };
    const Case cases[] = {
        {200, R"({"alias":"Eve","pubkey":"02AB","address":"1Pay","kind":"ordinal"})", true,
         "eve|02ab|1Pay|ordinal"},
        {200, R"({"pubkey":"02AB","address":"1Pay"})", false, "|02ab|1Pay|"},
        {200, R"({"alias":"eve","pubkey":2,"address":null,"kind":["bn"]})", true, "eve|||"},
        {200, R"([{"alias":"eve"}])", false, "|||"},
        {200, R"({"alias":"e)", false, "|||"},
        {404, R"({"alias":"eve"})", false, "|||"},
    };
    for (const Case& c : cases) {
        directory.host.on("GET", "/api/paymail/address/" + ALICE, c.body, c.status);
        std::string alias = "stale", pubkey = "stale", address = "stale", kind = "stale";
        EXPECT_EQ(qv_clasp_lookup_holder(ALICE, alias, pubkey, address, kind), c.found) << c.body;
        EXPECT_EQ(alias + "|" + pubkey + "|" + address + "|" + kind, c.holder) << c.body;
    }
    directory.host.clear_requests();
    for (const std::string& no_address :
         {std::string(), std::string("1BvBMSEYstWetqTFn5Au4m4GF"), "3" + ALICE.substr(1)}) {
        std::string alias, pubkey, address, kind;
        EXPECT_FALSE(qv_clasp_lookup_holder(no_address, alias, pubkey, address, kind)) << no_address;
    }
    EXPECT_EQ(directory.requests(), 0U);
}
