#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/test_home.h"
#include "wallet/wallet_registry.h"

namespace {

int open_descriptors() {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        (void)entry;
        ++count;
    }
    return count;
}

// In a child process: adds one to the number in the registry, many times, each time under the lock.
[[noreturn]] void count_up(int times) {
    for (int i = 0; i < times; ++i) {
        const RegistryLock lock;
        Json registry = qv_clasp_read_registry();
        registry["count"] = json_int(registry, "count") + 1;
        if (!qv_clasp_write_registry(registry)) ::_exit(1);
    }
    ::_exit(0);
}

}  // namespace

TEST(RegistryLockFile, IsOpenedOnceForNestedHolds) {
    const TestHome home;
    const int before = open_descriptors();
    {
        const RegistryLock outer;
        EXPECT_EQ(open_descriptors(), before + 1);
        const RegistryLock inner;
        qv_clasp_list_wallets();
        EXPECT_EQ(open_descriptors(), before + 1);
    }
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(home.read("/wallets.lock"), "");
    EXPECT_TRUE(home.exists("/wallets.lock"));
}

TEST(RegistryLockFile, SerialisesTwoProcesses) {
    const TestHome home;
    constexpr int TIMES = 40;
    std::vector<pid_t> children;
    for (int i = 0; i < 3; ++i) {
        const pid_t child = ::fork();
        if (child == 0) count_up(TIMES);
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    EXPECT_EQ(json_int(home.read_json("/wallets.json"), "count"), 3 * TIMES) << "an update was lost";
}
