#include "index/indexer_rows.h"

#include <gtest/gtest.h>

#include "base/json_file.h"

namespace {

// "id amt name dec icon", or nothing for a row without a token.
std::string token_in(const std::string& text) {
    Json row;
    EXPECT_TRUE(parse_json(text, row)) << text;
    std::string id = "stale", amt = "stale", name = "stale", dec = "stale", icon = "stale";
    const bool found = read_indexer_token(row, id, amt, name, dec, icon);
    const std::string fields = id + "|" + amt + "|" + name + "|" + dec + "|" + icon;
    EXPECT_TRUE(found || fields == "||||") << fields;
    return found ? fields : "";
}

}  // namespace

TEST(IndexerRows, RowsOfTheAddressListing) {
    const std::pair<const char*, const char*> cases[] = {
        {R"({"txid":"a","data":null})", ""},
        {R"([1])", ""},
        {R"({"data":{"bsv20":{"id":"I","amt":7,"dec":2,"icon":"C","name":" N "}}})", "I|7|N|2|C"},
        {R"({"data":{"bsv20":{"amt":"1"},"bsv21":{"amt":"2"}}})", "|1|||"},
        {R"({"data":{"bsv20":null,"bsv21":{"amt":"002"}}})", "|2|||"},
        {R"({"data":{"insc":{"json":{"p":"bsv-20","id":"J","amt":"3"}}}})", "J|3|||"},
        // The inscription fills blanks only.
        {R"({"data":{"bsv21":{"id":"I"},"insc":{"json":{"id":"J","name":"N","icon":"C","dec":"1","amt":"5"}}}})",
         "I|5|N|1|C"},
        {R"({"data":{"bsv20":{"amt":"1.5"}}})", ""},
        {R"({"data":{"bsv20":{"id":null,"amt":null,"name":null,"dec":null,"icon":null}}})", ""},
        {R"({"data":{"insc":"x","bsv20":{"id":"I"}}})", "I||||"},
    };
    for (const auto& [row, expected] : cases) EXPECT_EQ(token_in(row), expected) << row;
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
