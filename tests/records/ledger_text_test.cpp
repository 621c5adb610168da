#include "records/ledger_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/json_file.h"

namespace {

const std::string PLAIN_ROW = R"(
    {
      "dest": "1alice",
      "kind": "payout",
      "name": "alice",
      "sats": 546,
      "token_id": "tok_0",
      "token_name": "Meadow",
      "txid": "ab12",
      "unix": 1790000000
    })";

std::string ledger_of(const std::string& rows) {
    return "{\n  \"entries\": [" + rows + "\n  ]\n}";
}

std::string changed(const std::string& from, const std::string& to) {
    std::string row = PLAIN_ROW;
    return row.replace(row.find(from), from.size(), to);
}

struct LedgerCase {
    const char* name;
    std::string text;
    std::size_t rows = 0;  // 0: not in the program's form
};

const std::vector<LedgerCase> CASES = {
    {"one row", ledger_of(PLAIN_ROW), 1},
    {"rows of every kind",
     ledger_of(PLAIN_ROW + "," + changed("alice\"", "\\\"al\\\\ice\\n\"") + "," + PLAIN_ROW), 3},
    {"a name beyond ASCII", ledger_of(changed("\"alice\"", "\"aliçe 漢字\"")), 1},
    {"a name that is not UTF-8", ledger_of(changed("\"alice\"", "\"ali\xe7\"")), 0},
    {"an escape that would be written raw", ledger_of(changed("\"alice\"", "\"\\u0041\"")), 0},
    {"a control character", ledger_of(changed("\"alice\"", "\"a\tb\"")), 0},
    {"the delete character", ledger_of(changed("\"alice\"", "\"a\x7f\"")), 1},
    {"a negative amount", ledger_of(changed("546", "-546")), 1},
    {"the largest amount", ledger_of(changed("546", "9223372036854775807")), 1},
    {"an amount beyond the signed range", ledger_of(changed("546", "18446744073709551615")), 1},
    {"no amount", ledger_of(changed("546", "null")), 1},
    {"a zero in front", ledger_of(changed("546", "0546")), 0},
    {"minus nothing", ledger_of(changed("546", "-0")), 0},
    {"a number without digits", ledger_of(changed("546", "-")), 0},
    {"an exponent", ledger_of(changed("546", "5e2")), 0},
    {"one key more",
     ledger_of(changed("\"unix\"", "\"umber\": {\n        \"a\": []\n      },\n      \"unix\"")), 1},
    {"one key less", ledger_of(changed("      \"kind\": \"payout\",\n", "")), 1},
    {"keys out of order", ledger_of(changed("\"dest\"", "\"zest\"")), 0},
    {"a key twice", ledger_of(changed("\"kind\"", "\"dest\": \"1bob\",\n      \"kind\"")), 0},
    {"a row that is no object", ledger_of(PLAIN_ROW + ",\n    5"), 0},
    {"no rows", "{\n  \"entries\": []\n}", 0},
    {"another key beside", "{\n  \"entries\": [" + PLAIN_ROW + "\n  ],\n  \"more\": 1\n}", 0},
    {"other blanks", "{\"entries\":[{\"sats\":5}]}", 0},
    {"a line feed at the end", ledger_of(PLAIN_ROW) + "\n", 0},
    {"a comma without a row", ledger_of(PLAIN_ROW + ","), 0},
    {"cut in a row", ledger_of(PLAIN_ROW).substr(0, 100), 0},
    {"cut behind a row", ledger_of(PLAIN_ROW).substr(0, ledger_of(PLAIN_ROW).size() - 3), 0},
    {"nothing", "", 0},
};

}  // namespace

TEST(LedgerText, OnlyATextThatWritingGivesBackIsWalked) {
    for (const LedgerCase& ledger : CASES) {
        SCOPED_TRACE(ledger.name);
        std::vector<std::string> rows;
        const bool walked =
            walk_ledger_text(ledger.text, [&](const LedgerRowText& row) { rows.emplace_back(row.text); });
        ASSERT_EQ(walked, ledger.rows > 0);
        if (!walked) continue;
        ASSERT_EQ(rows.size(), ledger.rows);
        Json document;
        ASSERT_TRUE(parse_json(ledger.text, document));
        EXPECT_EQ(dump_json(document, 2), ledger.text);
        for (std::size_t i = 0; i < rows.size(); ++i) {
            Json row;
            ASSERT_TRUE(parse_json(rows[i], row));
            EXPECT_EQ(row, document["entries"][i]);
        }
    }
}
