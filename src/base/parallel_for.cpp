#include "base/parallel_for.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>
#include <vector>

void parallel_for(std::size_t count, std::size_t threads, const std::function<void(std::size_t)>& job) {
    if (count <= 1 || threads < 2) {
        for (std::size_t i = 0; i < count; ++i) job(i);
        return;
    }
    std::atomic<std::size_t> next{0};
    const auto work = [&] {
        for (std::size_t i = next++; i < count; i = next++) job(i);
    };
    std::vector<std::thread> pool;
    pool.reserve(std::min(count, threads));
    try {
        for (std::size_t i = 0; i < std::min(count, threads); ++i) pool.emplace_back(work);
    } catch (const std::system_error&) {
        // The system has no more threads to give: the jobs go to those that there are, and to this one.
        work();
    }
    for (std::thread& thread : pool) thread.join();
}
