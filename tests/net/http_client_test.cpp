#include "net/http_client.h"

#include <curl/curl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/fake_clock.h"
#include "tests/support/scripted_server.h"
#include "tests/support/test_home.h"

namespace {

const std::string THROTTLED = "HTTP 429 – WhatsOnChain is rate-limiting. Wait a few seconds and try again.";

struct HttpWorld {
    ScriptedServer server;
    TestHome home;
    FakeClock clock;
    std::string body = "left over";
    std::string error = "left over";

    HttpWorld() { home.use_settings(settings_on(server.base(), "home.invalid")); }
    std::string url(const std::string& path) const { return server.base() + path; }
};

using Script = std::vector<std::pair<int, std::string>>;
std::vector<ScriptedAnswer> answers(const Script& rows) {
    std::vector<ScriptedAnswer> made;
    for (const auto& [status, body] : rows) made.push_back({.status = status, .body = body});
    return made;
}

std::vector<std::int64_t> first_waits(std::size_t count) {
    const std::vector<std::int64_t> all{400, 800, 1600};
    return {all.begin(), all.begin() + static_cast<std::ptrdiff_t>(count)};
}

TEST(HttpGet, DecidesByStatusAndTriesAgainOnThrottlingOnly) {
    struct Case {
        const char* name;
        Script script;
        bool accept_404, ok;
        std::string body, error;
        std::size_t waits = 0;
    };
    const std::vector<Case> cases = {
        {"success", {{200, "[1]"}}, false, true, "[1]", ""},
        {"any 2xx", {{299, "x"}}, false, true, "x", ""},
        {"404", {{404, "Not Found"}}, false, false, "Not Found", "HTTP 404 – Not Found"},
        {"404 accepted", {{404, "nothing"}}, true, true, "nothing", ""},
        {"three 429", {{429, ""}, {429, ""}, {429, ""}, {200, "ok"}}, false, true, "ok", "", 3},
        {"429 for ever", {{429, "slow"}}, true, false, "slow", THROTTLED, 3},
        {"429, then 404 accepted", {{429, "slow"}, {404, "gone"}}, true, true, "gone", "", 1},
        {"500 once", {{500, "later\n"}, {200, "ok"}}, false, false, "later\n", "HTTP 500 – later"},
        {"a page", {{502, "<HTML>bad</HTML>"}}, false, false, "<HTML>bad</HTML>", "HTTP 502"},
    };
    for (const Case& c : cases) {
        HttpWorld world;
        world.server.on("GET", "/x", answers(c.script));
        EXPECT_EQ(c.ok, qv_clasp_http_get(world.url("/x"), world.body, world.error, 10, c.accept_404))
            << c.name;
        EXPECT_EQ(c.body, world.body) << c.name;
        EXPECT_EQ(c.error, world.error) << c.name;
        EXPECT_EQ(first_waits(c.waits), FakeClock::sleeps()) << c.name;
        EXPECT_EQ(c.waits + 1, world.server.count("GET")) << c.name;
    }
}

TEST(HttpPost, TriesAsOftenAsToldAndNeverTwiceAfterAnAnswer) {
    struct Case {
        const char* name;
        Script script;
        int tries;
        bool ok;
        std::string body, error;
        std::size_t sent;
    };
    const std::vector<Case> cases = {
        {"no tries", {{200, "ok"}}, 0, false, "", THROTTLED, 0},
        {"negative tries", {{200, "ok"}}, -1, false, "", THROTTLED, 0},
        {"success", {{201, "ok"}}, 2, true, "ok", "", 1},
        {"one try", {{429, "slow"}, {200, "ok"}}, 1, false, "slow", THROTTLED, 1},
        {"two tries", {{429, "slow"}, {200, "ok"}}, 2, true, "ok", "", 2},
        {"four in vain", {{429, ""}}, 4, false, "", THROTTLED, 4},
        {"404 is a failure", {{404, "no"}}, 4, false, "no", "HTTP 404 – no", 1},
        {"500 is not sent again", {{500, "no"}, {200, "ok"}}, 4, false, "no", "HTTP 500 – no", 1},
    };
    for (const Case& c : cases) {
        HttpWorld world;
        world.server.on("POST", "/x", answers(c.script));
        EXPECT_EQ(c.ok, qv_clasp_http_post_json(world.url("/x"), "{}", world.body, world.error, 10, c.tries))
            << c.name;
        EXPECT_EQ(c.body, world.body) << c.name;
        EXPECT_EQ(c.error, world.error) << c.name;
        EXPECT_EQ(first_waits(c.sent > 0 ? c.sent - 1 : 0), FakeClock::sleeps()) << c.name;
        EXPECT_EQ(c.sent, world.server.count("POST")) << c.name;
    }
}

TEST(HttpClient, SendsWhatEachKindOfCallPromises) {
    HttpWorld world;
    world.server.otherwise({.status = 200, .body = "ok"});
    const std::string body_with_zero("{\"a\":1}\0rest", 12);
    const HttpCounts before = http_counts();
    ASSERT_TRUE(qv_clasp_http_get(world.url("/get?a=b"), world.body, world.error, 10));
    ASSERT_TRUE(qv_clasp_http_post_json(world.url("/post"), body_with_zero, world.body, world.error, 0, 1));
    ASSERT_TRUE(qv_clasp_http_get_plain(world.url("/plain"), world.body, world.error));
    const std::vector<ScriptedRequest> seen = world.server.requests();
    ASSERT_EQ(3U, seen.size());
    EXPECT_EQ("/get?a=b", seen[0].path);
    EXPECT_EQ("Quorvelle-Clasp/0.1", seen[0].headers.at("user-agent"));
    EXPECT_EQ("Quorvelle-Clasp/0.1", seen[1].headers.at("user-agent"));
    EXPECT_EQ("application/json", seen[1].headers.at("content-type"));
    EXPECT_EQ("{\"a\":1}", seen[1].body);
    EXPECT_FALSE(seen[2].headers.contains("user-agent"));
    EXPECT_EQ(before.gets + 2, http_counts().gets);
    EXPECT_EQ(before.posts + 1, http_counts().posts);
}

TEST(HttpClient, FollowsAGetFiveTimesAndAPostNever) {
    HttpWorld world;
    const auto redirect = [](const std::string& to) {
        return std::vector<ScriptedAnswer>{{.status = 302, .body = "moved", .location = to}};
    };
    for (int hop = 0; hop < 6; ++hop) {
        world.server.on("GET", "/" + std::to_string(hop), redirect("/" + std::to_string(hop + 1)));
    }
    world.server.on("GET", "/6", "there");
    world.server.on("POST", "/1", redirect("/6"));
    world.server.on("GET", "/ftp", redirect("ftp://127.0.0.1/x"));
    world.server.on("GET", "/file", redirect("file:///etc/hostname"));
    EXPECT_TRUE(qv_clasp_http_get(world.url("/1"), world.body, world.error, 10));
    EXPECT_EQ("there", world.body);
    EXPECT_FALSE(qv_clasp_http_get(world.url("/0"), world.body, world.error, 10));
    EXPECT_EQ(curl_easy_strerror(CURLE_TOO_MANY_REDIRECTS), world.error);
    EXPECT_TRUE(qv_clasp_http_get_plain(world.url("/0"), world.body, world.error));
    EXPECT_FALSE(qv_clasp_http_post_json(world.url("/1"), "{}", world.body, world.error, 10, 3));
    EXPECT_EQ("HTTP 302 – moved", world.error);
    for (const char* path : {"/ftp", "/file"}) {
        EXPECT_FALSE(qv_clasp_http_get(world.url(path), world.body, world.error, 10)) << path;
        // On Windows curl does not take the form of such an address in the first place.
        EXPECT_THAT(world.error, testing::AnyOf(curl_easy_strerror(CURLE_UNSUPPORTED_PROTOCOL),
                                                curl_easy_strerror(CURLE_URL_MALFORMAT)))
            << path;
        EXPECT_FALSE(qv_clasp_http_get_plain(world.url(path), world.body, world.error)) << path;
    }
}

TEST(HttpClient, ATransportFailureIsToldInCurlsWordsAndNotRepeated) {
    HttpWorld world;
    world.server.otherwise({.status = 200, .body = "", .hang_up = true});
    EXPECT_FALSE(qv_clasp_http_get(world.url("/x"), world.body, world.error, 10));
    EXPECT_FALSE(world.error.empty());
    EXPECT_FALSE(qv_clasp_http_post_json(world.url("/x"), "{}", world.body, world.error, 10, 4));
    EXPECT_FALSE(world.error.empty());
    EXPECT_EQ(1U, world.server.count("GET"));
    EXPECT_EQ(1U, world.server.count("POST"));
    EXPECT_TRUE(FakeClock::sleeps().empty());

    std::string closed;
    {
        const ScriptedServer gone;
        closed = gone.base();
    }
    EXPECT_FALSE(qv_clasp_http_get(closed, world.body, world.error, 10));
    EXPECT_EQ(curl_easy_strerror(CURLE_COULDNT_CONNECT), world.error);
    EXPECT_FALSE(qv_clasp_http_get("no address at all", world.body, world.error, 10));
    EXPECT_FALSE(world.error.empty());
}

TEST(HttpClient, CertificatesAreCheckedExceptByThePlainGetOnThisMachine) {
    const ScriptedServer server(ScriptedServer::Transport::Tls);
    HttpWorld world;
    const std::string lower = "https://localhost:" + std::to_string(server.port());
    const std::string capital = "https://LOCALHOST:" + std::to_string(server.port());
    const auto get = [&](const std::string& url) {
        return qv_clasp_http_get(url, world.body, world.error, 10, true);
    };
    const auto post = [&](const std::string& url) {
        qv_clasp_http_post_json(url, "{}", world.body, world.error, 10, 1);
        return world.error == "HTTP 404";
    };
    const auto plain = [&](const std::string& url) {
        qv_clasp_http_get_plain(url, world.body, world.error);
        return world.error == "HTTP 404";
    };
    EXPECT_TRUE(get(lower) && post(lower) && plain(capital)) << world.error;

    Settings without_authority = settings();
    without_authority.tls_ca_file.clear();
    world.home.use_settings(without_authority);
    EXPECT_FALSE(get(lower));
    EXPECT_FALSE(post(lower));
    EXPECT_FALSE(plain(capital));
    EXPECT_TRUE(plain(lower)) << world.error;
    EXPECT_TRUE(plain("https://127.0.0.1:" + std::to_string(server.port()))) << world.error;
}

TEST(HomeHostPin, NamesBothHostsOnPort443ForEveryUrlThatHoldsTheName) {
    const TestHome home;
    Settings pinned = settings();
    pinned.home_host = "family.invalid";
    pinned.home_host_pin = "127.0.0.1";
    home.use_settings(pinned);
    const std::vector<std::pair<std::string, bool>> urls = {
        {"https://family.invalid/oi/submit", true},        {"https://www.family.invalid/x", true},
        {"https://other.invalid/?q=family.invalid", true}, {"https://FAMILY.invalid/x", false},
        {"https://other.invalid/x/y/z/a", false},          {"family", false},
    };
    CURL* handle = curl_easy_init();
    for (const auto& [url, is_pinned] : urls) {
        curl_slist* pins = qv_clasp_http_pin_home_host(handle, url);
        ASSERT_EQ(is_pinned, pins != nullptr) << url;
        if (pins == nullptr) continue;
        EXPECT_STREQ("family.invalid:443:127.0.0.1", pins->data);
        ASSERT_NE(nullptr, pins->next);
        EXPECT_STREQ("www.family.invalid:443:127.0.0.1", pins->next->data);
        EXPECT_EQ(nullptr, pins->next->next);
        curl_slist_free_all(pins);
    }
    // The name is never looked up: what fails is at most the connection to this machine.
    std::string body;
    std::string error;
    EXPECT_FALSE(qv_clasp_http_get("https://family.invalid/x", body, error, 10));
    EXPECT_NE(curl_easy_strerror(CURLE_COULDNT_RESOLVE_HOST), error);

    pinned.home_host_pin.clear();
    home.use_settings(pinned);
    EXPECT_EQ(nullptr, qv_clasp_http_pin_home_host(handle, "https://family.invalid/x"));
    curl_easy_cleanup(handle);
}

}  // namespace
