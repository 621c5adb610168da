#include "index/holder_sources.h"

#include <gtest/gtest.h>

#include "tests/index/token_world.h"

namespace {

using Lines = std::vector<std::pair<std::string, std::string>>;  // owner (or operation) and lots

Lines owners_and_lots(const std::vector<HolderTxo>& rows) {
    Lines lines;
    for (const HolderTxo& row : rows) lines.emplace_back(row.owner, row.lots);
    return lines;
}

HolderTxo row_of(const std::string& op, const std::string& lots, const std::string& owner = "") {
    HolderTxo row;
    row.op = op;
    row.lots = lots;
    row.owner = owner;
    return row;
}

}  // namespace

TEST(HolderSources, ElementsOfTheHolderList) {
    const std::string hash = qv_clasp_hex_encode(person_hash(1));
    const std::string a = person(1);
    struct Case {
        const char* what;
        Json element;
        std::string lots;  // empty: no row
    };
    const Case cases[] = {
        {"address and text", {{"address", a}, {"amt", "0012"}}, "12"},
        {"owner and number", {{"owner", a}, {"amt", 12}}, "12"},
        {"a null address gives way", {{"address", nullptr}, {"owner", a}, {"amt", "1"}}, "1"},
        {"pkhash", {{"pkhash", hash}, {"amt", "1"}}, "1"},
        {"lock of 20 bytes", {{"lock", hash}, {"amt", "1"}}, "1"},
        {"a bad address gives way to the hash", {{"address", a + "x"}, {"pkhash", hash}, {"amt", "1"}}, "1"},
        {"a lock in Base64", {{"lock", "95EA9JV8O+RWtoU7zrUdcsIRyF2RhhHON/CxiBEpw3Y="}, {"amt", "1"}}, ""},
        {"no owner", {{"amt", "1"}}, ""},
        {"a script address", {{"address", "3J98t1WpEZ73CNmQviecrnyiWrnqRhWNLy"}, {"amt", "1"}}, ""},
        {"balance as number", {{"address", a}, {"balance", 5}}, ""},
        {"an empty amt ends the search", {{"address", a}, {"amt", ""}, {"balance", "5"}}, ""},
        {"amt of another type", {{"address", a}, {"amt", nullptr}, {"balance", "5"}}, "5"},
        {"a negative amt", {{"address", a}, {"amt", -1}, {"balance", "5"}}, "5"},
        {"a float", {{"address", a}, {"amt", 1.5}}, ""},
        {"nothing held", {{"address", a}, {"amt", "000"}}, ""},
        {"beyond 64 bits", {{"address", a}, {"amt", "99999999999999999999999"}}, "99999999999999999999999"},
        {"no object", 7, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        std::vector<HolderTxo> rows;
        // A good element behind it: one bad element costs nobody else his row.
        parse_holders(dump_json(Json::array({c.element, {{"address", person(2)}, {"amt", "9"}}}), -1), rows);
        ASSERT_EQ(rows.size(), c.lots.empty() ? 1U : 2U);
        EXPECT_EQ(rows.back().owner, person(2));
        if (c.lots.empty()) continue;
        EXPECT_EQ(rows[0].owner, a);
        EXPECT_EQ(rows[0].owner_hash, person_hash(1));
        EXPECT_EQ(rows[0].lots, c.lots);
        EXPECT_EQ(rows[0].outpoint + rows[0].txid + rows[0].op, "");
    }
}

TEST(HolderSources, TheFirstLineOfAnOwnerWins) {
    std::vector<HolderTxo> rows{row_of("", "1", person(5))};
    const Json list = {{{"address", person(1)}, {"amt", "0"}},
                       {{"address", person(1)}, {"amt", "3"}},
                       {{"pkhash", qv_clasp_hex_encode(person_hash(1))}, {"amt", "30"}},
                       {{"address", person(5)}, {"amt", "50"}}};
    parse_holders(dump_json({{"holders", list}}, -1), rows);
    EXPECT_EQ(owners_and_lots(rows), (Lines{{person(5), "1"}, {person(1), "3"}}));
}

TEST(HolderSources, TheWalkSpeaksBeforeTheIndexer) {
    const std::vector<HolderTxo> chain{row_of("transfer", "5", "A"), row_of("transfer", "6", "A")};
    const std::vector<HolderTxo> index{row_of("", "99", "A"), row_of("", "7", "B"), row_of("", "8", "B")};
    EXPECT_EQ(owners_and_lots(merge_holder_rows(chain, index)), (Lines{{"A", "5"}, {"A", "6"}, {"B", "7"}}));
    EXPECT_EQ(owners_and_lots(merge_holder_rows({}, index)), (Lines{{"A", "99"}, {"B", "7"}}));
}

TEST(HolderSources, WhatHasMovedIsTakenOffTheDeploy) {
    struct Case {
        const char* what;
        Lines rows;
        Lines left;
    };
    const Case cases[] = {
        {"part has moved",
         {{"transfer", "400"}, {"deploy+mint", "1000"}},
         {{"transfer", "400"}, {"deploy+mint", "600"}}},
        {"all has moved", {{"deploy", "1000"}, {"transfer", "1000"}}, {{"transfer", "1000"}}},
        {"more than all", {{"deploy", "1000"}, {"", "1001"}}, {{"", "1001"}}},
        {"two deploys and a move",
         {{"deploy", "30"}, {"x", "10"}, {"deploy+mint", "20"}},
         {{"deploy", "40"}, {"x", "10"}}},
        {"two deploys, all moved", {{"deploy", "3"}, {"x", "5"}, {"deploy", "2"}}, {{"x", "5"}}},
        {"lots that do not read",
         {{"deploy", "10"}, {"x", ""}, {"x", "4"}},
         {{"deploy", "6"}, {"x", ""}, {"x", "4"}}},
        {"beyond 64 bits",
         {{"deploy", "18446744073709551616"}, {"x", "1"}},
         {{"deploy", "18446744073709551615"}, {"x", "1"}}},
    };
    for (const Case& c : cases) {
        std::vector<HolderTxo> rows;
        for (const auto& [op, lots] : c.rows) rows.push_back(row_of(op, lots));
        reconcile_deploy_rows(rows);
        Lines left;
        for (const HolderTxo& row : rows) left.emplace_back(row.op, row.lots);
        EXPECT_EQ(left, c.left) << c.what;
    }
}
