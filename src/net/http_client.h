// All HTTP traffic of the wallet library: three blocking calls over libcurl. Each makes its own handle, so
// any number of threads may call at once; no state is kept between calls, and no call is made on the window's
// thread or with a registry lock held. The error text that a call gives is a finished sentence for the user.
// Nothing throws.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

struct curl_slist;

// Once at start-up, before any worker thread, and once at the end.
void qv_clasp_http_start();
void qv_clasp_http_stop();

// GET. `timeout_s` below 2 counts as 2. A 429 is tried again after 400, 800 and 1600 ms; with `accept_404` a
// 404 is a success. `body_out` keeps what came, also after a failed status; `error_out` is empty after a
// success.
bool qv_clasp_http_get(const std::string& url, std::string& body_out, std::string& error_out, int timeout_s,
                       bool accept_404 = false);

// POST of a JSON body; redirects are not followed. Up to `tries` attempts, on a 429 only; with fewer than one
// nothing is sent and the error is the 429 sentence.
bool qv_clasp_http_post_json(const std::string& url, const std::string& json_body, std::string& body_out,
                             std::string& error_out, unsigned timeout_s, int tries);

// GET for paymail look-ups: 12 seconds, no retry, no user agent; a URL on https://127.0.0.1 or
// https://localhost is fetched without certificate checks, for a resolver under development.
bool qv_clasp_http_get_plain(const std::string& url, std::string& body_out, std::string& error_out);

// For a URL that names the family's host: makes the curl handle reach that host at its fixed address, without
// a name look-up, and returns the list that the caller frees after the handle. Null for any other URL, and
// while no address is pinned.
curl_slist* qv_clasp_http_pin_home_host(void* handle, const std::string& url);

// The normalised sentence for a status outside the accepted range.
std::string qv_clasp_http_error_text(long status, std::string_view body);

// The write callback of curl: appends to a std::string. Never throws; returns 0 when memory runs out.
std::size_t qv_clasp_http_write_body(char* data, std::size_t size, std::size_t count, void* body);

// Counts of requests sent since the start of the process, for tests and reports.
struct HttpCounts {
    unsigned long gets = 0;
    unsigned long posts = 0;
};
HttpCounts http_counts();
