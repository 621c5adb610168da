#include "tests/faults/transfer_watch.h"

#include <curl/curl.h>
#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <cstdarg>
#include <map>
#include <mutex>

#include "base/text.h"
#include "tests/support/fake_clock.h"

#undef curl_easy_setopt

namespace {

using Clock = std::chrono::steady_clock;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr long SLOWNESS = 4;
#else
constexpr long SLOWNESS = 1;
#endif
// Long enough for the work of an honest service, which a slow one has done before it is given up.
constexpr long SHORTEST_MS = 80 * SLOWNESS;
constexpr long MS_PER_SECOND = 4 * SLOWNESS;

struct Ordered {
    std::string url;
    long timeout_s = 0;
    bool post = false;
};

std::mutex mutex;
std::map<CURL*, Ordered> ordered;
std::vector<std::string> marked_parts;
std::vector<std::pair<std::string, std::string>> shortened;  // method and part
TransferCounts totals;

template <typename Function>
Function real(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

bool is_shortened(const Ordered& transfer) {
    return std::any_of(shortened.begin(), shortened.end(), [&](const auto& wanted) {
        const bool method = wanted.first.empty() || (wanted.first == "POST") == transfer.post;
        return method && contains(transfer.url, wanted.second);
    });
}

// Takes the order of a transfer out of the table and counts it; the limit in force in milliseconds.
long begin(CURL* handle, Ordered& transfer, bool& shorter) {
    const std::lock_guard<std::mutex> hold(mutex);
    transfer = ordered[handle];
    ordered.erase(handle);
    shorter = is_shortened(transfer);
    ++totals.transfers;
    totals.allowed_s += transfer.timeout_s;
    if (transfer.timeout_s <= 0) ++totals.without_limit;
    if (std::any_of(marked_parts.begin(), marked_parts.end(),
                    [&](const std::string& part) { return contains(transfer.url, part); }))
        ++totals.marked;
    return shorter ? std::max(SHORTEST_MS, transfer.timeout_s * MS_PER_SECOND) : transfer.timeout_s * 1000;
}

void end(Clock::time_point start, long limit_ms) {
    const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
    const std::lock_guard<std::mutex> hold(mutex);
    totals.longest_overrun_ms =
        std::max(totals.longest_overrun_ms, static_cast<std::int64_t>(took - limit_ms));
}

}  // namespace

namespace transfer_watch {

void reset() {
    const std::lock_guard<std::mutex> hold(mutex);
    marked_parts.clear();
    shortened.clear();
    totals = {};
}

TransferCounts counts() {
    const std::lock_guard<std::mutex> hold(mutex);
    return totals;
}

void mark(std::vector<std::string> url_parts) {
    const std::lock_guard<std::mutex> hold(mutex);
    marked_parts = std::move(url_parts);
}

void shorten(const std::string& method, const std::string& url_part) {
    const std::lock_guard<std::mutex> hold(mutex);
    shortened.emplace_back(method, url_part);
}

}  // namespace transfer_watch

// The linker takes these for the product's own calls; the library's stand behind them. Every option of this
// system's curl is one machine word, whatever its type.
extern "C" CURLcode curl_easy_setopt(CURL* handle, CURLoption option, ...) {
    using Setopt = CURLcode (*)(CURL*, CURLoption, ...);
    static const auto setopt = real<Setopt>("curl_easy_setopt");
    std::va_list arguments;
    va_start(arguments, option);
    void* const value = va_arg(arguments, void*);
    va_end(arguments);
    {
        const std::lock_guard<std::mutex> hold(mutex);
        if (option == CURLOPT_URL) ordered[handle].url = static_cast<const char*>(value);
        if (option == CURLOPT_TIMEOUT) ordered[handle].timeout_s = reinterpret_cast<long>(value);
        if (option == CURLOPT_POSTFIELDS) ordered[handle].post = true;
    }
    return setopt(handle, option, value);
}

extern "C" CURLcode curl_easy_perform(CURL* handle) {
    using Perform = CURLcode (*)(CURL*);
    static const auto perform = real<Perform>("curl_easy_perform");
    static const auto setopt = real<CURLcode (*)(CURL*, CURLoption, ...)>("curl_easy_setopt");
    Ordered transfer;
    bool shorter = false;
    const long limit_ms = begin(handle, transfer, shorter);
    if (shorter) setopt(handle, CURLOPT_TIMEOUT_MS, limit_ms);
    const Clock::time_point start = Clock::now();
    const CURLcode code = perform(handle);
    end(start, limit_ms);
    if (shorter && code == CURLE_OPERATION_TIMEDOUT) FakeClock::advance_seconds(transfer.timeout_s);
    return code;
}
