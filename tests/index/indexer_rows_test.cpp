#include "index/indexer_rows.h"

#include <gtest/gtest.h>

#include "tests/support/test_home.h"

namespace {

struct Token {
    bool found = false;
    std::string id, amt, name, dec, icon;
};

Token token_in(const std::string& text) {
    Json row;
    EXPECT_TRUE(parse_json(text, row)) << text;
    Token token{false, "stale", "stale", "stale", "stale", "stale"};
    token.found = read_indexer_token(row, token.id, token.amt, token.name, token.dec, token.icon);
    return token;
}

}  // namespace

TEST(IndexerRows, RowsOfTheAddressListing) {
    struct Case {
        const char* what;
        std::string row;
        bool found;
        std::string id, amt, name, dec, icon;
    };
    const Case cases[] = {
        {"no data", R"({"txid":"a"})", false, "", "", "", "", ""},
        {"null data", R"({"data":null})", false, "", "", "", "", ""},
        {"not an object", R"([1])", false, "", "", "", "", ""},
        {"bsv20, with a number as amount",
         R"({"data":{"bsv20":{"id":"I","amt":7,"dec":2,"icon":"C","name":" N "}}})", true, "I", "7", "N", "2",
         "C"},
        {"bsv20 goes before bsv21", R"({"data":{"bsv20":{"amt":"1"},"bsv21":{"amt":"2"}}})", true, "", "1",
         "", "", ""},
        {"bsv20 of another type gives way", R"({"data":{"bsv20":null,"bsv21":{"amt":"002"}}})", true, "", "2",
         "", "", ""},
        {"the inscription alone", R"({"data":{"insc":{"json":{"p":"bsv-20","id":"J","amt":"3"}}}})", true,
         "J", "3", "", "", ""},
        {"the inscription fills blanks only",
         R"({"data":{"bsv21":{"id":"I"},"insc":{"json":{"id":"J","name":"N","icon":"C","dec":"1","amt":"5"}}}})",
         true, "I", "5", "N", "1", "C"},
        {"an amount that is no number", R"({"data":{"bsv20":{"amt":"1.5"}}})", false, "", "", "", "", ""},
        {"nulls", R"({"data":{"bsv20":{"id":null,"amt":null,"name":null,"dec":null,"icon":null}}})", false,
         "", "", "", "", ""},
        {"insc is a text", R"({"data":{"insc":"x","bsv20":{"id":"I"}}})", true, "I", "", "", "", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const Token token = token_in(c.row);
        EXPECT_EQ(token.found, c.found);
        EXPECT_EQ(token.id, c.id);
        EXPECT_EQ(token.amt, c.amt);
        EXPECT_EQ(token.name, c.name);
        EXPECT_EQ(token.dec, c.dec);
        EXPECT_EQ(token.icon, c.icon);
    }
}

TEST(IndexerRows, AmountsIdsAndDecimalsOfTheTokenListing) {
    struct Case {
        std::string row, amount, dec, id;
    };
    const Case cases[] = {
        {R"({"amt":"10000","dec":0,"id":"I"})", "10000", "0", "I"},
        {R"({"amt":12,"id":null})", "12", "", ""},
        {R"({"balance":"0012","data":{"bsv20":{"amt":"5","dec":"3","id":"J"}}})", "12", "3", "J"},
        {R"({"balance":9})", "9", "", ""},
        {R"({"balance":-9,"data":{"bsv20":null,"bsv21":{"amt":4,"dec":1,"id":"K"}}})", "4", "1", "K"},
        {R"({"amt":"junk","balance":"3"})", "", "", ""},
        {R"("text")", "", "", ""},
        {R"({"amt":{},"balance":[],"data":7,"id":5,"dec":true})", "", "", ""},
    };
    for (const Case& c : cases) {
        Json row;
        ASSERT_TRUE(parse_json(c.row, row));
        EXPECT_EQ(read_txo_amount(row), c.amount) << c.row;
        EXPECT_EQ(read_txo_dec(row), c.dec) << c.row;
        EXPECT_EQ(read_txo_id(row), c.id) << c.row;
    }
}

TEST(IndexerRows, AnswersThatWereRecorded) {
    int rows = 0;
    int amounts = 0;
    const Json recorded = test_data("api_gorillapool.json");
    for (const Json& answer : recorded["answers"]) {
        Json body;
        if (!parse_json(json_text(answer, "body"), body) || !body.is_array()) continue;
        for (const Json& row : body) {
            ++rows;
            Token token;
            EXPECT_FALSE(read_indexer_token(row, token.id, token.amt, token.name, token.dec, token.icon));
            if (json_text(row, "tick") != "PEPE") continue;
            ++amounts;
            EXPECT_EQ(read_txo_amount(row), "10000");
            EXPECT_EQ(read_txo_id(row), "") << "null for a token of the first version";
        }
    }
    EXPECT_GE(rows, 4);
    EXPECT_EQ(amounts, 1);
}
