// Running independent jobs on a few threads.
#pragma once

#include <cstddef>
#include <functional>

// Runs job(0) to job(count - 1), each once, and returns when all are done. With one item or fewer than two
// threads it runs on the caller's thread; otherwise min(count, threads) threads take the items from a shared
// index; fewer, and the caller's with them, if the system has no more to give. A job must not throw.
void parallel_for(std::size_t count, std::size_t threads, const std::function<void(std::size_t)>& job);
