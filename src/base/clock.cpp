#include "base/clock.h"

#include <atomic>
#include <chrono>
#include <thread>

static std::atomic<const ClockFunctions*> replaced{nullptr};

void set_clock(const ClockFunctions* functions) {
    replaced.store(functions);
}

std::int64_t unix_milliseconds() {
    if (const ClockFunctions* clock = replaced.load()) return clock->unix_milliseconds();
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

std::int64_t unix_seconds() {
    return unix_milliseconds() / 1000;
}

std::int64_t monotonic_ns() {
    if (const ClockFunctions* clock = replaced.load()) return clock->monotonic_ns();
    // One hour is added, so that "long ago" stays positive on a machine that has just started.
    constexpr std::int64_t START_NS = 3'600'000'000'000;
    return START_NS + std::chrono::duration_cast<std::chrono::nanoseconds>(
                          std::chrono::steady_clock::now().time_since_epoch())
                          .count();
}

void sleep_milliseconds(std::int64_t milliseconds) {
    if (const ClockFunctions* clock = replaced.load()) return clock->sleep_milliseconds(milliseconds);
    if (milliseconds > 0) std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}
