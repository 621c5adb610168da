// A clock that a test moves by hand. While it lives, sleeping returns at once and moves it on.
#pragma once

#include <cstdint>
#include <vector>

class FakeClock {
 public:
    FakeClock();
    ~FakeClock();
    FakeClock(const FakeClock&) = delete;
    FakeClock& operator=(const FakeClock&) = delete;

    static void advance_milliseconds(std::int64_t milliseconds);
    static void advance_seconds(std::int64_t seconds) { advance_milliseconds(seconds * 1000); }
    // Every sleep since the clock was made, in milliseconds, in order.
    static std::vector<std::int64_t> sleeps();
};
