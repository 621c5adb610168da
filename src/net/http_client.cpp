#include "net/http_client.h"

#include <curl/curl.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <memory>
#include <new>

#include "base/clock.h"
#include "base/settings.h"
#include "base/text.h"

namespace {

constexpr const char* USER_AGENT = "Quorvelle-Clasp/0.1";
constexpr const char* THROTTLED_TEXT =
    "HTTP 429 – WhatsOnChain is rate-limiting. Wait a few seconds and try again.";
constexpr long TOO_MANY_REQUESTS = 429;
constexpr long NOT_FOUND = 404;
constexpr int GET_RETRIES = 3;
constexpr int SHORTEST_TIMEOUT_S = 2;
constexpr long CONNECT_TIMEOUT_S = 8;
constexpr long MAX_REDIRECTS = 5;
constexpr std::int64_t FIRST_PAUSE_MS = 400;
constexpr int LONGEST_PAUSE_SHIFT = 20;
constexpr std::size_t LONGEST_EXCERPT = 120;

std::atomic<unsigned long> gets_sent{0};
std::atomic<unsigned long> posts_sent{0};

struct ListDeleter {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using HeaderList = std::unique_ptr<curl_slist, ListDeleter>;

struct EasyDeleter {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};

// One transfer. The lists are declared first, because curl reads them until the handle has gone.
struct Transfer {
    HeaderList headers;
    HeaderList pins;
    std::unique_ptr<CURL, EasyDeleter> handle{curl_easy_init()};
    long status = 0;

    template <typename T>
    void set(CURLoption option, T value) {
        curl_easy_setopt(handle.get(), option, value);
    }
};

void set_target(Transfer& transfer, const std::string& url) {
    transfer.set(CURLOPT_URL, url.c_str());
    // A redirect must not lead to another kind of service than the ones this client is written for.
    transfer.set(CURLOPT_PROTOCOLS_STR, "http,https");
    transfer.set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    const std::string& ca_file = settings().tls_ca_file;
    if (!ca_file.empty())
        transfer.set(CURLOPT_CAINFO, ca_file.c_str());
    else
        // Windows keeps its authorities in a store of its own, which OpenSSL does not read by itself.
        transfer.set(CURLOPT_SSL_OPTIONS, static_cast<long>(CURLSSLOPT_NATIVE_CA));
}

void set_sink(Transfer& transfer, std::string& body) {
    transfer.set(CURLOPT_WRITEFUNCTION, &qv_clasp_http_write_body);
    transfer.set(CURLOPT_WRITEDATA, static_cast<void*>(&body));
}

// Sends the request; false, with the error text, on a failure of the transport.
bool perform(Transfer& transfer, const std::string& url, std::atomic<unsigned long>& counter,
             std::string& error_out) {
    transfer.pins.reset(qv_clasp_http_pin_home_host(transfer.handle.get(), url));
    ++counter;
    const CURLcode code = curl_easy_perform(transfer.handle.get());
    if (code != CURLE_OK) {
        error_out = curl_easy_strerror(code);
        return false;
    }
    curl_easy_getinfo(transfer.handle.get(), CURLINFO_RESPONSE_CODE, &transfer.status);
    return true;
}

bool start(Transfer& transfer, std::string& body_out, std::string& error_out) {
    body_out.clear();
    error_out.clear();
    if (!transfer.handle) error_out = "curl init failed";
    return transfer.handle != nullptr;
}

bool get_once(const std::string& url, int timeout_s, std::string& body_out, std::string& error_out,
              long& status_out) {
    Transfer transfer;
    if (!start(transfer, body_out, error_out)) return false;
    set_target(transfer, url);
    set_sink(transfer, body_out);
    transfer.set(CURLOPT_CONNECTTIMEOUT, CONNECT_TIMEOUT_S);
    transfer.set(CURLOPT_TIMEOUT, static_cast<long>(std::max(timeout_s, SHORTEST_TIMEOUT_S)));
    transfer.set(CURLOPT_NOSIGNAL, 1L);
    transfer.set(CURLOPT_FOLLOWLOCATION, 1L);
    transfer.set(CURLOPT_MAXREDIRS, MAX_REDIRECTS);
    transfer.set(CURLOPT_USERAGENT, USER_AGENT);
    const bool answered = perform(transfer, url, gets_sent, error_out);
    status_out = transfer.status;
    return answered;
}

bool post_once(const std::string& url, const std::string& json_body, unsigned timeout_s,
               std::string& body_out, std::string& error_out, long& status_out) {
    Transfer transfer;
    if (!start(transfer, body_out, error_out)) return false;
    set_target(transfer, url);
    transfer.headers.reset(curl_slist_append(nullptr, "Content-Type: application/json"));
    transfer.set(CURLOPT_HTTPHEADER, transfer.headers.get());
    transfer.set(CURLOPT_POSTFIELDS, json_body.c_str());
    set_sink(transfer, body_out);
    transfer.set(CURLOPT_TIMEOUT, static_cast<long>(timeout_s));
    transfer.set(CURLOPT_CONNECTTIMEOUT, CONNECT_TIMEOUT_S);
    transfer.set(CURLOPT_USERAGENT, USER_AGENT);
    const bool answered = perform(transfer, url, posts_sent, error_out);
    status_out = transfer.status;
    return answered;
}

bool is_success(long status) {
    return status >= 200 && status <= 299;
}

// 400 ms, doubled for each attempt that came before.
void pause_before_retry(int attempts_before) {
    sleep_milliseconds(FIRST_PAUSE_MS << std::min(attempts_before, LONGEST_PAUSE_SHIFT));
}

bool is_under_development(std::string_view url) {
    return url.starts_with("https://127.0.0.1") || url.starts_with("https://localhost");
}

}  // namespace

void qv_clasp_http_start() {
#ifdef SIGPIPE
    // TLS writes to a connection that the peer has closed would end the process, perhaps between two
    // payments.
    std::signal(SIGPIPE, SIG_IGN);
#endif
    curl_global_init(CURL_GLOBAL_ALL);
}

void qv_clasp_http_stop() {
    curl_global_cleanup();
}

bool qv_clasp_http_get(const std::string& url, std::string& body_out, std::string& error_out, int timeout_s,
                       bool accept_404) {
    long status = 0;
    for (int attempt = 0;; ++attempt) {
        if (!get_once(url, timeout_s, body_out, error_out, status)) return false;
        if (status != TOO_MANY_REQUESTS || attempt >= GET_RETRIES) break;
        pause_before_retry(attempt);
    }
    if (status == NOT_FOUND && accept_404) return true;
    if (is_success(status)) return true;
    error_out = qv_clasp_http_error_text(status, body_out);
    return false;
}

bool qv_clasp_http_post_json(const std::string& url, const std::string& json_body, std::string& body_out,
                             std::string& error_out, unsigned timeout_s, int tries) {
    body_out.clear();
    error_out = THROTTLED_TEXT;
    if (tries < 1) return false;
    long status = 0;
    for (int attempt = 1;; ++attempt) {
        if (!post_once(url, json_body, timeout_s, body_out, error_out, status)) return false;
        if (status != TOO_MANY_REQUESTS || attempt >= tries) break;
        pause_before_retry(attempt - 1);
    }
    if (is_success(status)) return true;
    error_out = qv_clasp_http_error_text(status, body_out);
    return false;
}

bool qv_clasp_http_get_plain(const std::string& url, std::string& body_out, std::string& error_out) {
    Transfer transfer;
    if (!start(transfer, body_out, error_out)) return false;
    set_target(transfer, url);
    set_sink(transfer, body_out);
    transfer.set(CURLOPT_TIMEOUT, 12L);
    transfer.set(CURLOPT_FOLLOWLOCATION, 1L);
    if (is_under_development(url)) {
        transfer.set(CURLOPT_SSL_VERIFYPEER, 0L);
        transfer.set(CURLOPT_SSL_VERIFYHOST, 0L);
    }
    if (!perform(transfer, url, gets_sent, error_out)) return false;
    if (is_success(transfer.status)) return true;
    error_out = "HTTP " + std::to_string(transfer.status);
    return false;
}

curl_slist* qv_clasp_http_pin_home_host(void* handle, const std::string& url) {
    const std::string& host = settings().home_host;
    const std::string& pin = settings().home_host_pin;
    if (host.empty() || pin.empty() || url.size() < host.size() || !contains(url, host)) return nullptr;
    HeaderList pins(curl_slist_append(nullptr, (host + ":443:" + pin).c_str()));
    if (!pins || curl_slist_append(pins.get(), ("www." + host + ":443:" + pin).c_str()) == nullptr)
        return nullptr;
    curl_easy_setopt(handle, CURLOPT_RESOLVE, pins.get());
    curl_easy_setopt(handle, CURLOPT_IPRESOLVE, static_cast<long>(CURL_IPRESOLVE_V4));
    return pins.release();
}

std::string qv_clasp_http_error_text(long status, std::string_view body) {
    if (status == TOO_MANY_REQUESTS) return THROTTLED_TEXT;
    const std::string plain = "HTTP " + std::to_string(status);
    const bool is_page = contains(body, "<html") || contains(body, "<HTML") || contains(body, "<!DOCTYPE");
    if (is_page || body.empty()) return plain;
    const std::string_view excerpt = trim(body, "", "\n\r ").substr(0, LONGEST_EXCERPT);
    return plain + " – " + std::string(excerpt);
}

std::size_t qv_clasp_http_write_body(char* data, std::size_t size, std::size_t count, void* body) {
    try {
        static_cast<std::string*>(body)->append(data, size * count);
    } catch (const std::exception&) {
        return 0;
    }
    return size * count;
}

HttpCounts http_counts() {
    return {gets_sent.load(), posts_sent.load()};
}
