#include "records/payout_ledger.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <functional>
#include <thread>

#include "records/record_files.h"
#include "tests/support/fake_clock.h"
#include "tests/support/hostile_json.h"
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
    const Json document = home.read_json("/bursaria/w1_paid.json");
    const std::int64_t unix = json_int(json_member(document, "entries").at(0), "unix");
    EXPECT_GT(unix, 0);
    EXPECT_EQ(ledger(), R"({
  "entries": [
    {
      "dest": "1alice",
      "kind": "payout",
      "name": "alice@bursaria.test",
      "sats": 546,
      "token_id": "tok_0",
      "token_name": "Meadow",
      "txid": "ab12",
      "unix": )" + std::to_string(unix) +
                            "\n    }\n  ]\n}");
}

TEST_F(PayoutLedger, WhatIsNoLedgerReadsAsEmptyAndIsReplacedByTheFirstAppend) {
    std::vector<std::string> contents = NO_OBJECTS;
    for (const char* content : {R"({"entries": [{"token_id": "tok_0", "sats": 5)",
                                R"({"entries": {"x": {"token_id": "tok_0", "sats": 5}}})"})
        contents.emplace_back(content);
    for (const std::string& content : contents) {
        SCOPED_TRACE(content);
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

TEST_F(PayoutLedger, IsReadBySeveralThreadsWhileOneAppends) {
    append_payout("tok_0", "", 1, "1a", "a", "", "payout");
    std::atomic<bool> ended{false};
    const auto read = [&] {
        std::int64_t last = 0;
        while (!ended.load()) {
            const std::int64_t now = paid_total("tok_0");
            // A file that is being written may read as empty until the next look.
            EXPECT_TRUE(now == 0 || now >= last) << now << " after " << last;
            last = std::max(now, last);
        }
    };
    std::vector<std::thread> readers;
    for (int i = 0; i < 2; ++i) readers.emplace_back(read);
    for (int i = 0; i < 200; ++i) append_payout("tok_0", "", 1, "1a", "a", "", "payout");
    ended = true;
    for (std::thread& reader : readers) reader.join();
    EXPECT_EQ(paid_total("tok_0"), 201);
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

TEST_F(PayoutLedger, TheFileIsTheWholeDocumentAfterEachAppendWhateverHappensInBetween) {
    const std::string path = home.root() + "/bursaria/w1_paid.json";

    const std::pair<const char*, std::function<void()>> events[] = {
        {"nothing", [] {}},
        {"still nothing", [] {}},
        {"another program appended",
         [&] {
             Json other = home.read_json("/bursaria/w1_paid.json");
             other["entries"].push_back({{"sats", 1.5}, {"name", "other"}});
             write_ledger(dump_json(other, 2));
         }},
        {"a key behind the entries",
         [&] { write_ledger(R"({"a": -0.0, "entries": [], "more": {"x": [1]}})"); }},
        {"it still stands there", [] {}},
        {"entries alone, on one line", [&] { write_ledger(R"({"entries":[{"sats":1}]})"); }},
        {"the file is gone", [&] { remove_file(path); }},
        {"another wallet was paid from",
         [] {
             qv_clasp_set_active_wallet_id("w2");
             append_payout("tok_0", "", 1, "1a", "a", "", "payout");
             qv_clasp_set_active_wallet_id("w1");
         }},
        {"no ledger, but of the same length and within one tick of the clock",
         [&] {
             const auto time = std::filesystem::last_write_time(utf8_path(path));
             write_ledger(std::string(ledger().size(), ' '));
             std::filesystem::last_write_time(utf8_path(path), time);
         }},
        {"a cut file", [&] { write_ledger(ledger().substr(0, ledger().size() - 1)); }},
    };
    append_payout("tok_0", "", 5, "1pay", "a", "", "payout");
    for (const auto& [name, event] : events) {
        SCOPED_TRACE(name);
        event();
        Json expected;
        parse_json(ledger(), expected);
        append_payout("tok_0", "t", 7, "1pay", "\xff]}\"", "", "");
        const std::string text = ledger();
        const Json document = home.read_json("/bursaria/w1_paid.json");
        ASSERT_TRUE(document.is_object());
        if (!expected.is_object()) expected = Json::object({{"entries", Json::array()}});
        expected["entries"].push_back(document["entries"].back());
        EXPECT_EQ(text, dump_json(expected, 2));
        EXPECT_EQ(json_int(document["entries"].back(), "sats"), 7);
    }
}

TEST_F(PayoutLedger, AWriteThatFailsIsDropped) {
    home.write("/bursaria/w1_paid.json/in_the_way", std::string("x"));
    append_payout("tok_0", "", 10, "1a", "a", "", "payout");
    EXPECT_EQ(paid_total("tok_0"), 0);
}
