#include "sandbox/service_reply.h"

#include <openssl/evp.h>

#include <algorithm>

#include "base/text.h"

namespace sandbox {

ServiceReply json_reply(const Json& document, int status) {
    ServiceReply reply;
    reply.status = status;
    reply.body = dump_json(document, -1);
    return reply;
}

ServiceReply text_reply(std::string body, int status) {
    ServiceReply reply;
    reply.status = status;
    reply.body = std::move(body);
    reply.type = "text/plain";
    return reply;
}

ServiceReply empty_reply(int status) {
    return text_reply("", status);
}

std::vector<std::string> path_parts(std::string_view path) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    while (start < path.size()) {
        const std::size_t slash = std::min(path.find('/', start), path.size());
        if (slash > start) parts.emplace_back(path.substr(start, slash - start));
        start = slash + 1;
    }
    return parts;
}

bool path_after(std::string_view path, std::string_view prefix, std::string& rest) {
    if (!path.starts_with(prefix)) return false;
    rest = path.substr(prefix.size());
    return true;
}

std::size_t query_number(const ServiceRequest& request, const std::string& key, std::size_t fallback) {
    const auto found = request.query.find(key);
    unsigned long long value = 0;
    if (found == request.query.end() || !parse_u64(found->second, value)) return fallback;
    return static_cast<std::size_t>(value);
}

unsigned form_of(std::string_view subject, unsigned count) {
    std::uint32_t hash = 2166136261U;
    for (const char c : subject) hash = (hash ^ static_cast<std::uint8_t>(c)) * 16777619U;
    return (hash ^ (hash >> 15U)) % count;
}

std::string base64(const Bytes& bytes) {
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
    const int length = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), bytes.data(),
                                       static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

Bytes from_base64(std::string_view text) {
    if (text.empty() || text.size() % 4 != 0) return {};
    Bytes bytes(text.size() / 4 * 3);
    const int length = EVP_DecodeBlock(bytes.data(), reinterpret_cast<const unsigned char*>(text.data()),
                                       static_cast<int>(text.size()));
    if (length < 0) return {};
    const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with("=") ? 1 : 0;
    bytes.resize(static_cast<std::size_t>(length) - padding);
    return bytes;
}

bool refuse(const Fault& fault, const std::string& target, ServiceReply& reply) {
    if (fault.failure == "down") {
        reply.hang_up = true;
    } else if (fault.failure == "429") {
        reply = text_reply("Too Many Requests", 429);
    } else if (fault.failure == "html500") {
        reply =
            text_reply("<html><head><title>500</title></head><body>Internal Server Error</body></html>", 500);
        reply.type = "text/html";
    } else if (fault.failure == "404") {
        reply = empty_reply(404);
    } else if (fault.failure == "redirect") {
        reply = empty_reply(302);
        reply.location = target;
    } else {
        return false;
    }
    return true;
}

namespace {

Json wrong_value(const Json& value, bool below_object) {
    if (value.is_string()) return value.get_ref<const std::string&>().size();
    if (value.is_number()) return value.dump();
    if (value.is_boolean()) return value.dump();
    if (value.is_null()) return Json::array({1});
    if (value.is_array()) {
        Json rows = Json::array();
        for (const Json& row : value) rows.push_back(wrong_value(row, false));
        return rows;
    }
    Json wrong = below_object ? Json::array() : Json::object();
    for (const auto& [key, member] : value.items()) {
        if (below_object) {
            wrong.push_back(wrong_value(member, true));
        } else {
            wrong[key] = wrong_value(member, true);
        }
    }
    return wrong;
}

}  // namespace

Json wrong_types(const Json& document) {
    return wrong_value(document, false);
}

void spoil(const Fault& fault, ServiceReply& reply) {
    if (fault.failure == "empty") {
        reply.body.clear();
    } else if (fault.failure == "badjson") {
        // Shorter than any transaction, and without a word that a reader could look for.
        reply.body = "{\"result\":[{";
    } else if (fault.failure == "cut") {
        // An empty body has no middle.
        if (reply.body.empty()) reply.body = "{}{}";
        reply.cut = true;
    } else if (fault.failure == "huge") {
        reply.padding = fault.huge_bytes;
    } else if (fault.failure == "wrongtypes") {
        Json document;
        reply.body = parse_json(reply.body, document) ? dump_json(wrong_types(document), -1) : "null";
    }
}

}  // namespace sandbox
