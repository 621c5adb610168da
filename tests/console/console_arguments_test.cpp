#include "console/console_arguments.h"

#include <gtest/gtest.h>

namespace {

using Arguments = std::vector<std::string>;

std::string read_back(const ConsoleRequest& request) {
    std::string text =
        std::to_string(static_cast<int>(request.command)) + " " + request.token + " " + request.amount;
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
    const Arguments cases[] = {
        {},
        {""},
        {"help"},
        {"--json"},
        {"history"},
        {"vault", "list"},
        {"note", "T", "a"},
        {"update"},
        {"Connect"},
        {"connect", "now"},
        {"status", "--yes"},
        {"tokens", "--exclude", "a"},
        {"snapshot"},
        {"snapshot", "T", "0.5"},
        {"preview", "T"},
        {"preview", "T", "0.5", "--yes"},
        {"preview", "T", "0.5", "--exclude"},
        {"preview", "T", "0.5", "a"},
        {"pay", "T", "0.5", "--exclude=a"},
        {"pay", "T", "0.5", "--force"},
        {"pay", "--yes"},
    };
    for (const Arguments& arguments : cases) {
        ConsoleRequest request;
        std::string usage;
        EXPECT_FALSE(parse_console_arguments(arguments, request, usage)) << testing::PrintToString(arguments);
        EXPECT_EQ(usage.substr(0, 24), "usage: bursaria-console ");
    }
}
