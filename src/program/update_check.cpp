#include "program/update_check.h"

#include <curl/curl.h>

#include <memory>
#include <string>

#include "base/settings.h"
#include "net/http_client.h"
#include "program/page_version.h"

namespace {

struct EasyDeleter {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};

}  // namespace

int fetch_latest_version() {
    const std::unique_ptr<CURL, EasyDeleter> handle(curl_easy_init());
    if (handle == nullptr) return -1;
    const std::string user_agent = "Bursaria/" + format_version(BUILD_VERSION);
    std::string body;
    const auto set = [&handle](CURLoption option, auto value) {
        curl_easy_setopt(handle.get(), option, value);
    };
    set(CURLOPT_URL, settings().update_page.c_str());
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    set(CURLOPT_FOLLOWLOCATION, 1L);
    set(CURLOPT_MAXREDIRS, 5L);
    set(CURLOPT_CONNECTTIMEOUT, 8L);
    set(CURLOPT_TIMEOUT, 15L);
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_USERAGENT, user_agent.c_str());
    if (settings().tls_ca_file.empty())
        set(CURLOPT_SSL_OPTIONS, static_cast<long>(CURLSSLOPT_NATIVE_CA));
    else
        set(CURLOPT_CAINFO, settings().tls_ca_file.c_str());
    set(CURLOPT_WRITEFUNCTION, &qv_clasp_http_write_body);
    set(CURLOPT_WRITEDATA, static_cast<void*>(&body));
    if (curl_easy_perform(handle.get()) != CURLE_OK) return -1;
    long status = 0;
    curl_easy_getinfo(handle.get(), CURLINFO_RESPONSE_CODE, &status);
    return status >= 200 && status <= 399 ? parse_page_version(body) : -1;
}
