#include "wallet/document_file.h"

#include <gtest/gtest.h>

#include "tests/support/test_home.h"

namespace {

struct Text {
    const char* what;
    const char* text;
    const char* mnemonic;
    const char* priv;
};

// What the JSON library makes of it is right; the walk that goes before it must come to the same.
constexpr Text TEXTS[] = {
    {"words", R"({"mnemonic": "zoo zoo", "show": 1})", "zoo zoo", ""},
    {"a key", "{\"a\":[1,{\"b\":2}],\n\"priv\"\n:\t\"ab\"}", "", "ab"},
    {"both", R"({"priv":"ab","mnemonic":"zoo"})", "zoo", "ab"},
    {"the last of two", R"({"mnemonic":"zoo","mnemonic":"yes"})", "yes", ""},
    {"one of another type", R"({"mnemonic":["zoo"],"priv":7})", "", ""},
    {"deeper down", R"({"ord_owned":[{"priv":"ab"}],"x":{"mnemonic":"zoo"}})", "", ""},
    {"a value of that name", R"({"paymail":"mnemonic","priv":"ab"})", "", "ab"},
    {"a quote in a text", R"({"paymail":"\",\"priv\":\"","priv":"ab"})", "", "ab"},
    {"escapes in the words", R"({"mnemonic":"zoo\tzoo"})", "zoo\tzoo", ""},
    {"escapes in the name", R"({"mnemoni\u0063":"zoo"})", "zoo", ""},
    {"an array", R"(["mnemonic","zoo"])", "", ""},
    {"nothing", R"({"mnemonic":"","priv":""})", "", ""},
};

constexpr const char* NO_DOCUMENTS[] = {"",
                                        "{",
                                        R"({"mnemonic":"zoo)",
                                        R"({"mnemonic":"zoo" "priv":"a"})",
                                        "{\"mnemonic\":\"z\too\"}",
                                        R"({"mnemonic":"zoo\)"};

}  // namespace

TEST(WalletDocumentText, HasTheSecretsThatJsonSees) {
    for (const Text& row : TEXTS) {
        WalletDocument document;
        ASSERT_TRUE(parse_wallet_document(row.text, document)) << row.what;
        EXPECT_EQ(document.mnemonic.view(), row.mnemonic) << row.what;
        EXPECT_EQ(document.priv.view(), row.priv) << row.what;
        Json plain;
        ASSERT_TRUE(parse_json(row.text, plain));
        EXPECT_EQ(json_member(document.root, "mnemonic").is_string(),
                  json_member(plain, "mnemonic").is_string());
        EXPECT_EQ(json_text(plain, "mnemonic"), row.mnemonic) << "the row itself is wrong: " << row.what;
    }
    for (const char* text : NO_DOCUMENTS) {
        WalletDocument document;
        EXPECT_FALSE(parse_wallet_document(text, document)) << text;
    }
}

TEST(WalletDocumentText, IsWrittenByteForByteAsJsonWouldBe) {
    for (const char* words : {"zoo zoo", "zoo\tzoo", ""}) {
        WalletDocument document;
        document.root = {{"address", "1x"}, {"show", 1}, {"ord_owned", {{{"name", "\"mnemonic\": \"\""}}}}};
        document.mnemonic.assign(words);
        Json whole = document.root;
        if (*words) whole["mnemonic"] = words;
        EXPECT_EQ(wallet_document_text(document).view(), dump_json(whole, 2));
    }
}
