// Stands in for the HTTP client: every request is answered from the script of the input, at once.
#include <atomic>
#include <cstdio>
#include <vector>

#include "base/text.h"
#include "fuzz/fuzz.h"
#include "net/http_client.h"

namespace {

struct Answer {
    std::string part;
    long status = 200;
    std::string body;
};

// Written between two inputs, when no thread of the program is at work.
std::vector<Answer> answers;
unsigned long input_number = 0;
std::atomic<unsigned long> gets{0};
std::atomic<unsigned long> posts{0};

constexpr std::string_view HEAD = "=== ";

std::string with_txids(std::string_view text) {
    std::string filled;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool named =
            text[at] == '$' && at + 1 < text.size() && text[at + 1] >= 'a' && text[at + 1] <= 'z';
        if (named)
            filled += fuzz_txid(text[++at]);
        else
            filled += text[at];
    }
    return filled;
}

long status_of(std::string_view text) {
    unsigned long long status = 200;
    parse_u64(trim_white(text), status);
    return static_cast<long>(status % 1000);
}

Answer read_answer(std::string_view section) {
    const std::size_t line_end = std::min(section.find('\n'), section.size());
    const std::string_view head = section.substr(0, line_end);
    const std::size_t blank = std::min(head.find(' '), head.size());
    return {with_txids(head.substr(0, blank)), status_of(head.substr(blank)),
            with_txids(section.substr(std::min(line_end + 1, section.size())))};
}

bool answer(const std::string& url, std::string& body_out, std::string& error_out, bool accept_404) {
    body_out.clear();
    error_out = "Couldn't connect to server";
    for (const Answer& scripted : answers) {
        if (scripted.part != "*" && !contains(url, scripted.part)) continue;
        body_out = scripted.body;
        error_out.clear();
        if ((scripted.status >= 200 && scripted.status <= 299) || (accept_404 && scripted.status == 404))
            return true;
        error_out = qv_clasp_http_error_text(scripted.status, scripted.body);
        return false;
    }
    return false;
}

}  // namespace

void script_services(std::string_view input) {
    ++input_number;
    answers.clear();
    while (input.starts_with(HEAD)) {
        input.remove_prefix(HEAD.size());
        const std::size_t next = std::min(input.find("\n=== "), input.size());
        answers.push_back(read_answer(input.substr(0, next)));
        input.remove_prefix(std::min(next + 1, input.size()));
    }
}

void script_one_answer(const std::string& part, const std::string& body) {
    ++input_number;
    answers = {{part, 200, body}};
}

std::string fuzz_txid(char letter) {
    char text[65];
    std::snprintf(text, sizeof text, "%02x%062lx", static_cast<unsigned>(static_cast<unsigned char>(letter)),
                  input_number);
    return text;
}

void qv_clasp_http_start() {}
void qv_clasp_http_stop() {}

bool qv_clasp_http_get(const std::string& url, std::string& body_out, std::string& error_out, int,
                       bool accept_404) {
    ++gets;
    return answer(url, body_out, error_out, accept_404);
}

bool qv_clasp_http_post_json(const std::string& url, const std::string&, std::string& body_out,
                             std::string& error_out, unsigned, int) {
    ++posts;
    return answer(url, body_out, error_out, false);
}

bool qv_clasp_http_get_plain(const std::string& url, std::string& body_out, std::string& error_out) {
    return qv_clasp_http_get(url, body_out, error_out, 12);
}

curl_slist* qv_clasp_http_pin_home_host(void*, const std::string&) {
    return nullptr;
}

std::string qv_clasp_http_error_text(long status, std::string_view body) {
    return "HTTP " + std::to_string(status) + " – " + std::string(body.substr(0, 120));
}

std::size_t qv_clasp_http_write_body(char*, std::size_t, std::size_t, void*) {
    return 0;
}

HttpCounts http_counts() {
    return {gets.load(), posts.load()};
}
