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
    OrdinalSweep sweep;
    LocalOrd found = ord(out(1), "application/bsv-20", "New name");
    found.amt = "7";
    found.dec = "2";
    found.token_id = out(8);
    LocalOrd bare = ord(out(2));
    LocalOrd again = ord(out(1), "other", "Other name");
    again.icon = "i";
    sweep.found = {found, bare, again};
    LocalOrd remembered = ord(out(1), "", "Old name");
    remembered.amt = "5";
    remembered.created = true;
    std::vector<LocalOrd> owned{remembered, ord(out(2), "kept", "Kept")};
    merge_found(sweep, owned);
    ASSERT_EQ(owned.size(), 2U);
    EXPECT_EQ(owned[0].type + "/" + owned[0].name + "/" + owned[0].icon, "application/bsv-20/Old name/i");
    EXPECT_EQ(owned[0].amt + "/" + owned[0].dec + "/" + owned[0].token_id, "7/2/" + out(8))
        << "the newer figures";
    EXPECT_TRUE(owned[0].created);
    EXPECT_EQ(owned[1].type + owned[1].name, "keptKept") << "silence is no news";
    EXPECT_TRUE(sweep.owned_changed);
    EXPECT_EQ(sweep.rows.size(), 2U);

    OrdinalSweep repeated;
    repeated.found = sweep.found;
    merge_found(repeated, owned);
    EXPECT_FALSE(repeated.owned_changed) << "the same news again change nothing";
}

TEST(SweepSteps, WhatARowSaysOfItself) {
    const TestHome home;
    Settings changed = settings();
    changed.fixed_token_id = out(0xF1);
    home.use_settings(changed);
    const auto token = [](const std::string& op, const std::string& id, const std::string& name = "",
                          const std::string& sym = "") {
        RowContent content;
        content.token = true;
        content.type = "application/bsv-20";
        content.record = {op, id, "0040", sym, "3", "icon", name};
        return content;
    };
    const auto transfer_named = [&](const std::string& name) {
        return token("transfer", out(8), name, "SYM");
    };
    RowContent identity;
    identity.identity = true;
    identity.label = "ID-age (eve)";
    RowContent cached = transfer_named("Record name");
    cached.cached_name = "Cached name";
    struct Case {
        const char* what;
        RowContent content;
        std::string row_amt, row_name, ord_amt, ord_name;
        bool created, listed;
        std::string says;  // amount, decimals, name, token, and flags
    };
    const std::string eight = "|" + out(8) + "|";
    const std::string own = "|" + out(1) + "|";
    const std::string fixed = "|" + out(0xF1) + "|";
    const Case cases[] = {
        {"a mint", token("mint", out(8)), "", "", "", "", false, false, "40|3|" + eight},
        {"a deploy: no amount", token("deploy+mint", ""), "", "", "", "", false, false, "|3|" + own},
        {"the listing before all", token("transfer", out(8)), "", "", "30", "", false, true, "20|2|" + eight},
        {"then what is remembered", transfer_named(""), "", "", "30", "", false, false, "30|3|SYM" + eight},
        {"a row keeps its amount", transfer_named(""), "10", "", "30", "", false, true, "10|2|SYM" + eight},
        {"the cached name first", cached, "", "Row name", "", "Old name", false, false,
         "40|3|Cached name" + eight + "named"},
        {"the record's name next", transfer_named("Record name"), "", "Row name", "", "Old name", false,
         false, "40|3|Record name" + eight + "named"},
        {"then the remembered one", transfer_named(""), "", "Row name", "", "Old name", false, false,
         "40|3|Old name" + eight + "named"},
        {"then the row's", transfer_named(""), "", "Row name", "", "", false, false,
         "40|3|Row name" + eight + "named"},
        {"the fixed name over a ticker", token("transfer", out(0xF1), "FEN"), "", "", "", "", false, false,
         "40|3|Fenwold Coin" + fixed + "named"},
        {"but not over a name", token("transfer", out(0xF1), "Fen of old"), "", "", "", "", false, false,
         "40|3|Fen of old" + fixed + "named"},
        {"a mint of one's own wants a name", token("deploy+mint", "", "FEN"), "", "", "9", "", true, false,
         "9|3|FEN" + own + "needs_name"},
        {"nor does a transfer", token("transfer", out(8), "FEN"), "", "", "", "", true, false,
         "40|3|FEN" + eight},
        {"an identity record", identity, "", "", "", "Old name", true, false,
         "||ID-age (eve)||named certificate"},
    };
    for (const Case& c : cases) {
        OrdinalSweep sweep;
        if (c.listed) sweep.figures[out(1)] = {"20", "2"};
        QvClaspOrdRow made = row(1, "", c.row_amt);
        made.name = c.row_name;
        LocalOrd known = ord(out(1), "", c.ord_name);
        known.amt = c.ord_amt;
        known.created = c.created;
        fill_row(sweep, c.content, made, &known);
        EXPECT_EQ(made.amt + "|" + made.dec + "|" + made.name + "|" + made.token_id + "|" +
                      (made.named ? "named" : "") + (made.needs_name ? "needs_name" : "") +
                      (made.certificate ? " certificate" : ""),
                  c.says)
            << c.what;
        EXPECT_EQ(made.type, "text/plain") << c.what << ": a type stays";
        EXPECT_EQ(known.amt, c.content.token ? made.amt : c.ord_amt) << c.what;
    }
}

TEST(SweepSteps, WhereTheWalksBegin) {
    const TestHome home;
    const auto cache = [&](unsigned tx, const std::string& type, const std::string& body) {
        home.write("/ord_cache/" + out(tx) + ".bin", body);
        home.write("/ord_cache/" + out(tx) + ".typ", type);
        return ord(out(tx));
    };
    LocalOrd known = cache(1, "application/bsv-20", transfer(out(8), "1"));
    known.token_id = out(8);
    LocalOrd other_output = ord(out(2));
    other_output.token_id = out(8);
    LocalOrd hidden = cache(6, "image/png", "x");
    hidden.hidden = true;
    const std::vector<WalkStart> starts =
        walk_starts({known, other_output, cache(3, "image/png", "x"), cache(4, "text/plain", "x"),
                     cache(5, "text/bsv20", "x"), hidden, ord(out(7))});
    std::vector<std::string> seen;
    for (const WalkStart& start : starts) seen.push_back(start.outpoint + (start.climb ? " climbs" : ""));
    EXPECT_EQ(seen, (std::vector<std::string>{out(1), out(2), out(3) + " climbs", out(5) + " climbs"}));
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
