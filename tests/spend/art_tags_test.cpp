#include "spend/art_tags.h"

#include <gtest/gtest.h>

#include "base/text.h"
#include "tests/support/hostile_json.h"
#include "tests/support/test_home.h"

namespace {

const std::string TXID = "ABCDEF0123456789abcdef0123456789abcdef0123456789abcdef0123456789";
const std::string LOWER = ascii_lower(TXID);

}  // namespace

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
    for (const std::string& content : NO_OBJECTS) {
        const TestHome home;
        home.write("/art/tags.json", content);
        EXPECT_EQ(qv_clasp_art_tag_get(TXID), "");
        qv_clasp_art_tag_set(TXID, "genesis");
        EXPECT_EQ(home.read_json("/art/tags.json"), (Json{{LOWER + "_0", "genesis"}}));
    }
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
