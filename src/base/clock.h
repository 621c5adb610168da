// Time. Nothing in the product reads a clock or sleeps elsewhere, so that a test can make time pass.
#pragma once

#include <cstdint>

std::int64_t unix_seconds();
std::int64_t unix_milliseconds();
// Monotonic, from an arbitrary start that is never 0.
std::int64_t monotonic_ns();
void sleep_milliseconds(std::int64_t milliseconds);

// The four functions above as one replaceable set. A test installs its own before threads start and puts back
// nullptr, the system's clock, after they have ended.
struct ClockFunctions {
    std::int64_t (*unix_milliseconds)();
    std::int64_t (*monotonic_ns)();
    void (*sleep_milliseconds)(std::int64_t milliseconds);
};
void set_clock(const ClockFunctions* functions);
