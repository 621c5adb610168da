// The calendar of the place where the program runs.
#pragma once

#include <cstdint>
#include <ctime>

// The local date and time of a moment in seconds since 1970; false, with `local_out` untouched, for one that
// the system cannot convert. Any thread.
bool local_time(std::int64_t unix, std::tm& local_out);
