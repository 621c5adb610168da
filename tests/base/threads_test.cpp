#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "base/parallel_for.h"

TEST(ParallelFor, RunsEachJobOnceOnNoMoreThreadsThanAsked) {
    for (const std::size_t threads : {0U, 1U, 4U, 50U}) {
        std::vector<std::atomic<int>> runs(37);
        std::mutex mutex;
        std::set<std::thread::id> ids;
        parallel_for(runs.size(), threads, [&](std::size_t i) {
            ++runs[i];
            const std::lock_guard<std::mutex> hold(mutex);
            ids.insert(std::this_thread::get_id());
        });
        for (const auto& count : runs) EXPECT_EQ(count, 1);
        EXPECT_LE(ids.size(), std::max<std::size_t>(threads, 1));
        if (threads < 2) {
            EXPECT_EQ(*ids.begin(), std::this_thread::get_id());
        }
    }
    parallel_for(0, 4, [](std::size_t) { FAIL(); });
}
