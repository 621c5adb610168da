#include <gtest/gtest.h>

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
