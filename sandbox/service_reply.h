// Building and bending replies: paths, variants, encodings, and the failures that have nothing to do with
// what a service does. Pure.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/bytes.h"
#include "base/json_file.h"
#include "sandbox/faults.h"
#include "sandbox/service_server.h"

namespace sandbox {

ServiceReply json_reply(const Json& document, int status = 200);
ServiceReply text_reply(std::string body, int status = 200);
// A refusal without a body, as the chain service gives where nothing is known.
ServiceReply empty_reply(int status);

// "/a/b" gives "a" and "b".
std::vector<std::string> path_parts(std::string_view path);
// If `path` begins with `prefix`, the rest of it; otherwise false.
bool path_after(std::string_view path, std::string_view prefix, std::string& rest);
// The number under a key of the query; the fallback for anything but digits.
std::size_t query_number(const ServiceRequest& request, const std::string& key, std::size_t fallback);

// Which of `count` forms an answer about `subject` takes: always the same for one subject.
unsigned form_of(std::string_view subject, unsigned count);

std::string base64(const Bytes& bytes);
// Empty for text that is not base 64.
Bytes from_base64(std::string_view text);

// The reply of a failure that refuses a request before any work: "down", "429", "html500", "404", "redirect".
// False for others. `target` is the request's own.
bool refuse(const Fault& fault, const std::string& target, ServiceReply& reply);
// Spoils a finished reply: "badjson", "wrongtypes", "empty", "cut", "huge". Others leave it alone.
void spoil(const Fault& fault, ServiceReply& reply);
// Every value of the document under another type.
Json wrong_types(const Json& document);

}  // namespace sandbox
