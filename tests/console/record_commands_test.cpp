#include "console/record_commands.h"

#include <gtest/gtest.h>

#include <sstream>

#include "console/console_commands.h"
#include "records/holder_notes.h"
#include "records/payout_ledger.h"
#include "records/record_files.h"
#include "tests/core/board_builder.h"
#include "tests/core/fake_wallet.h"
#include "tests/support/test_home.h"

namespace {

struct RecordCommandsTest : testing::Test {
    TestHome home;
    FakeWallet wallet;
    AddressReader read_address;
    std::string out;
    std::string err;

    int run(std::vector<std::string> arguments) {
        std::istringstream in;
        std::ostringstream out_stream, err_stream;
        const ConsoleStreams streams{in, out_stream, err_stream, false, false};
        ConsoleRequest request;
        int exit_status = CONSOLE_WRONG_USAGE;
        if (accept_request(arguments, streams, request)) {
            MessageQueue queue;
            exit_status = run_console(request, wallet.functions(), queue, streams, read_address);
        }
        out = out_stream.str();
        err = err_stream.str();
        return exit_status;
    }
};

using RecordCommands = RecordCommandsTest;

const std::string A = "1" + std::string(33, 'a');
const std::string B = "1" + std::string(33, 'b');

}  // namespace

TEST_F(RecordCommands, TheHistoryListsPayoutsAndExportsThem) {
    const std::string csv = home.folder() + "/out.csv";
    EXPECT_EQ(run({"history", "--json", "--csv", csv}), 1);
    EXPECT_EQ(out, "{\"fees_sats\":0,\"payouts\":[],\"total_sats\":0}\n");
    EXPECT_EQ(err, "Nothing to export in the current view.\n");
    EXPECT_FALSE(file_exists(csv));

    append_payout("tok_0", "t1", 546, "1a", "", "Meadow", "");
    append_payout("tok_1", "t2", 1000, "1b", "bob", "", "");
    append_payout("app_fee", "t3", 1000000, "1fee", "fee", "BA fee", "app_fee");
    EXPECT_EQ(run({"history", "--token", "tok_0", "--range", "24h", "--json"}), 0);
    Json object;
    ASSERT_TRUE(parse_json(out, object));
    EXPECT_EQ(json_int(object, "total_sats"), 546);
    EXPECT_EQ(json_int(object, "fees_sats"), 1000000) << "of all tokens";
    ASSERT_EQ(object["payouts"].size(), 1U);
    EXPECT_EQ(json_text(object["payouts"][0], "when").size(), 16U);
    object["payouts"][0].erase("when");
    EXPECT_EQ(object["payouts"][0].dump(),
              R"({"dest":"1a","kind":"payout","sats":546,"token":"Meadow","txid":"t1","who":"1a"})");

    EXPECT_EQ(run({"history", "--csv", csv}), 0);
    EXPECT_EQ(out, "Saved 2 rows.\n");
    std::string file;
    EXPECT_TRUE(read_text_file(csv, file));
    EXPECT_NE(file.find(",bob,0.00001000,1000,1b,t2,tok_1,payout\r\n"), std::string::npos) << file;
    EXPECT_EQ(run({"history", "--csv", home.folder()}), 1);
    EXPECT_EQ(err, "Could not write that file.\n");
    EXPECT_EQ(run({"history"}), 0);
    EXPECT_NE(out.find("Payouts: 2    Total: 0.00001546 BSV\nTotal fees paid: 0.01000000 BSV\n"),
              std::string::npos);
}

TEST_F(RecordCommands, VaultsAreSavedListedAndValued) {
    const std::string one = "{\"vaults\":[{\"addresses\":[\"" + A + "\"],\"name\":\"one\"}]}\n";
    EXPECT_EQ(run({"vault", "save", "one", A, "--json"}), 0);
    EXPECT_EQ(out, one);
    EXPECT_EQ(run({"vault", "add", "one", B, "bad", "--json"}), 1);
    EXPECT_EQ(out, one) << "nothing of a refused add is kept";
    EXPECT_EQ(err, "Not a payment longcode: bad\n");
    EXPECT_EQ(run({"vault", "add", "two", B}), 1);
    EXPECT_EQ(err, "Pick a vault first, or Create Vault.\n");
    EXPECT_EQ(run({"vault", "add", "one", B}), 0);
    EXPECT_EQ(out, "Address added. Watch-only - BA will not spend it.\n");
    EXPECT_EQ(run({"vault", "list"}), 0);
    EXPECT_EQ(out, "one\n  " + A + "\n  " + B + "\n");

    read_address = [](const std::string& address, std::vector<std::int64_t>& sats, std::string& error) {
        sats = {address == A ? 500 : 46};
        error = "no answer";
        return address != B;
    };
    EXPECT_EQ(run({"vault", "value", "one", "--json"}), 1);
    EXPECT_EQ(out, "{\"detail\":\"" + B + " - no answer\",\"sats\":-1}\n");
    EXPECT_EQ(err,
              "Vault Value: looking up (0-conf)...\nVault Value: lookup failed (" + B + " - no answer)\n");
    EXPECT_EQ(run({"vault", "save", "one", A}), 0);
    EXPECT_EQ(run({"vault", "value", "one", "--json"}), 0);
    EXPECT_EQ(out, "{\"detail\":\"\",\"sats\":500}\n");
    EXPECT_EQ(run({"vault", "value", "two", "--json"}), 1);
    EXPECT_EQ(out, "{\"detail\":\"No vault is named \\\"two\\\".\",\"sats\":-1}\n");

    remove_file(vaults_file_path());
    make_folder(vaults_file_path());
    EXPECT_EQ(run({"vault", "save", "one", A, "--json"}), 1);
    EXPECT_EQ(out, "{\"vaults\":[]}\n");
    wallet.connected = false;
    EXPECT_EQ(run({"vault", "list", "--json"}), 1);
    EXPECT_EQ(err, "Connect a Clasp wallet first. Vaults are stored per wallet.\n");
}

TEST_F(RecordCommands, ANoteIsReadAndWrittenOnARowOfTheBoard) {
    wallet.board = board().market("alice", "3").reserve("me", "9").nowhere("", "1");
    wallet.board.rows[0].pubkey = "02ab";
    const std::string token = wallet.board.token_id;
    EXPECT_EQ(run({"note", token, "alice", "--json"}), 0);
    EXPECT_EQ(out, "{\"note\":\"\"}\n");
    EXPECT_EQ(run({"note", token, "alice", " pays late ", "--json"}), 0);
    EXPECT_EQ(out, "{\"note\":\"pays late\"}\n");
    EXPECT_EQ(find_note(read_notes(), token, "p:02ab"), "pays late");
    EXPECT_EQ(run({"note", token, "me", "the till"}), 0);
    EXPECT_EQ(out, "Note saved for me.\n");
    EXPECT_EQ(run({"note", token, "alice"}), 0);
    EXPECT_EQ(out, "pays late\n");
    EXPECT_EQ(run({"note", token, "alice", ""}), 0);
    EXPECT_EQ(out, "Note cleared for alice.\n");
    EXPECT_EQ(find_note(read_notes(), token, "p:02ab"), "");

    EXPECT_EQ(run({"note", token, "eve", "x", "--json"}), 1);
    EXPECT_EQ(out, "{\"note\":\"\"}\n");
    EXPECT_NE(err.find("No holder is named \"eve\" on this board."), std::string::npos) << err;
    EXPECT_EQ(run({"note", token, "", "x"}), 1);
    EXPECT_NE(err.find("No handle to attach a note to."), std::string::npos) << err;
    remove_file(notes_file_path());
    make_folder(notes_file_path());
    EXPECT_EQ(run({"note", token, "alice", "lost", "--json"}), 1)
        << "a write that failed is not called saved";
    wallet.snapshot_result = "error: down";
    EXPECT_EQ(run({"note", token, "alice", "x"}), 1);
    EXPECT_NE(err.find("error: down"), std::string::npos);
}
