// What curl takes: the linker leads every transfer of the program past here, so that a measurement can tell
// the work of the program from that of its requests.
#pragma once

#include <cstdint>

struct CurlTime {
    std::int64_t cpu_ns = 0;      // of the threads that were inside curl
    std::int64_t slowest_ns = 0;  // real time of the longest transfer
    std::int64_t requests = 0;
};
// Since the last reset.
CurlTime curl_time();
void reset_curl_time();

std::int64_t process_cpu_ns();
