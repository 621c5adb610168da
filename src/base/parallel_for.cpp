#include "base/parallel_for.h"

#include <algorithm>
#include <atomic>
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
    for (std::size_t i = 0; i < std::min(count, threads); ++i) pool.emplace_back(work);
    for (std::thread& thread : pool) thread.join();
}
