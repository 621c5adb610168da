#include "base/ranked_mutex.h"

#include <gtest/gtest.h>

#include <thread>

#ifndef NDEBUG

namespace {

RankedMutex<LockRank::Wallet, std::recursive_mutex> wallet;
RankedMutex<LockRank::Registry, std::recursive_mutex> registry;
RankedMutex<LockRank::Registry, std::recursive_mutex> names;
RankedMutex<LockRank::Leaf> leaf;

template <typename First, typename Second>
void take_both(First& first, Second& second) {
    const std::lock_guard outer(first);
    const std::lock_guard inner(second);
}

}  // namespace

TEST(RankedMutex, TakesHigherRanksAndWhatItHoldsAlready) {
    take_both(wallet, registry);
    take_both(wallet, leaf);
    const std::lock_guard outer(wallet);
    take_both(registry, leaf);
    // Given up in another order than taken.
    std::unique_lock first(registry);
    std::unique_lock second(leaf);
    first.unlock();
    second.unlock();
    take_both(registry, wallet);
    // What another thread holds is no concern of this one.
    std::thread([] { take_both(registry, leaf); }).join();
}

TEST(RankedMutexDeathTest, EndsAtTheFirstLockOutOfOrder) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_DEATH(take_both(registry, wallet), "a lower lock after a higher one");
    EXPECT_DEATH(take_both(leaf, registry), "a lower lock after a higher one");
    EXPECT_DEATH(take_both(registry, names), "a lower lock after a higher one");
    EXPECT_DEATH(wallet.unlock(), "does not hold");
}

#endif
