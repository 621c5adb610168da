#include "paymail/paymail_resolve.h"

#include "base/json_file.h"
#include "base/settings.h"
#include "base/text.h"
#include "net/http_client.h"
#include "wallet/address.h"
#include "wallet/name_registry.h"

namespace {

constexpr std::size_t SHORTEST_ADDRESS = 26;
constexpr int LOOKUP_TIMEOUT_S = 12;

bool looks_like_address(std::string_view text) {
    return text.size() >= SHORTEST_ADDRESS && text.front() == '1';
}

bool decodes_as_address(std::string_view text) {
    Hash160 hash{};
    return qv_clasp_address_to_hash160(text, hash);
}

// One piece of a path: a name is typed by people, and a "?", "#" or "/" in it would ask for another name.
std::string path_piece(std::string_view text) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string piece;
    for (const char c : text) {
        if (is_ascii_alnum(c) || contains("-._@", std::string_view(&c, 1))) {
            piece += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        piece += '%';
        piece += digits[byte >> 4];
        piece += digits[byte & 15];
    }
    return piece;
}

// The address that a resolver gives; empty for anything else.
std::string ask_resolver(const std::string& url) {
    std::string body;
    std::string error;
    Json answer;
    if (!qv_clasp_http_get_plain(url, body, error) || !parse_json(body, answer)) return "";
    const std::string address = json_text(answer, "address");
    return decodes_as_address(address) ? address : "";
}

}  // namespace

bool qv_clasp_parse_dest(const std::string& dest, std::string& address_out, std::string& alias_out,
                         std::string& error_out) {
    address_out.clear();
    alias_out.clear();
    error_out.clear();
    const std::string text = qv_clasp_normalize_dest(dest);
    if (text.empty()) {
        error_out = "enter a handle, paymail, or 1-address.";
        return false;
    }
    if (looks_like_address(text) && decodes_as_address(text)) {
        address_out = text;
        return true;
    }
    const std::string& home_domain = settings().home_domain;
    const std::size_t at = text.find('@');
    const std::string name = text.substr(0, at);
    const std::string domain = at == std::string::npos ? home_domain : text.substr(at + 1);
    if (domain != home_domain) {
        error_out = "use a 1-address or an @" + home_domain + " paymail.";
        return false;
    }
    const std::string known = qv_clasp_registry_address(name);
    if (decodes_as_address(known)) {
        address_out = known;
    } else {
        alias_out = name;
    }
    return true;
}

std::string qv_clasp_resolve_alias(const std::string& alias, std::string& error_out) {
    error_out.clear();
    const std::string paymail = alias + "@" + settings().home_domain;
    const std::string path = "/api/bsvalias/address/" + path_piece(paymail);
    const std::string hosts[] = {settings().home_host,
                                 "127.0.0.1:" + std::to_string(settings().local_resolver_port)};
    for (const std::string& host : hosts) {
        const std::string address = ask_resolver("https://" + host + path);
        if (!address.empty()) return address;
    }
    error_out = "could not resolve " + paymail;
    return "";
}

std::string qv_clasp_resolve_dest(WalletLock& lock, const std::string& dest, std::string& error_out) {
    std::string address;
    std::string alias;
    if (!qv_clasp_parse_dest(dest, address, alias, error_out) || alias.empty()) return address;
    lock.unlock();
    address = qv_clasp_resolve_alias(alias, error_out);
    lock.lock();
    return address;
}

bool qv_clasp_lookup_holder(const std::string& address, std::string& alias_out, std::string& pubkey_out,
                            std::string& address_out, std::string& kind_out) {
    alias_out.clear();
    pubkey_out.clear();
    address_out.clear();
    kind_out.clear();
    if (!looks_like_address(address)) return false;
    const std::string url = "https://" + settings().home_host + "/api/paymail/address/" + path_piece(address);
    std::string body;
    std::string error;
    Json answer;
    if (!qv_clasp_http_get(url, body, error, LOOKUP_TIMEOUT_S) || !parse_json(body, answer)) return false;
    alias_out = ascii_lower(json_text(answer, "alias"));
    pubkey_out = ascii_lower(json_text(answer, "pubkey"));
    address_out = json_text(answer, "address");
    kind_out = json_text(answer, "kind");
    return !alias_out.empty();
}
