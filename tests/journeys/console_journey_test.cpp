// What scripts read: the keys of every answer of the console on a whole road, and its exit status.
#include <sstream>

#include "base/json_file.h"
#include "console/console_commands.h"
#include "tests/journeys/journey.h"

namespace {

using Keys = std::set<std::string>;

struct Answered {
    int exit_status = -1;
    Json json;
    std::string err;
};

Answered ask(const std::vector<std::string>& arguments) {
    std::istringstream in;
    std::ostringstream out;
    std::ostringstream err;
    const ConsoleStreams streams{in, out, err};
    Answered answered;
    ConsoleRequest request;
    if (!accept_request(arguments, streams, request)) {
        answered.exit_status = CONSOLE_WRONG_USAGE;
    } else {
        MessageQueue queue;
        answered.exit_status = run_console(request, library_wallet(), queue, streams);
    }
    parse_json(out.str(), answered.json);
    answered.err = err.str();
    return answered;
}

Keys keys_of(const Json& object) {
    Keys keys;
    for (const auto& item : object.items()) keys.insert(item.key());
    return keys;
}

class ConsoleJourney : public Journey {};

TEST_F(ConsoleJourney, EveryAnswerHasItsKeys) {
    open(7, 8);
    const std::string token = world().token_id;
    Answered answered = ask({"tokens", "--json"});
    EXPECT_EQ(answered.exit_status, CONSOLE_FAILED);
    EXPECT_EQ(keys_of(answered.json), (Keys{"result", "tokens"}));

    answered = ask({"connect", "--json"});
    EXPECT_EQ(answered.exit_status, CONSOLE_SUCCESS) << answered.err;
    EXPECT_EQ(answered.json, (Json{{"result", "success"}}));
    clock = std::make_unique<FakeClock>();

    answered = ask({"status", "--json"});
    EXPECT_EQ(answered.exit_status, CONSOLE_SUCCESS);
    EXPECT_EQ(keys_of(answered.json),
              (Keys{"connected", "hd", "address", "paymail", "balance_known", "balance_sats"}));
    EXPECT_EQ(answered.json["balance_sats"], wallet_sats());

    answered = ask({"tokens", "--json"});
    EXPECT_EQ(answered.exit_status, CONSOLE_SUCCESS) << answered.err;
    ASSERT_EQ(answered.json["tokens"].size(), 1U);
    EXPECT_EQ(keys_of(answered.json["tokens"][0]), (Keys{"token_id", "name", "lots", "minted"}));

    answered = ask({"snapshot", token, "--json"});
    EXPECT_EQ(answered.exit_status, CONSOLE_SUCCESS) << answered.err;
    EXPECT_EQ(keys_of(answered.json), (Keys{"result", "board"}));
    const Json board = answered.json["board"];
    EXPECT_EQ(keys_of(board), (Keys{"token_id", "token_name", "total_lots", "reserve_lots", "in_market_lots",
                                    "loaded", "rows"}));
    EXPECT_EQ(board["rows"].size(), world().holders.size());
    for (const Json& row : board["rows"])
        EXPECT_EQ(keys_of(row), (Keys{"who", "dest", "pubkey", "lots", "reserve"}));

    const std::string excluded = board["rows"][0]["who"];
    answered = ask({"preview", token, "0.02", "--exclude", excluded, "--json"});
    EXPECT_EQ(answered.exit_status, CONSOLE_SUCCESS) << answered.err;
    EXPECT_EQ(keys_of(answered.json),
              (Keys{"ok", "text", "pot", "fee_estimate", "remainder", "skips", "rows"}));
    EXPECT_EQ(answered.json["pot"], 2'000'000);
    std::size_t due = 0;
    for (const Json& row : answered.json["rows"]) {
        EXPECT_EQ(keys_of(row), (Keys{"name", "dest", "lots", "sats", "skip"}));
        EXPECT_NE(row["name"], excluded);
        if (!row["skip"].get<bool>()) ++due;
    }

    EXPECT_EQ(ask({"pay", token, "0.02", "--json"}).exit_status, CONSOLE_WRONG_USAGE);
    EXPECT_TRUE(read_payout_entries().empty());
    answered = ask({"pay", token, "0.02", "--exclude", excluded, "--yes", "--json"});
    EXPECT_EQ(answered.exit_status, CONSOLE_SUCCESS) << answered.err;
    EXPECT_EQ(keys_of(answered.json), (Keys{"stopped", "text", "txids"}));
    EXPECT_EQ(answered.json["stopped"], false);
    EXPECT_EQ(answered.json["txids"].size(), due + 1);
    for (const Json& txid : answered.json["txids"])
        EXPECT_TRUE(chain().find(txid.get<std::string>()).has_value());

    answered = ask({"pay", token, "4", "--yes", "--json"});
    EXPECT_EQ(answered.exit_status, CONSOLE_SUCCESS) << answered.err;
    answered = ask({"pay", token, "4", "--yes", "--json"});
    EXPECT_EQ(answered.exit_status, CONSOLE_FAILED) << "there is not that much left";
    EXPECT_EQ(answered.json["stopped"], true);
    EXPECT_EQ(answered.json["txids"], Json::array());

    answered = ask({"unbind", "--json"});
    EXPECT_EQ(answered.exit_status, CONSOLE_SUCCESS);
    EXPECT_EQ(answered.json, (Json{{"result", "success"}}));
    answered = ask({"status", "--json"});
    EXPECT_EQ(answered.exit_status, CONSOLE_SUCCESS);
    EXPECT_EQ(answered.json["connected"], false);
}

}  // namespace
