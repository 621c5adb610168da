#include "index/content_cache.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "index/inscription.h"
#include "index/inscription_fetch.h"
#include "tests/index/token_world.h"

namespace {

Bytes bytes_of(std::string_view text) {
    return {text.begin(), text.end()};
}

struct Content {
    bool found = false;
    std::string type, body;
};
Content fetch(const std::string& origin, bool network = true) {
    Content content{false, "stale", ""};
    Bytes bytes = bytes_of("stale");
    content.found = qv_clasp_inscription_bytes(origin, content.type, bytes, network);
    content.body = body_text(bytes);
    return content;
}

}  // namespace

TEST(ContentCache, OnlyAnOutpointNamesAFile) {
    const TestHome home;
    home.write("/wallets.bin", std::string("secret"));
    home.write("/wallets.nam", std::string("secret"));
    std::string type;
    Bytes bytes;
    for (const std::string& origin : {std::string("../wallets"), std::string("/etc/passwd"), std::string(),
                                      out(1) + "/../../x", "../" + tx_number(1).substr(3) + "_0"}) {
        qv_clasp_cache_put(origin, "text/plain", bytes_of("x"));
        qv_clasp_name_put(origin, "x");
        EXPECT_FALSE(qv_clasp_cache_get(origin, type, bytes)) << origin;
        EXPECT_EQ(qv_clasp_name_get(origin), "") << origin;
    }
    EXPECT_FALSE(home.exists("/ord_cache")) << "nothing was written";
    EXPECT_EQ(home.read("/wallets.bin"), "secret");
}

TEST(ContentCache, WhatStandsThereIsWrittenAnewOnlyWhereItDiffers) {
    const TestHome home;
    const std::string stem = "/ord_cache/" + out(1);
    struct Put {
        const char *body, *type;
    };
    for (const Put& put : {Put{"first body", "text/plain"}, Put{"a body that is longer", "text/plain"},
                           Put{"short", "application/bsv-20"}, Put{"SHORT", "image/png"}}) {
        qv_clasp_cache_put(out(1), put.type, bytes_of(put.body));
        EXPECT_EQ(home.read(stem + ".bin"), put.body);
        EXPECT_EQ(home.read(stem + ".typ"), put.type);
    }
    const auto times = [&] {
        return std::pair(std::filesystem::last_write_time(utf8_path(home.root() + stem + ".bin")),
                         std::filesystem::last_write_time(utf8_path(home.root() + stem + ".typ")));
    };
    for (const char* ending : {".bin", ".typ"})
        std::filesystem::last_write_time(utf8_path(home.root() + stem + ending),
                                         std::filesystem::file_time_type{});
    const auto before = times();
    qv_clasp_cache_put(out(1), "image/png", bytes_of("SHORT"));
    EXPECT_EQ(times(), before) << "the same again is not written";

    std::filesystem::remove(utf8_path(home.root() + stem + ".bin"));
    qv_clasp_cache_put(out(1), "text/plain", bytes_of("again"));
    EXPECT_EQ(home.read(stem + ".typ"), "text/plain") << "a type without a body is an old one";
}

TEST(InscriptionFetch, EveryRealTransactionGivesItsInscriptionsFromRawBytes) {
    TokenWorld world;
    int read = 0;
    const Json real = test_data("ordinals_raw_transactions.json");
    for (const Json& tx : real["transactions"]) {
        const std::string txid = json_text(tx, "txid");
        world.server.on("GET", "/woc/tx/" + txid + "/hex", "\"" + json_text(tx, "rawTx") + "\"\r\n");
        for (const Json& output : tx["outputs"]) {
            const std::string layout = json_text(output, "layout");
            const bool seen = layout == "p2pkh-first" || layout == "envelope-first";
            const Content content = fetch(txid + "_" + std::to_string(json_int(output, "vout")));
            ASSERT_EQ(content.found, seen) << txid << output;
            if (!seen) continue;
            ++read;
            EXPECT_EQ(content.type, json_text(output, "contentType"));
            EXPECT_EQ(static_cast<std::int64_t>(content.body.size()), json_int(output, "bodyLength"));
        }
    }
    EXPECT_GE(read, 8);
}

TEST(InscriptionFetch, TheSourcesAreAskedInTheirOrderAndTheAnswerIsKept) {
    TokenWorld world;
    const std::string origin = tx_number(1);
    EXPECT_FALSE(fetch(origin, false).found);
    EXPECT_FALSE(fetch(origin).found);
    std::vector<std::string> paths;
    for (const ScriptedRequest& request : world.server.requests()) paths.push_back(request.path);
    EXPECT_EQ(paths,
              (std::vector<std::string>{
                  "/woc/tx/" + origin, "/woc/tx/" + origin + "/hex", "/woc/tx/" + origin + "/raw",
                  "/content-host/content/" + origin + "_0", "/api/files/inscriptions/" + origin + "_0"}));

    world.server.on("GET", "/content-host/content/" + origin + "_0", R"({"error":"no"})");
    world.server.on("GET", "/api/files/inscriptions/" + origin + "_0", "GIF89a");
    EXPECT_EQ(fetch(origin).type, "image/gif");
    world.server.clear_requests();
    EXPECT_EQ(fetch(origin, false).body, "GIF89a") << "kept under the origin as it was asked for";
    EXPECT_EQ(world.server.requests().size(), 0U);

    world.server.on("GET", "/content-host/content/" + out(2), "{1234");
    EXPECT_EQ(fetch(out(2)).body, "{1234") << "too short for an error object";
    world.add_tx(
        3, {token_output(person_hash(1), R"({"p":"bsv-20","op":"deploy+mint","amt":"5","name":"Five"})")});
    EXPECT_EQ(fetch(out(3)).type, "application/bsv-20");
    EXPECT_EQ(qv_clasp_name_get(out(3)), "Five");
    EXPECT_FALSE(fetch(out(3, 1)).found) << "no such output";
}

TEST(InscriptionFetch, BrokenRawTransactionsGiveNothing) {
    TokenWorld world;
    const Json real = test_data("ordinals_raw_transactions.json");
    const std::string raw = json_text(real["transactions"][3], "rawTx");
    const std::string origin = out(9);
    for (const std::string& body :
         {std::string("zz"), std::string("01000000ffffffffffffffffff"), std::string(),
          raw.substr(0, raw.size() / 2), raw.substr(0, 8) + "fe", raw + "0"}) {
        world.server.on("GET", "/woc/tx/" + tx_number(9) + "/hex", body);
        EXPECT_FALSE(fetch(origin).found) << body.substr(0, 40);
    }
}
