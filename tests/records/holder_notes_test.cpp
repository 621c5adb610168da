#include "records/holder_notes.h"

#include <gtest/gtest.h>

#include "tests/support/hostile_json.h"
#include "tests/support/test_home.h"
#include "wallet/binds.h"

namespace {

struct NotesTest : testing::Test {
    TestHome home;
    const std::string path = "/bursaria/w1_holder_notes.json";

    NotesTest() { qv_clasp_set_active_wallet_id("w1"); }
    static std::string note(const std::string& token_id, const std::string& key) {
        return find_note(read_notes(), token_id, key);
    }
};

using HolderNotes = NotesTest;

}  // namespace

TEST_F(HolderNotes, ANoteIsWrittenReplacedAndDeleted) {
    write_note("tok_0", "n:alice", "alice", "12", " \tfirst\r\nline\x01\n ");
    EXPECT_EQ(
        home.read(path),
        "{\n  \"entries\": [\n    {\n      \"key\": \"n:alice\",\n      \"lots\": \"12\",\n      \"name\": "
        "\"alice\",\n      \"note\": \"first\\r\\nline\",\n      \"token_id\": \"tok_0\"\n    }\n  ]\n}");
    write_note("tok_1", "n:alice", "alice", "1", "on another token");
    write_note("tok_0", "n:alice", "alice", "13", "second");
    EXPECT_EQ(note("tok_0", "n:alice"), "second");
    EXPECT_EQ(note("tok_1", "n:alice"), "on another token");
    EXPECT_EQ(home.read_json(path)["entries"].size(), 2U);
    write_note("tok_0", "n:alice", "alice", "13", " \n\t");
    EXPECT_EQ(note("tok_0", "n:alice"), "");
    EXPECT_EQ(home.read_json(path)["entries"].size(), 1U);

    const std::string before = home.read(path);
    write_note("", "n:alice", "alice", "", "x");
    write_note("tok_0", "", "alice", "", "x");
    EXPECT_EQ(home.read(path), before);
}

TEST_F(HolderNotes, ANoteCutInsideACharacterDoesNotLoseTheFile) {
    write_note("tok_0", "n:bob", "bob", "1", "kept");
    std::string long_note = "x";
    for (int i = 0; i < 300; ++i) long_note += "\xc3\xa9";
    EXPECT_EQ(normalise_note(long_note), long_note.substr(0, 400));
    write_note("tok_0", "n:alice", "alice", "1", long_note);
    EXPECT_EQ(note("tok_0", "n:alice"), long_note.substr(0, 399) + "\xef\xbf\xbd");
    EXPECT_EQ(note("tok_0", "n:bob"), "kept");
    EXPECT_EQ(normalise_note(std::string(500, ' ') + "\xc3\xa9 "), "\xc3\xa9");
}

TEST_F(HolderNotes, OtherKeysStayAndWhatIsNoEntryGoes) {
    home.write(path, std::string(R"({"more": [1], "entries": [5, "x", {"token_id": "tok_0", "key": "n:bob",
        "note": "b", "odd": true}, {"token_id": "tok_0", "key": "n:eve", "note": 7},
        {"token_id": "tok_0", "key": "n:eve", "note": "second"}, {"token_id": "tok_0", "note": "no key"}]})"));
    EXPECT_EQ(note("tok_0", "n:eve"), "") << "the first entry decides";
    const auto notes = notes_on(read_notes(), "tok_0");
    EXPECT_EQ(notes.size(), 1U);
    EXPECT_EQ(notes.at("n:bob"), "b");
    write_note("tok_0", "n:eve", "eve", "", "new");
    const Json document = home.read_json(path);
    EXPECT_EQ(document["more"].dump(), "[1]");
    ASSERT_EQ(document["entries"].size(), 3U);
    EXPECT_TRUE(json_bool(document["entries"][0], "odd"));

    std::vector<std::string> contents = NO_OBJECTS;
    contents.emplace_back(R"({"entries": {}})");
    for (const std::string& broken : contents) {
        home.write(path, broken);
        EXPECT_EQ(note("tok_0", "n:bob"), "");
        write_note("tok_0", "n:bob", "bob", "", "again");
        EXPECT_EQ(note("tok_0", "n:bob"), "again") << broken;
    }
}
