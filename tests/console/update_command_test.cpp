#include <gtest/gtest.h>

#include <sstream>

#include "console/console_commands.h"
#include "tests/core/fake_wallet.h"
#include "tests/support/test_home.h"

TEST(UpdateCommand, TellsTheVersionsAndWhetherOneIsNewer) {
    struct Row {
        int latest;
        int exit_status;
        const char* object;
    };
    constexpr Row ROWS[] = {
        {3, CONSOLE_SUCCESS, R"({"available":true,"latest":"0.003","version":"0.002"})"},
        {2, CONSOLE_SUCCESS, R"({"available":false,"latest":"0.002","version":"0.002"})"},
        {-1, CONSOLE_FAILED, R"({"available":false,"latest":"","version":"0.002"})"},
    };
    const TestHome home;
    FakeWallet wallet;
    for (const Row& row : ROWS) {
        std::istringstream in;
        std::ostringstream out, err;
        const ConsoleStreams streams{in, out, err, false, false};
        ConsoleRequest request;
        ASSERT_TRUE(accept_request({"update", "--json"}, streams, request)) << err.str();
        MessageQueue queue;
        const int exit_status =
            run_console(request, wallet.functions(), queue, streams, {}, [&row] { return row.latest; });
        EXPECT_EQ(exit_status, row.exit_status);
        EXPECT_EQ(out.str(), std::string(row.object) + "\n");
    }
}
