// What the requests take: the linker leads every transfer of the program past here, so that a measurement can
// tell the work of the program from that of its requests.
#pragma once

#include <cstdint>

struct CurlTime {
    std::int64_t cpu_ns = 0;      // of their threads, from the making of a request's handle to its end
    std::int64_t slowest_ns = 0;  // real time of the longest transfer
    std::int64_t requests = 0;
};
// Since the last reset.
CurlTime curl_time();
void reset_curl_time();

std::int64_t process_cpu_ns();
