#include "bench/curl_time.h"

#include <curl/curl.h>
#include <time.h>

#include <atomic>

namespace {

std::atomic<std::int64_t> cpu_in_requests{0};
std::atomic<std::int64_t> slowest{0};
std::atomic<std::int64_t> transfers{0};

std::int64_t read_clock(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

// A request begins where its thread makes the handle. One pair of readings for all of it, since half of what
// a pair takes counts as the program's own.
thread_local std::int64_t request_begin = 0;

}  // namespace

extern "C" {
CURL* __real_curl_easy_init();
CURLcode __real_curl_easy_perform(CURL* handle);
void __real_curl_easy_cleanup(CURL* handle);

CURL* __wrap_curl_easy_init() {
    request_begin = read_clock(CLOCK_THREAD_CPUTIME_ID);
    return __real_curl_easy_init();
}

CURLcode __wrap_curl_easy_perform(CURL* handle) {
    const std::int64_t begin = read_clock(CLOCK_MONOTONIC);
    const CURLcode code = __real_curl_easy_perform(handle);
    const std::int64_t took = read_clock(CLOCK_MONOTONIC) - begin;
    std::int64_t known = slowest;
    while (took > known && !slowest.compare_exchange_weak(known, took)) {
    }
    ++transfers;
    return code;
}

void __wrap_curl_easy_cleanup(CURL* handle) {
    __real_curl_easy_cleanup(handle);
    cpu_in_requests += read_clock(CLOCK_THREAD_CPUTIME_ID) - request_begin;
}
}

CurlTime curl_time() {
    return {cpu_in_requests, slowest, transfers};
}

void reset_curl_time() {
    cpu_in_requests = slowest = transfers = 0;
}

std::int64_t process_cpu_ns() {
    return read_clock(CLOCK_PROCESS_CPUTIME_ID);
}
