// What scripts read: the keys of every answer of the console on a whole road, and its exit status.
#include <sstream>

#include "base/json_file.h"
#include "console/console_commands.h"
#include "tests/journeys/journey.h"

namespace {

using Keys = std::set<std::string>;

class ConsoleJourney : public Journey {
 protected:
    Json answer;
    std::string err;

    int ask(const std::vector<std::string>& arguments) {
        std::istringstream in;
        std::ostringstream out_stream, err_stream;
        const ConsoleStreams streams{in, out_stream, err_stream};
        ConsoleRequest request;
        int exit_status = CONSOLE_WRONG_USAGE;
        if (accept_request(arguments, streams, request)) {
            MessageQueue queue;
            exit_status = run_console(request, library_wallet(), queue, streams);
        }
        parse_json(out_stream.str(), answer);
        err = err_stream.str();
        return exit_status;
    }
    static Keys keys_of(const Json& object) {
        Keys keys;
        for (const auto& item : object.items()) keys.insert(item.key());
        return keys;
    }
};

TEST_F(ConsoleJourney, EveryAnswerHasItsKeys) {
    open(7, 8);
    const std::string token = world().token_id;
    EXPECT_EQ(ask({"tokens", "--json"}), CONSOLE_FAILED);
    EXPECT_EQ(keys_of(answer), (Keys{"result", "tokens"}));
    EXPECT_EQ(ask({"connect", "--json"}), CONSOLE_SUCCESS) << err;
    EXPECT_EQ(answer, (Json{{"result", "success"}}));
    clock = std::make_unique<FakeClock>();

    EXPECT_EQ(ask({"status", "--json"}), CONSOLE_SUCCESS);
    EXPECT_EQ(answer["balance_sats"], wallet_sats());
    EXPECT_EQ(ask({"update", "--json"}), CONSOLE_SUCCESS) << err;
    EXPECT_EQ(answer["version"], "0.002");
    EXPECT_EQ(keys_of(answer), (Keys{"version", "latest", "available"}));
    EXPECT_EQ(ask({"tokens", "--json"}), CONSOLE_SUCCESS) << err;
    ASSERT_EQ(answer["tokens"].size(), 1U);
    EXPECT_EQ(keys_of(answer["tokens"][0]), (Keys{"token_id", "name", "lots", "minted"}));
    EXPECT_EQ(ask({"snapshot", token, "--json"}), CONSOLE_SUCCESS) << err;
    const Json board = answer["board"];
    EXPECT_EQ(keys_of(board), (Keys{"token_id", "token_name", "total_lots", "reserve_lots", "in_market_lots",
                                    "loaded", "rows"}));
    EXPECT_EQ(board["rows"].size(), world().holders.size());
    EXPECT_EQ(keys_of(board["rows"][0]), (Keys{"who", "dest", "pubkey", "lots", "reserve"}));

    const std::string excluded = board["rows"][0]["who"];
    EXPECT_EQ(ask({"preview", token, "0.02", "--exclude", excluded, "--json"}), CONSOLE_SUCCESS) << err;
    EXPECT_EQ(answer["pot"], 2'000'000);
    std::size_t due = 0;
    for (const Json& row : answer["rows"]) {
        EXPECT_NE(row["name"], excluded);
        if (!row["skip"].get<bool>()) ++due;
    }
    EXPECT_EQ(ask({"pay", token, "0.02", "--json"}), CONSOLE_WRONG_USAGE);
    EXPECT_TRUE(read_payout_entries().empty());
    EXPECT_EQ(ask({"pay", token, "0.02", "--exclude", excluded, "--yes", "--json"}), CONSOLE_SUCCESS) << err;
    EXPECT_EQ(keys_of(answer), (Keys{"stopped", "text", "txids"}));
    EXPECT_EQ(answer["txids"].size(), due + 1);
    for (const Json& txid : answer["txids"]) EXPECT_TRUE(chain().find(txid.get<std::string>()).has_value());

    EXPECT_EQ(ask({"pay", token, "4", "--yes", "--json"}), CONSOLE_SUCCESS) << err;
    EXPECT_EQ(ask({"pay", token, "4", "--yes", "--json"}), CONSOLE_FAILED) << "there is not that much left";
    EXPECT_EQ(answer["stopped"], true);
    EXPECT_EQ(answer["txids"], Json::array());
    EXPECT_EQ(ask({"unbind", "--json"}), CONSOLE_SUCCESS);
    EXPECT_EQ(ask({"status", "--json"}), CONSOLE_SUCCESS);
    EXPECT_EQ(answer["connected"], false);
}

}  // namespace
