#include "console/console_arguments.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using Arguments = std::vector<std::string>;

std::string read_back(const ConsoleRequest& request) {
    std::string text =
        std::to_string(static_cast<int>(request.command)) + " " + request.token + " " + request.amount;
    text += request.name.empty() ? "" : " " + request.name + ":";
    for (const std::string& one : request.texts) text += " " + one;
    if (request.range != ALL_TIME) text += std::string(" ") + HISTORY_RANGES[request.range].word;
    if (!request.csv_file.empty()) text += " >" + request.csv_file;
    for (const std::string& who : request.excluded) text += " -" + who;
    return text + (request.yes ? " yes" : "") + (request.json ? " json" : "");
}

}  // namespace

TEST(ConsoleArguments, WhatIsAccepted) {
    const std::pair<Arguments, std::string> cases[] = {
        {{"connect"}, "0  "},
        {{"unbind", "--json"}, "1   json"},
        {{"status"}, "2  "},
        {{"tokens", "--json"}, "3   json"},
        {{"snapshot", "T"}, "4 T "},
        {{"snapshot", "--json", "T"}, "4 T  json"},
        {{"preview", "T", "0.5"}, "5 T 0.5"},
        {{"preview", "--exclude", "a", "T", "--exclude", "--json", "0.5"}, "5 T 0.5 -a ---json"},
        {{"pay", "T", "-1", "--yes"}, "6 T -1 yes"},
        {{"pay", "T", "", "--exclude", "", "--json"}, "6 T  - json"},
        {{"history"}, "7  "},
        {{"history", "--range", "3m", "--token", "T", "--csv", "--f"}, "7 T  3m >--f"},
        {{"vault", "list", "--json"}, "8   json"},
        {{"vault", "save", "N", "--json", "1a", "1b"}, "9   N: 1a 1b json"},
        {{"vault", "add", "value", "1a"}, "10   value: 1a"},
        {{"vault", "value", "N"}, "11   N:"},
        {{"note", "T", "a"}, "12 T  a:"},
        {{"note", "T", "a", ""}, "12 T  a: "},
    };
    for (const auto& [arguments, expected] : cases) {
        ConsoleRequest request;
        std::string usage;
        EXPECT_TRUE(parse_console_arguments(arguments, request, usage)) << usage;
        EXPECT_EQ(read_back(request), expected);
        EXPECT_EQ(usage, "");
    }
}

TEST(ConsoleArguments, WhatIsRefusedWithTheUsage) {
    // A call a line, its words by blanks; '' is an empty word.
    std::istringstream calls(
        "\n''\nhelp\n--json\nconnect now\nConnect\nstatus --yes\ntokens --exclude a\nsnapshot\nsnapshot T "
        "0.5\n"
        "preview T\npreview T 0.5 --yes\npreview T 0.5 --exclude\npreview T 0.5 a\n"
        "pay T 0.5 --exclude=a\npay T 0.5 --force\npay --yes\n"
        "history T\nhistory --range 2d\nhistory --range\nhistory --token ''\nhistory --csv ''\n"
        "vault\nvault list N\nvault save N\nvault add\nvault value N 1a\nnote T\nnote T a two words\n");
    for (std::string line; std::getline(calls, line);) {
        std::istringstream words(line);
        Arguments arguments;
        for (std::string word; words >> word;) arguments.push_back(word == "''" ? "" : word);
        ConsoleRequest request;
        std::string usage;
        EXPECT_FALSE(parse_console_arguments(arguments, request, usage)) << line;
        EXPECT_EQ(usage.substr(0, 24), "usage: bursaria-console ");
    }
}
