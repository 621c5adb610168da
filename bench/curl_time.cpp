#include "bench/curl_time.h"

#include <curl/curl.h>
#include <time.h>

#include <atomic>

namespace {

std::atomic<std::int64_t> cpu_in_curl{0};
std::atomic<std::int64_t> slowest{0};
std::atomic<std::int64_t> transfers{0};

std::int64_t read_clock(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

class InCurl {
 public:
    ~InCurl() { cpu_in_curl += read_clock(CLOCK_THREAD_CPUTIME_ID) - begin_; }

 private:
    std::int64_t begin_ = read_clock(CLOCK_THREAD_CPUTIME_ID);
};

}  // namespace

extern "C" {
CURL* __real_curl_easy_init();
CURLcode __real_curl_easy_perform(CURL* handle);
void __real_curl_easy_cleanup(CURL* handle);

CURL* __wrap_curl_easy_init() {
    const InCurl inside;
    return __real_curl_easy_init();
}

CURLcode __wrap_curl_easy_perform(CURL* handle) {
    const InCurl inside;
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
    const InCurl inside;
    __real_curl_easy_cleanup(handle);
}
}

CurlTime curl_time() {
    return {cpu_in_curl, slowest, transfers};
}

void reset_curl_time() {
    cpu_in_curl = slowest = transfers = 0;
}

std::int64_t process_cpu_ns() {
    return read_clock(CLOCK_PROCESS_CPUTIME_ID);
}
