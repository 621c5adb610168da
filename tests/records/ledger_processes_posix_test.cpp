#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <map>

#include "records/payout_ledger.h"
#include "tests/support/test_home.h"
#include "wallet/binds.h"

TEST(LedgerProcesses, TwoProgramsThatPayAtOnceKeepAllRows) {
    constexpr int PROCESSES = 3;
    constexpr int ROWS = 60;
    const TestHome home;
    qv_clasp_set_active_wallet_id("w1");
    for (int process = 0; process < PROCESSES; ++process) {
        if (::fork() != 0) continue;
        for (int row = 0; row < ROWS; ++row)
            append_payout("tok_0", std::to_string(row), row, "1alice", std::to_string(process), "Meadow", "");
        ::_exit(0);
    }
    for (int process = 0; process < PROCESSES; ++process) {
        int status = 1;
        ::wait(&status);
        EXPECT_EQ(status, 0);
    }
    std::map<std::string, std::int64_t> next;
    for (const PayoutEntry& entry : read_payout_entries()) EXPECT_EQ(entry.sats, next[entry.name]++);
    for (int process = 0; process < PROCESSES; ++process) EXPECT_EQ(next[std::to_string(process)], ROWS);
}
