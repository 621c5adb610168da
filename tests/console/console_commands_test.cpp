#include "console/console_commands.h"

#include <gtest/gtest.h>

#include <sstream>

#include "base/json_file.h"
#include "base/settings.h"
#include "records/payout_ledger.h"
#include "tests/core/board_builder.h"
#include "tests/core/fake_wallet.h"
#include "tests/support/test_home.h"

namespace {

struct ConsoleTest : testing::Test {
    TestHome home;
    FakeWallet wallet;
    std::string typed;
    bool terminal = false;
    std::string out;
    std::string err;
    int exit_status = -1;

    void run(const std::vector<std::string>& arguments) {
        std::istringstream in(typed);
        std::ostringstream out_stream, err_stream;
        const ConsoleStreams streams{in, out_stream, err_stream, terminal, terminal};
        ConsoleRequest request;
        if (accept_request(arguments, streams, request)) {
            MessageQueue queue;
            exit_status = run_console(request, wallet.functions(), queue, streams);
        } else {
            exit_status = CONSOLE_WRONG_USAGE;
        }
        out = out_stream.str();
        err = err_stream.str();
    }
    // Standard output as the one object that it must be.
    Json answer() const {
        Json object;
        EXPECT_TRUE(parse_json(out, object)) << out;
        EXPECT_TRUE(object.is_object());
        return object;
    }
    static std::vector<std::string> keys(const Json& object) {
        std::vector<std::string> names;
        for (const auto& [key, value] : object.items()) names.push_back(key);
        return names;
    }
    bool err_has(const std::string& part) const { return err.find(part) != std::string::npos; }
};

using Console = ConsoleTest;
using Keys = std::vector<std::string>;

const std::string TOKEN = token_id_of('c');
const HolderBoard HOLDERS =
    board().market("alice", "3").reserve("me", "10").market("bob", "1").nowhere("lost", "1");

}  // namespace

TEST_F(Console, ConnectAnswersWithTheWalletsText) {
    wallet.connected = false;
    run({"connect", "--json"});
    EXPECT_EQ(exit_status, 0);
    EXPECT_EQ(out, "{\"result\":\"success\"}\n");
    EXPECT_TRUE(err_has("Waiting for Clasp to approve")) << err;
    EXPECT_TRUE(wallet.refreshed) << "the tokens are loaded as behind the window's button";

    run({"connect"});
    EXPECT_EQ(exit_status, 1);
    EXPECT_EQ(out, "");
    EXPECT_EQ(err, "Already connected. Unbind to pick another wallet.\n");

    wallet.connected = false;
    wallet.connect_result = "error: Clasp said no.";
    run({"connect", "--json"});
    EXPECT_EQ(exit_status, 1);
    EXPECT_EQ(out, "{\"result\":\"error: Clasp said no.\"}\n");
    EXPECT_TRUE(err_has("error: Clasp said no.\n"));
}

TEST_F(Console, StatusTellsWhatTheReportFound) {
    wallet.status = {true, true, true, "1WalletAddress", 5};
    wallet.paymail = "me@bursaria.test";
    run({"status", "--json"});
    EXPECT_EQ(exit_status, 0);
    EXPECT_EQ(out,
              "{\"address\":\"1WalletAddress\",\"balance_known\":true,\"balance_sats\":5,\"connected\":true,"
              "\"hd\":true,\"paymail\":\"me@bursaria.test\"}\n");
    run({"status"});
    EXPECT_EQ(out,
              "connected, mnemonic wallet\naddress: 1WalletAddress\npaymail: me@bursaria.test\nbalance: "
              "0.00000005 BSV\n");
    wallet.status.balance_known = false;
    run({"status"});
    EXPECT_NE(out.find("balance: (WhatsOnChain miss)\n"), std::string::npos);
    wallet.status = {};
    run({"status", "--json"});
    EXPECT_EQ(exit_status, 0);
    EXPECT_EQ(json_text(answer(), "paymail"), "") << "no wallet, no name";
}

TEST_F(Console, TokensAreListedAlsoBesideAnError) {
    wallet.tokens = {{TOKEN, "Meadow", "12", true}};
    run({"tokens", "--json"});
    EXPECT_EQ(exit_status, 0);
    EXPECT_EQ(
        out,
        "{\"result\":\"\",\"tokens\":[{\"lots\":\"12\",\"minted\":true,\"name\":\"Meadow\",\"token_id\":\"" +
            TOKEN + "\"}]}\n");
    run({"tokens"});
    EXPECT_EQ(out, TOKEN + "  Meadow  12 lots  minted\n");

    wallet.tokens_result = "error: the indexer is down";
    run({"tokens", "--json"});
    EXPECT_EQ(exit_status, 1);
    EXPECT_EQ(json_text(answer(), "result"), "error: the indexer is down");
    EXPECT_EQ(answer()["tokens"].size(), 1U);

    wallet.connected = false;
    run({"tokens", "--json"});
    EXPECT_EQ(exit_status, 1);
    EXPECT_EQ(out, "{\"result\":\"Connect a Clasp wallet first.\",\"tokens\":[]}\n");
}

TEST_F(Console, ASnapshotGivesTheBoard) {
    wallet.board = HOLDERS;
    wallet.board.rows[0].pubkey = "02ab";
    run({"snapshot", " " + TOKEN + "\n", "--json"});
    EXPECT_EQ(exit_status, 0);
    const Json object = answer();
    EXPECT_EQ(keys(object), (Keys{"board", "result"}));
    EXPECT_EQ(keys(object["board"]), (Keys{"in_market_lots", "loaded", "reserve_lots", "rows", "token_id",
                                           "token_name", "total_lots"}));
    EXPECT_EQ(object["board"]["rows"][0].dump(),
              R"({"dest":"1alice","lots":"3","pubkey":"02ab","reserve":false,"who":"alice"})");
    EXPECT_EQ(json_text(object["board"], "token_id"), TOKEN);
    EXPECT_EQ(json_text(object["board"], "total_lots"), "15");
    EXPECT_TRUE(json_bool(object["board"]["rows"][1], "reserve"));
}

TEST_F(Console, AFailedSnapshotStillAnswersWithOneObject) {
    wallet.snapshot_result = "error: no such token";
    wallet.board = HOLDERS;
    run({"snapshot", TOKEN, "--json"});
    EXPECT_EQ(exit_status, 1);
    EXPECT_EQ(json_text(answer(), "result"), "error: no such token");
    EXPECT_TRUE(answer()["board"]["rows"].empty());

    run({"snapshot", "abc", "--json"});
    EXPECT_EQ(exit_status, 1);
    const std::string text = "Pick a token or paste its deploy origin (txid_vout).";
    EXPECT_EQ(json_text(answer(), "result"), text);
    EXPECT_TRUE(err_has(text));
}

TEST_F(Console, APreviewShowsTheFrozenList) {
    wallet.board = HOLDERS;
    wallet.fee_estimate = 10;
    run({"preview", TOKEN, "0.0005", "--json"});
    EXPECT_EQ(exit_status, 0) << err;
    const Json object = answer();
    EXPECT_EQ(keys(object), (Keys{"fee_estimate", "ok", "pot", "remainder", "rows", "skips", "text"}));
    EXPECT_TRUE(json_bool(object, "ok"));
    EXPECT_EQ(json_int(object, "pot"), 50000);
    EXPECT_EQ(json_int(object, "fee_estimate"), 30);
    EXPECT_EQ(json_int(object, "remainder"), 10000);
    EXPECT_EQ(json_int(object, "skips"), 1);
    EXPECT_EQ(object["rows"][0].dump(),
              R"({"dest":"1alice","lots":"3","name":"alice","sats":30000,"skip":false})");
    EXPECT_TRUE(json_bool(object["rows"][2], "skip"));

    run({"preview", TOKEN, "0.0005", "--exclude", "alice", "--exclude", "lost", "--exclude", "alice",
         "--json"});
    EXPECT_EQ(exit_status, 0);
    ASSERT_EQ(answer()["rows"].size(), 1U);
    EXPECT_EQ(json_int(answer()["rows"][0], "sats"), 50000);
}

TEST_F(Console, APreviewThatFreezesNothingPayableFails) {
    wallet.board = HOLDERS;
    const std::string nobody = "No in-market holder is named ";
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{TOKEN, "1,5"}, "Enter how much BSV to pay as a dividend (e.g. 0.01)."},
        {{TOKEN, "1", "--exclude", "eve"}, nobody + "\"eve\" on this board."},
        {{TOKEN, "1", "--exclude", "me"}, nobody + "\"me\" on this board."},
        {{TOKEN, "1", "--exclude", "alice", "--exclude", "bob", "--exclude", "lost"},
         "No payable lots - every in-market holder is excluded. Include someone, or Snapshot again."},
        {{"abc", "1"}, "Pick a token or paste its deploy origin (txid_vout)."},
    };
    for (const auto& [words, text] : cases) {
        std::vector<std::string> arguments = words;
        arguments.insert(arguments.begin(), "preview");
        arguments.push_back("--json");
        run(arguments);
        EXPECT_EQ(exit_status, 1) << text;
        EXPECT_TRUE(err_has(text)) << err;
        EXPECT_FALSE(json_bool(answer(), "ok", true)) << text;
        EXPECT_EQ(json_text(answer(), "text"), text);
        EXPECT_TRUE(answer()["rows"].empty()) << text;
    }
    run({"preview", TOKEN, "0.00000005", "--json"});
    EXPECT_EQ(exit_status, 1);
    EXPECT_FALSE(json_bool(answer(), "ok", true));
    EXPECT_EQ(json_int(answer(), "skips"), 3) << "only skips";
}

TEST_F(Console, APaymentIsMadeAndAnswered) {
    wallet.board = HOLDERS;
    run({"pay", TOKEN, "0.0005", "--yes", "--json"});
    EXPECT_EQ(exit_status, 0) << err;
    const Json object = answer();
    EXPECT_EQ(keys(object), (Keys{"stopped", "text", "txids"}));
    EXPECT_FALSE(json_bool(object, "stopped", true));
    EXPECT_EQ(json_text(object, "text").substr(0, 8), "Paid 2.\n");
    EXPECT_EQ(object["txids"].size(), 3U);
    EXPECT_EQ(object["txids"][2], FakeWallet::txid(2));
    EXPECT_EQ(wallet.sends.size(), 3U);
    EXPECT_EQ(paid_total(TOKEN), 40000);
    EXPECT_EQ(wallet.status_calls, 2) << "the funds test, and the summary behind the run";
}

TEST_F(Console, AStoppedPaymentIsAFailureThatNamesWhatWasPaid) {
    wallet.board = HOLDERS;
    wallet.send_results = {"success: " + hex_id('a'), "success: " + hex_id('b'), "error: refused"};
    run({"pay", TOKEN, "0.0005", "--yes", "--json"});
    EXPECT_EQ(exit_status, 1);
    EXPECT_TRUE(json_bool(answer(), "stopped"));
    EXPECT_EQ(answer()["txids"].size(), 2U);
    EXPECT_TRUE(err_has("bob error: refused\n")) << err;
    EXPECT_EQ(paid_total(TOKEN), 30000);
}

TEST_F(Console, APaymentWithoutALastWordSendsNothing) {
    wallet.board = HOLDERS;
    run({"pay", TOKEN, "0.0005"});
    EXPECT_EQ(exit_status, 2);
    EXPECT_TRUE(err_has("usage: bursaria-console pay TOKEN AMOUNT"));
    EXPECT_TRUE(wallet.snapshots.empty());

    terminal = true;
    for (const std::string answer_typed : {"", "n\n", "\n", "yess\n", "no y\n"}) {
        typed = answer_typed;
        run({"pay", TOKEN, "0.0005", "--json"});
        EXPECT_EQ(exit_status, 1) << typed;
        EXPECT_TRUE(json_bool(answer(), "stopped"));
        EXPECT_EQ(json_text(answer(), "text"), "Cancelled. Nothing was paid.");
        EXPECT_TRUE(err_has("Pay this frozen snapshot?\n\n0.00050000 BSV pot"));
        EXPECT_TRUE(err_has("alice  3 lots  ->  0.00030000 BSV\n"));
    }
    EXPECT_TRUE(wallet.sends.empty());

    typed = " Yes \n";
    run({"pay", TOKEN, "0.0005"});
    EXPECT_EQ(exit_status, 0);
    EXPECT_EQ(out.substr(0, 8), "Paid 2.\n");
    EXPECT_EQ(wallet.sends.size(), 3U);
}

TEST_F(Console, ARefusedSplitPaysNothingAndSaysSo) {
    wallet.board = HOLDERS;
    for (const char* amount : {"0.00000005", "", "1e3"}) {
        run({"pay", TOKEN, amount, "--yes", "--json"});
        EXPECT_EQ(exit_status, 1) << amount;
        EXPECT_TRUE(json_bool(answer(), "stopped"));
        EXPECT_TRUE(answer()["txids"].empty());
    }
    wallet.snapshot_result = "error: wallet changed.";
    run({"pay", TOKEN, "1", "--yes", "--json"});
    EXPECT_EQ(exit_status, 1);
    EXPECT_EQ(json_text(answer(), "text"), "error: wallet changed.");
    EXPECT_TRUE(wallet.sends.empty());
}

TEST_F(Console, AResultThatCannotBeWrittenIsAFailure) {
    std::istringstream in;
    std::ostringstream out_stream, err_stream;
    out_stream.setstate(std::ios::badbit);
    MessageQueue queue;
    ConsoleRequest request;
    request.command = ConsoleCommand::Unbind;
    EXPECT_EQ(run_console(request, wallet.functions(), queue, {in, out_stream, err_stream}), 1);
}
