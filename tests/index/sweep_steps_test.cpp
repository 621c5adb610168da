// The steps of a sweep that need no network, each on a record made by hand.
#include <gtest/gtest.h>

#include "index/sweep_checks.h"
#include "index/sweep_fill.h"
#include "index/sweep_fold.h"
#include "index/sweep_merge.h"
#include "index/sweep_sources.h"
#include "tests/index/token_world.h"

namespace {

LocalOrd ord(const std::string& origin, const std::string& type = "", const std::string& name = "") {
    LocalOrd made;
    made.origin = origin;
    made.txid = origin.substr(0, 64);
    made.type = type;
    made.name = name;
    made.created = false;
    return made;
}

QvClaspOrdRow row(unsigned tx, const std::string& token_id, const std::string& amt, std::int32_t height = 1) {
    QvClaspOrdRow made;
    made.origin = out(tx);
    made.txid = tx_number(tx);
    made.token_id = token_id;
    made.type = token_id.empty() ? "text/plain" : "application/bsv-20";
    made.amt = amt;
    made.height = height;
    return made;
}

OrdinalSweep sweep_listing(const Json& listing, const std::string& address = "1Watch") {
    OrdinalSweep sweep;
    AddressSweep answer;
    answer.address = address;
    answer.txo_ok = true;
    answer.txo_body = listing.is_string() ? listing.get<std::string>() : dump_json(listing, -1);
    sweep.addresses.push_back(answer);
    return sweep;
}

Json txo(unsigned tx, const Json& more) {
    Json made = {{"txid", tx_number(tx)}, {"vout", 0}, {"satoshis", 1}};
    made.update(more);
    return made;
}

}  // namespace

TEST(SweepSteps, RowsOfAListing) {
    const TestHome home;
    const Json token = {{"data", {{"bsv20", {{"id", out(8)}, {"amt", "007"}}}}}};
    const Json picture = {{"insc", {{"file", {{"type", "image/png"}}}}}};
    struct Case {
        const char* what;
        Json listing;
        std::vector<std::string> rows;  // origin, type, amount
    };
    const Case cases[] = {
        {"a plain coin", {txo(1, {{"origin", nullptr}, {"data", nullptr}})}, {}},
        {"a token without an origin", {txo(1, token)}, {out(1) + " application/bsv-20 7"}},
        {"an origin as text", {txo(1, {{"origin", out(5)}, {"data", picture}})}, {out(5) + " image/png "}},
        {"an origin as object, with the type",
         {txo(1, {{"origin", {{"outpoint", out(5)}, {"data", picture}}}})},
         {out(5) + " image/png "}},
        {"two rows of one origin",
         {txo(1, {{"origin", out(5)}}), txo(2, {{"origin", out(5)}, {"data", picture}})},
         {out(5) + " image/png "}},
        {"an origin that is none", {txo(1, {{"origin", "latest"}})}, {}},
        {"a txid that is none", {txo(1, {{"txid", "../x"}, {"origin", out(5)}})}, {}},
        {"other types", {txo(1, {{"vout", "0"}, {"origin", out(5)}}), 17, nullptr, Json::array({1})}, {}},
        {"a body that is no list", Json{{"rows", {txo(1, token)}}}, {}},
        {"a body that is no JSON", "<html>", {}},
    };
    for (const Case& c : cases) {
        OrdinalSweep sweep = sweep_listing(c.listing);
        std::vector<LocalOrd> owned;
        merge_sources(sweep, owned);
        std::vector<std::string> seen;
        for (const QvClaspOrdRow& r : sweep.rows) {
            seen.push_back(r.origin + " " + r.type + " " + r.amt);
            EXPECT_EQ(r.address, "1Watch") << c.what;
        }
        EXPECT_EQ(seen, c.rows) << c.what;
        EXPECT_EQ(sweep.answered.count("1Watch"), c.listing.is_array() ? 1U : 0U) << c.what;
        EXPECT_TRUE(owned.empty()) << c.what << ": only token outputs are remembered";
    }
}

TEST(SweepSteps, WhatIsFoundFillsWhatIsRemembered) {
    const TestHome home;
    LocalOrd found = ord(out(1), "application/bsv-20", "New name");
    found.amt = "7";
    found.token_id = out(8);
    LocalOrd remembered = ord(out(1), "", "Old name");
    remembered.amt = "5";
    remembered.created = true;
    std::vector<LocalOrd> owned{remembered, ord(out(2), "kept", "Kept")};
    for (const bool is_news : {true, false}) {
        OrdinalSweep sweep;
        sweep.found = {found, ord(out(2))};
        merge_found(sweep, owned);
        EXPECT_EQ(sweep.owned_changed, is_news) << "the same news again change nothing";
        ASSERT_EQ(owned.size(), 2U);
        EXPECT_EQ(owned[0].type + "/" + owned[0].name + "/" + owned[0].amt + "/" + owned[0].token_id,
                  "application/bsv-20/Old name/7/" + out(8));
        EXPECT_TRUE(owned[0].created);
        EXPECT_EQ(owned[1].type + owned[1].name, "keptKept") << "silence is no news";
    }
}

TEST(SweepSteps, WhatARowSaysOfItself) {
    const TestHome home;
    Settings changed = settings();
    changed.fixed_token_id = out(0xF1);
    home.use_settings(changed);
    struct Row {
        std::string op{}, id{}, record_name{}, cached_name{}, row_amt{}, row_name{}, ord_amt{}, ord_name{};
        bool listed = false;
        std::string says{};  // amount, decimals, name, token
    };
    const Row rows[] = {
        {.op = "mint", .id = out(8), .says = "40|3|SYM|" + out(8)},
        {.op = "deploy+mint", .says = "|3|SYM|" + out(1)},
        {.op = "transfer", .id = out(8), .ord_amt = "30", .listed = true, .says = "20|2|SYM|" + out(8)},
        {.op = "transfer", .id = out(8), .ord_amt = "30", .says = "30|3|SYM|" + out(8)},
        {.op = "transfer", .id = out(8), .row_amt = "10", .listed = true, .says = "10|2|SYM|" + out(8)},
        {.op = "transfer",
         .id = out(8),
         .record_name = "Record",
         .cached_name = "Cached",
         .ord_name = "Old",
         .says = "40|3|Cached|" + out(8)},
        {.op = "transfer",
         .id = out(8),
         .record_name = "Record",
         .ord_name = "Old",
         .says = "40|3|Record|" + out(8)},
        {.op = "transfer",
         .id = out(8),
         .row_name = "Row name",
         .ord_name = "Old name",
         .says = "40|3|Old name|" + out(8)},
        {.op = "transfer", .id = out(8), .row_name = "Row name", .says = "40|3|Row name|" + out(8)},
        {.op = "transfer", .id = out(0xF1), .record_name = "FEN", .says = "40|3|Fenwold Coin|" + out(0xF1)},
        {.op = "transfer", .id = out(0xF1), .record_name = "Old Fen", .says = "40|3|Old Fen|" + out(0xF1)},
    };
    for (const Row& c : rows) {
        RowContent content;
        content.token = true;
        content.type = "application/bsv-20";
        content.record = {c.op, c.id, "0040", "SYM", "3", "icon", c.record_name};
        content.cached_name = c.cached_name;
        OrdinalSweep sweep;
        if (c.listed) sweep.figures[out(1)] = {"20", "2"};
        QvClaspOrdRow made = row(1, "", c.row_amt);
        made.name = c.row_name;
        LocalOrd known = ord(out(1), "", c.ord_name);
        known.amt = c.ord_amt;
        fill_row(sweep, content, made, &known);
        EXPECT_EQ(made.amt + "|" + made.dec + "|" + made.name + "|" + made.token_id, c.says);
        EXPECT_EQ(known.amt, made.amt) << c.says;
    }
}

TEST(SweepSteps, Folding) {
    std::vector<QvClaspOrdRow> rows{row(1, out(8), "5"), row(2, "", ""),         row(3, out(8), "", 2),
                                    row(4, out(7), ""),  row(5, out(8), "6", 0), row(6, "", "")};
    rows[0].origin = out(0xA);  // an origin of older days
    rows[4].name = "Late name";
    rows[4].named = true;
    drop_amountless(rows);
    fold_tokens(rows);
    std::vector<std::string> seen;
    for (const QvClaspOrdRow& r : rows)
        seen.push_back(r.origin + " " + r.amt + " " + std::to_string(r.height) + " " +
                       std::to_string(r.outpoints.size()));
    EXPECT_EQ(seen, (std::vector<std::string>{out(1) + " 11 0 2", out(2) + "  1 1", out(4) + "  1 1",
                                              out(6) + "  1 1"}));
    EXPECT_EQ(rows[0].outpoints, (std::vector<std::string>{out(1), out(5)}));
    EXPECT_EQ(rows[0].name, "Late name");
    EXPECT_TRUE(rows[0].named);
}

TEST(SweepSteps, OneOutputIsOneRow) {
    OrdinalSweep sweep;
    sweep.rows = {row(0xAB, out(8), "5"), row(2, out(8), "6"), row(0xAB, out(8), "7")};
    sweep.rows[2].origin = out(9);
    sweep.rows[2].txid = std::string(62, '0') + "AB";
    std::vector<LocalOrd> owned;
    drop_junk(sweep, owned);
    ASSERT_EQ(sweep.rows.size(), 2U);
    EXPECT_EQ(sweep.rows[0].amt + sweep.rows[1].amt, "56") << "the first stays";
}
