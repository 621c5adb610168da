#include "records/payout_ledger.h"

#include <gtest/gtest.h>

#include "records/record_files.h"
#include "tests/support/fake_clock.h"
#include "tests/support/test_home.h"
#include "wallet/binds.h"

namespace {

struct LedgerTest : testing::Test {
    TestHome home;

    LedgerTest() { qv_clasp_set_active_wallet_id("w1"); }
    void write_ledger(const std::string& content) const { home.write("/bursaria/w1_paid.json", content); }
    std::string ledger() const { return home.read("/bursaria/w1_paid.json"); }
    std::size_t entry_count() const {
        return json_member(home.read_json("/bursaria/w1_paid.json"), "entries").size();
    }
};

using PayoutLedger = LedgerTest;

}  // namespace

TEST_F(PayoutLedger, AnEntryHasTheFormOfTheFile) {
    const FakeClock clock;
    FakeClock::advance_seconds(5);
    append_payout("tok_0", "ab12", 546, "1alice", "alice@bursaria.test", "Meadow", "");
    const std::string text = ledger();
    const Json document = home.read_json("/bursaria/w1_paid.json");
    const std::int64_t unix = json_int(json_member(document, "entries").at(0), "unix");
    EXPECT_GT(unix, 0);
    EXPECT_EQ(text,
              "{\n"
              "  \"entries\": [\n"
              "    {\n"
              "      \"dest\": \"1alice\",\n"
              "      \"kind\": \"payout\",\n"
              "      \"name\": \"alice@bursaria.test\",\n"
              "      \"sats\": 546,\n"
              "      \"token_id\": \"tok_0\",\n"
              "      \"token_name\": \"Meadow\",\n"
              "      \"txid\": \"ab12\",\n"
              "      \"unix\": " +
                  std::to_string(unix) +
                  "\n"
                  "    }\n"
                  "  ]\n"
                  "}");
}

TEST_F(PayoutLedger, AppendsBehindWhatIsThere) {
    write_ledger(
        R"({"entries": [{"token_id": "tok_0", "sats": 5, "dest": "1a", "strange": [1, {}]}, 7], "more": true})");
    append_payout("tok_0", "", 6, "1b", "b", "", "payout");
    const Json document = home.read_json("/bursaria/w1_paid.json");
    ASSERT_EQ(json_member(document, "entries").size(), 3U);
    EXPECT_EQ(document["entries"][0]["strange"].dump(), "[1,{}]");
    EXPECT_EQ(document["entries"][1].dump(), "7");
    EXPECT_TRUE(json_bool(document, "more"));
    EXPECT_EQ(paid_total("tok_0"), 11);
}

TEST_F(PayoutLedger, WhatIsNoLedgerReadsAsEmptyAndIsReplacedByTheFirstAppend) {
    const std::pair<const char*, std::string> cases[] = {
        {"an array", "[{\"sats\": 5}]"},
        {"a cut file", "{\"entries\": [{\"token_id\": \"tok_0\", \"sats\": 5"},
        {"nothing", ""},
        {"a text", "\"entries\""},
        {"entries of another type", "{\"entries\": {\"sats\": 5}}"},
        {"no entries", "{\"rows\": []}"},
        {"no JSON at all", std::string("\x00\xff\xfe{", 4)},
        {"deep nesting", std::string(100000, '[')},
    };
    for (const auto& [name, content] : cases) {
        SCOPED_TRACE(name);
        write_ledger(content);
        EXPECT_TRUE(read_payout_entries().empty());
        EXPECT_EQ(paid_total("tok_0"), 0);
        EXPECT_EQ(fees_total(), 0);
        EXPECT_EQ(received_by("tok_0", "1a"), 0);
        append_payout("tok_0", "", 6, "1a", "a", "", "payout");
        EXPECT_EQ(entry_count(), 1U);
        EXPECT_EQ(paid_total("tok_0"), 6);
    }
}

TEST_F(PayoutLedger, TotalsKeepFeesAndTokensApart) {
    append_payout("tok_0", "", 100, "1a", "a", "", "payout");
    append_payout("tok_0", "", 20, "1b", "b", "", "payout");
    append_payout("tok_0", "", 3, "1a", "a again", "", "");
    append_payout("tok_1", "", 7000, "1a", "a", "", "payout");
    append_payout("app_fee", "", 1000000, "1fee", "fee", "BA fee", "app_fee");
    append_payout("app_fee", "", 1000000, "1fee", "fee", "BA fee", "app_fee");
    append_payout("tok_0", "", 50000, "1a", "a fee on a token", "", "app_fee");
    EXPECT_EQ(paid_total("tok_0"), 123);
    EXPECT_EQ(paid_total("app_fee"), 0);
    EXPECT_EQ(fees_total(), 2050000);
    EXPECT_EQ(received_by("tok_0", "1a"), 103);
    EXPECT_EQ(received_by("tok_0", "1fee"), 0);
    EXPECT_EQ(received_by("", "1a"), 0);
    EXPECT_EQ(received_by("tok_0", ""), 0);
}

TEST_F(PayoutLedger, OneReadGivesTheSameFiguresAsOneReadForEach) {
    for (int i = 0; i < 60; ++i) {
        append_payout("tok_" + std::to_string(i % 3), "", i + 1, i % 5 ? "1d" + std::to_string(i % 5) : "",
                      "x", "", i % 7 ? "payout" : "app_fee");
    }
    for (const std::string token : {"tok_0", "tok_1", "tok_2", "tok_9", ""}) {
        const TokenPayouts payouts = read_token_payouts(token);
        EXPECT_EQ(payouts.paid_total, paid_total(token));
        for (const std::string dest : {"1d1", "1d2", "1d3", "1d4", "1d9", ""})
            EXPECT_EQ(payouts.received(dest), received_by(token, dest)) << token << " " << dest;
    }
}

TEST_F(PayoutLedger, FieldsOfAnotherTypeReadAsEmptyOrZero) {
    write_ledger(R"({"entries": [
        {"token_id": 5, "name": null, "dest": ["1a"], "txid": {}, "kind": false, "sats": "12", "unix": 1.5},
        "text", null, [1],
        {"token_id": "tok_0", "dest": "1a", "sats": 18446744073709551615},
        {"token_id": "tok_0", "dest": "1a", "sats": 2.9},
        {"token_id": "tok_0", "dest": "1a", "sats": 40}]})");
    const std::vector<PayoutEntry> entries = read_payout_entries();
    ASSERT_EQ(entries.size(), 4U);
    const PayoutEntry& odd = entries[0];
    EXPECT_EQ(odd.token_id + odd.name + odd.dest + odd.txid + odd.kind, "");
    EXPECT_EQ(odd.sats, 0);
    EXPECT_EQ(odd.unix, 0);
    EXPECT_EQ(received_by("tok_0", "1a"), 40);
}

TEST_F(PayoutLedger, SumsBeyondTheLargestAmountStayThere) {
    constexpr std::int64_t most = 9223372036854775807;
    append_payout("tok_0", "", most, "1a", "a", "", "payout");
    append_payout("tok_0", "", 1, "1a", "a", "", "payout");
    EXPECT_EQ(paid_total("tok_0"), most);
    append_payout("tok_1", "", -most, "1a", "a", "", "app_fee");
    append_payout("tok_1", "", -5, "1a", "a", "", "app_fee");
    EXPECT_LT(fees_total(), -most);
}

TEST_F(PayoutLedger, ANameCutInsideACharacterLosesNothingElse) {
    append_payout("tok_0", "t1", 10, "1a", "Zoë", "Wiesen-Glück", "payout");
    append_payout("tok_0", "t2", 20, "1b", "Zo\xc3", "\xff\xfe token", "payout");
    append_payout("tok_0", "t3", 30, "1c", "c", "", "payout");
    const std::vector<PayoutEntry> entries = read_payout_entries();
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[0].name, "Zoë");
    EXPECT_EQ(entries[0].token_name, "Wiesen-Glück");
    EXPECT_EQ(entries[1].name, "Zo\xef\xbf\xbd");
    EXPECT_EQ(paid_total("tok_0"), 60);
}

TEST_F(PayoutLedger, EachWalletHasItsOwn) {
    append_payout("tok_0", "", 10, "1a", "a", "", "payout");
    qv_clasp_set_active_wallet_id("w2");
    EXPECT_EQ(paid_total("tok_0"), 0);
    append_payout("tok_0", "", 5, "1a", "a", "", "payout");
    EXPECT_EQ(paid_total("tok_0"), 5);
    qv_clasp_set_active_wallet_id("w1");
    EXPECT_EQ(paid_total("tok_0"), 10);
}

TEST_F(PayoutLedger, AWriteThatFailsIsDropped) {
    home.write("/bursaria/w1_paid.json/in_the_way", std::string("x"));
    append_payout("tok_0", "", 10, "1a", "a", "", "payout");
    EXPECT_EQ(paid_total("tok_0"), 0);
}
