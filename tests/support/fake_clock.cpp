#include "tests/support/fake_clock.h"

#include <atomic>
#include <mutex>

#include "base/clock.h"

namespace {

constexpr std::int64_t START_MS = 1'790'000'000'000;
std::atomic<std::int64_t> now_ms{START_MS};
std::mutex sleeps_mutex;
std::vector<std::int64_t> slept;

std::int64_t fake_unix_milliseconds() {
    return now_ms;
}
std::int64_t fake_monotonic_ns() {
    return now_ms * 1'000'000;
}
void fake_sleep(std::int64_t milliseconds) {
    {
        const std::lock_guard<std::mutex> hold(sleeps_mutex);
        slept.push_back(milliseconds);
    }
    now_ms += milliseconds;
}

const ClockFunctions FAKE{fake_unix_milliseconds, fake_monotonic_ns, fake_sleep};

}  // namespace

FakeClock::FakeClock() {
    now_ms = START_MS;
    {
        const std::lock_guard<std::mutex> hold(sleeps_mutex);
        slept.clear();
    }
    set_clock(&FAKE);
}

FakeClock::~FakeClock() {
    set_clock(nullptr);
}

void FakeClock::advance_milliseconds(std::int64_t milliseconds) {
    now_ms += milliseconds;
}

std::vector<std::int64_t> FakeClock::sleeps() {
    const std::lock_guard<std::mutex> hold(sleeps_mutex);
    return slept;
}
