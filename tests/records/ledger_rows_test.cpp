#include "records/ledger_rows.h"

#include <gtest/gtest.h>

#include "base/json_file.h"

namespace {

// Read the long way, by the whole document.
std::string rows_of_document(const std::string& text) {
    Json document;
    std::string rows;
    if (!parse_json(text, document)) return rows;
    const Json& entries = json_member(document, "entries");
    if (!entries.is_array()) return rows;
    for (const Json& row : entries) {
        if (!row.is_object()) continue;
        for (const char* key : {"token_id", "token_name", "name", "dest", "txid", "kind"})
            rows += json_text(row, key) + "|";
        rows += std::to_string(json_int(row, "sats")) + "|" + std::to_string(json_int(row, "unix")) + "\n";
    }
    return rows;
}

std::string told(const std::vector<PayoutEntry>& entries) {
    std::string rows;
    for (const PayoutEntry& entry : entries) {
        for (const std::string* text :
             {&entry.token_id, &entry.token_name, &entry.name, &entry.dest, &entry.txid, &entry.kind})
            rows += *text + "|";
        rows += std::to_string(entry.sats) + "|" + std::to_string(entry.unix) + "\n";
    }
    return rows;
}

}  // namespace

TEST(LedgerRows, AreThoseOfTheWholeDocumentHoweverOddItIs) {
    struct Row {
        std::string text;
        std::size_t rows;
    };
    const Row rows[] = {
        {R"({"entries":[{"name":"a","sats":1,"unix":2,"kind":"payout","txid":"t","dest":"d"},{}]})", 2},
        {R"({"entries":[{"name":"a","name":7},{"sats":3,"sats":"3"},{"name":1,"name":"b"}]})", 3},
        {R"({"entries":[{"sats":1}],"entries":[{"sats":2},{"sats":3}]})", 2},
        {R"({"entries":[{"sats":1}],"entries":5})", 0},
        {R"({"entries":5,"entries":[{"sats":1}],"other":[{"sats":9}]})", 1},
        {R"({"entries":[{"x":{"sats":9,"name":"deep"},"sats":1,"y":[{"name":"deeper"}]}]})", 1},
        {R"({"entries":[[{"sats":1}],{"sats":2},"s",null,true,1.5]})", 1},
        {R"({"entries":{"a":{"sats":1}}})", 0},
        {R"({"a":{"entries":[{"sats":1}]}})", 0},
        {R"([[{"sats":1}],{"entries":[{"sats":1}]}])", 0},
        {R"([{"sats":1}])", 0},
        {R"({"entries":[{"sats":-5,"unix":9223372036854775807}]})", 1},
        {R"({"entries":[{"sats":18446744073709551615,"unix":1.5}]})", 1},
        {R"({"entries":[{"sats":99999999999999999999}]})", 1},
        {R"({"entries":[{"sats":1}]} x)", 0},
        {R"({"entries":[{"sats":1},)", 0},
        {"{\"entries\":[{\"name\":\"\xff\"}]}", 0},
        {"", 0},
        {R"({"entries":[{"sats":1,"x":)" + std::string(509, '[') + std::string(509, ']') + "}]}", 1},
        {R"({"entries":[{"sats":1,"x":)" + std::string(510, '[') + std::string(510, ']') + "}]}", 0},
    };
    for (const Row& row : rows) {
        const std::vector<PayoutEntry> entries = ledger_rows(row.text);
        EXPECT_EQ(entries.size(), row.rows) << row.text.substr(0, 80);
        EXPECT_EQ(told(entries), rows_of_document(row.text)) << row.text.substr(0, 80);
    }
}
