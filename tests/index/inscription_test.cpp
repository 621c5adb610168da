#include "index/inscription.h"

#include <gtest/gtest.h>

#include "base/hex.h"
#include "tests/support/test_home.h"

namespace {

const std::string OWNER = "76a914d07da5ce5a228a2ecfd0ab1e438a557c82ba560188ac";
const std::string TXID(64, 'a');

// The layouts that this system sees; a lock with a second key, or with anything between, is not one of them,
// and a body field needs its push, though it may be empty.
bool is_expected(const Json& row, const Json& walk) {
    const std::string layout = json_text(walk, "layout");
    const std::string what = json_text(row, "what");
    return json_bool(walk, "envelope") && (layout == "p2pkh-first" || layout == "envelope-first") &&
           !what.starts_with("envelope first, then OP_CODESEPARATOR") &&
           what != "empty body (OP_0 then OP_ENDIF)";
}

void check_vector(const Json& row, const Json& walk) {
    const std::string hex = json_text(row, "script");
    SCOPED_TRACE(json_text(row, "what") + " " + hex.substr(0, 80));
    Hash160 owner{};
    Inscription inscription;
    const bool read = read_ord_script(qv_clasp_hex_decode(hex), owner, inscription);
    ASSERT_EQ(read, is_expected(row, walk));
    if (!read) return;
    EXPECT_EQ(qv_clasp_hex_encode(owner), json_text(walk, "ownerHash160"));
    EXPECT_EQ(inscription.content_type, json_text(walk, "contentType"));
    EXPECT_EQ(static_cast<std::int64_t>(inscription.body.size()), json_int(walk, "bodyLength", -1));
    if (walk.contains("bodyHex")) {
        EXPECT_EQ(qv_clasp_hex_encode(inscription.body), json_text(walk, "bodyHex"));
    }
    Bsv20Meta meta;
    const Json& token = json_member(walk, "bsv20");
    const bool is_token = parse_bsv20(body_text(inscription.body), meta);
    // A vector tells what a token body holds; the two that this reader does not take for one have no "bsv20".
    ASSERT_EQ(is_token, token.is_object());
    if (!is_token) return;
    EXPECT_EQ(meta.op, json_text(token, "op"));
    EXPECT_EQ(meta.id, json_text(token, "id"));
    EXPECT_EQ(meta.amt, json_text(token, "amt"));
    EXPECT_EQ(meta.sym, json_text(token, "sym"));
    EXPECT_EQ(meta.dec, read_dec(token));
}

bool read_hex(const std::string& hex, Inscription& inscription) {
    Hash160 owner{};
    return read_ord_script(qv_clasp_hex_decode(hex), owner, inscription);
}

Bsv20Meta parsed(const std::string& body) {
    Bsv20Meta meta;
    return parse_bsv20(body, meta) ? meta : Bsv20Meta{};
}

}  // namespace

TEST(Inscription, ScriptsOfOthersReadAsTheirVectorsSay) {
    for (const char* file : {"ordinals_scripts_published.json", "ordinals_scripts_built.json"}) {
        const Json vectors = test_data(file);
        for (const Json& row : vectors["scripts"]) {
            Json walk = row;
            if (!walk.contains("envelope")) walk["envelope"] = true;
            check_vector(row, walk);
        }
    }
    const Json awkward = test_data("ordinals_scripts_awkward.json");
    for (const Json& row : awkward["scripts"]) {
        Json walk = row["walk"];
        // The content type with capitals carries the same token body; its vector does not say so.
        if (json_text(row, "what").starts_with("content type with upper case")) {
            walk["bsv20"] = awkward["scripts"][3]["walk"]["bsv20"];
        }
        check_vector(row, walk);
    }
    const Json real = test_data("ordinals_raw_transactions.json");
    for (const Json& tx : real["transactions"]) {
        for (const Json& row : tx["outputs"]) {
            if (row.contains("script")) check_vector(row, row);
        }
    }
}

TEST(Inscription, EnvelopeForms) {
    struct Case {
        const char* what;
        std::string envelope;
        bool read;
        std::string type, body, extra;
    };
    const Case cases[] = {
        {"the type by OP_PUSHDATA1", "0063036f7264514c0241420002434468", true, "AB", "CD", ""},
        {"a body by OP_PUSHDATA4", "0063036f7264510141004e010000004268", true, "A", "B", ""},
        {"the last of two bodies", "0063036f726451014100014200014368", true, "A", "C", ""},
        {"fields 2 and 16 dropped, 5 kept", "0063036f726452015860015955014551014168", true, "A", "", "E"},
        {"a mark of four bytes", "0063046f72647851014168", false, "", "", ""},
        {"an opcode where a field should start", "0063036f72646151014168", false, "", "", ""},
        {"a tag pushed as data", "0063036f72640101014100014268", false, "", "", ""},
        {"no end", "0063036f7264510141000142", false, "", "", ""},
        {"a length of 4 GiB", "0063036f7264510141004effffffff4268", false, "", "", ""},
        {"an empty content type", "0063036f7264510000014268", false, "", "", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Inscription inscription;
        ASSERT_EQ(read_hex(OWNER + c.envelope, inscription), c.read);
        if (!c.read) continue;
        EXPECT_EQ(inscription.content_type, c.type);
        EXPECT_EQ(body_text(inscription.body), c.body);
        EXPECT_EQ(inscription.extra, c.extra);
    }
    Inscription inscription;
    EXPECT_TRUE(read_hex("0063036f726451014168" + OWNER, inscription));
    EXPECT_FALSE(read_hex("0063036f72645101416861" + OWNER, inscription))
        << "the owner must stand directly behind";
    EXPECT_FALSE(read_hex("61" + OWNER + "0063036f726451014168", inscription));
    EXPECT_FALSE(read_hex(OWNER + "610063036f726451014168", inscription));
}

TEST(Inscription, BodiesThatAreTokenRecords) {
    const Bsv20Meta numbers = parsed(R"({"p":"bsv-20","op":"deploy+mint","amt":1000,"dec":8})");
    EXPECT_EQ(numbers.amt + " " + numbers.dec, "1000 8");
    EXPECT_EQ(parsed(R"({"p":"bsv-20","amt":"007"})").amt, "007");
    EXPECT_EQ(parsed(R"({"p":"bsv-20","amt":18446744073709551615})").amt, "18446744073709551615");
    EXPECT_EQ(parsed(R"({"p":"bsv-20","amt":"1","name":" \tA name\n ","id":null,"op":7,"icon":{}})").name,
              "A name");
    EXPECT_EQ(parsed(R"({"p":"bsv-20","amt":")" + std::string(5000, '9') + "\"}").amt.size(), 5000U);
    const std::string refused[] = {
        "",
        R"({"p":"bsv-20","op":"deploy","tick":"X","max":"10"})",
        R"({"p":"bsv-20","amt":-5})",
        R"({"p":"bsv-20","amt":1.5})",
        R"({"p":"bsv-20","amt":""})",
        R"({"p":"BSV-20","amt":"1"})",
        R"({"p":["bsv-20"],"amt":"1"})",
        R"({"amt":"1"})",
        R"({"p":"bsv-20","amt":"1")",
        std::string(2'000'000, '['),
        R"({"p":"bsv-20","amt":"1","x":)" + std::string(100'000, '[') + std::string(100'000, ']') + "}",
    };
    for (const std::string& body : refused) {
        Bsv20Meta meta;
        meta.amt = "stale";
        EXPECT_FALSE(parse_bsv20(body, meta)) << body.substr(0, 80);
    }
}
