#include "spend/art_tags.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "base/text.h"
#include "tests/support/test_home.h"

namespace {

const std::string TXID = "ABCDEF0123456789abcdef0123456789abcdef0123456789abcdef0123456789";
const std::string LOWER = ascii_lower(TXID);

}  // namespace

TEST(ArtTags, KeysAreOutpointsInLowerCase) {
    const std::vector<std::pair<std::string, std::string>> keys = {{TXID, LOWER + "_0"},
                                                                   {TXID + "_0", LOWER + "_0"},
                                                                   {TXID + "_12", LOWER + "_12"},
                                                                   {TXID + "_X", LOWER + "_x"},
                                                                   {"", ""},
                                                                   {TXID.substr(1), ""},
                                                                   {TXID + "_", ""},
                                                                   {TXID + ":0", ""},
                                                                   {TXID + "0_1", ""},
                                                                   {"_" + TXID, ""}};
    for (const auto& [outpoint, key] : keys) EXPECT_EQ(qv_clasp_art_tag_key(outpoint), key) << outpoint;
}

TEST(ArtTags, AreKeptInOneFile) {
    const TestHome home;
    EXPECT_EQ(qv_clasp_art_tag_get(TXID), "");
    qv_clasp_art_tag_set(TXID, "genesis");
    qv_clasp_art_tag_set(TXID + "_1", "second");
    qv_clasp_art_tag_set("no outpoint", "lost");
    qv_clasp_art_tag_set(TXID + "_2", "");
    EXPECT_EQ(qv_clasp_art_tag_get(LOWER + "_0"), "genesis");
    EXPECT_EQ(qv_clasp_art_tag_get(TXID + "_1"), "second");
    EXPECT_EQ(home.read_json("/art/tags.json"), (Json{{LOWER + "_0", "genesis"}, {LOWER + "_1", "second"}}));
}

TEST(ArtTags, ABadFileCountsAsEmptyAndIsReplaced) {
    for (const std::string content : {"", "{", "[1]", "null", "\xff\xfe", R"({"a":)"}) {
        const TestHome home;
        home.write("/art/tags.json", content);
        EXPECT_EQ(qv_clasp_art_tag_get(TXID), "");
        qv_clasp_art_tag_set(TXID, "genesis");
        EXPECT_EQ(home.read_json("/art/tags.json"), (Json{{LOWER + "_0", "genesis"}}));
    }
    const TestHome home;
    home.write("/art/tags.json", Json{{LOWER + "_0", 7}, {LOWER + "_1", "kept"}});
    EXPECT_EQ(qv_clasp_art_tag_get(TXID), "");
    qv_clasp_art_tag_set(TXID, "text");
    EXPECT_EQ(qv_clasp_art_tag_get(TXID + "_1"), "kept");
}

TEST(ArtTags, WritersOnManyThreadsLoseNothing) {
    const TestHome home;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < 10; ++i) qv_clasp_art_tag_set(TXID + "_" + std::to_string(10 * t + i), "tag");
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(home.read_json("/art/tags.json").size(), 40U);
}

TEST(SealedArtTags, OpenOnlyWithTheRightTag) {
    const Json document = test_data("art_tags_sealed.json");
    for (const Json& row : document["opens"]) {
        EXPECT_EQ(qv_clasp_open_art_tag(json_text(row, "blob")), json_text(row, "opened"));
    }
    for (const Json& row : document["stays_shut"]) {
        EXPECT_EQ(qv_clasp_open_art_tag(json_text(row, "blob")), "") << json_text(row, "why");
    }
    EXPECT_GE(document["opens"].size() + document["stays_shut"].size(), 15U);
}
