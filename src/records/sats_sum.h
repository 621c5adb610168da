// Adding up amounts that a damaged file may hold. Pure.
#pragma once

#include <cstdint>
#include <limits>

// The sum stays at the largest or the smallest amount instead of overflowing.
inline void add_sats(std::int64_t& sum, std::int64_t sats) {
    constexpr std::int64_t MOST = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t LEAST = std::numeric_limits<std::int64_t>::min();
    if (sats > 0 && sum > MOST - sats)
        sum = MOST;
    else if (sats < 0 && sum < LEAST - sats)
        sum = LEAST;
    else
        sum += sats;
}
