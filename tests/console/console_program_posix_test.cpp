// The program itself, as a process.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>

#include "tests/support/test_home.h"

namespace {

struct Outcome {
    int exit_status = -1;
    std::string out;
};

Outcome run_program(const std::string& arguments) {
    Outcome outcome;
    const std::string command = std::string(CONSOLE_PROGRAM) + " " + arguments + " 2>&1 </dev/null";
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe) return outcome;
    std::array<char, 4096> block{};
    while (const std::size_t count = std::fread(block.data(), 1, block.size(), pipe))
        outcome.out.append(block.data(), count);
    const int status = ::pclose(pipe);
    if (WIFEXITED(status)) outcome.exit_status = WEXITSTATUS(status);
    return outcome;
}

}  // namespace

TEST(ConsoleProgram, WrongUsageTouchesNoFile) {
    const TestHome home;
    for (const char* arguments : {"", "history now", "snapshot", "pay a 1"}) {
        const Outcome outcome = run_program(arguments);
        EXPECT_EQ(outcome.exit_status, 2) << arguments;
        EXPECT_NE(outcome.out.find("usage: bursaria-console "), std::string::npos);
    }
    EXPECT_FALSE(home.exists("/binds"));
    EXPECT_FALSE(home.exists("/bursaria"));
}

TEST(ConsoleProgram, AnswersWithoutAWallet) {
    const TestHome home;
    const Outcome status = run_program("status --json");
    EXPECT_EQ(status.exit_status, 0) << status.out;
    EXPECT_NE(status.out.find("\"connected\":false"), std::string::npos) << status.out;

    const Outcome tokens = run_program("tokens --json");
    EXPECT_EQ(tokens.exit_status, 1);
    EXPECT_NE(tokens.out.find("Connect a Clasp wallet first."), std::string::npos) << tokens.out;
}
