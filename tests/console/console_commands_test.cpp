#include "console/console_commands.h"

#include <gtest/gtest.h>

#include <sstream>

#include "base/json_file.h"
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
