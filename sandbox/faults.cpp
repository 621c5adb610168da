#include "sandbox/faults.h"

#include <algorithm>
#include <array>

#include "base/text.h"

namespace sandbox {

namespace {

constexpr std::array<std::string_view, 6> SERVICES = {"woc", "ordinals", "arc", "home", "resolver", "update"};
constexpr std::array<std::string_view, 12> ANY_REQUEST = {"down",       "slow",  "stall",    "429",
                                                          "html500",    "404",   "redirect", "badjson",
                                                          "wrongtypes", "empty", "cut",      "huge"};
constexpr std::array<std::string_view, 7> BROADCAST_ONLY = {
    "drop_after_accept", "accept_silently", "wrong_txid",    "conflict",
    "missing_inputs",    "refused_200",     "unknown_parent"};

template <typename Names>
bool among(const Names& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool fits(const Fault& fault, const std::string& request) {
    if (fault.times == 0 || !contains(request, fault.path_part)) return false;
    if (!is_broadcast_failure(fault.failure)) return true;
    const std::size_t blank = request.find(' ');
    if (blank == std::string::npos) return is_broadcast_request("POST", request);
    return is_broadcast_request(request.substr(0, blank), request.substr(blank + 1));
}

}  // namespace

bool is_service_name(std::string_view service) {
    return among(SERVICES, service);
}

bool is_broadcast_failure(std::string_view failure) {
    return among(BROADCAST_ONLY, failure);
}

bool is_failure_name(std::string_view failure) {
    return among(ANY_REQUEST, failure) || is_broadcast_failure(failure);
}

bool is_broadcast_request(std::string_view method, std::string_view path) {
    if (method != "POST") return false;
    return path.ends_with("/tx/raw") || path.ends_with("/oi/submit") || path.ends_with("/v1/tx");
}

void Faults::set(const std::string& service, const Fault& fault) {
    const std::lock_guard<std::mutex> lock(mutex_);
    faults_.emplace(service, fault);
}

void Faults::clear() {
    const std::lock_guard<std::mutex> lock(mutex_);
    faults_.clear();
    taken_ = 0;
}

std::size_t Faults::taken() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return taken_;
}

std::optional<Fault> Faults::take(const std::string& service, const std::string& request) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto [first, last] = faults_.equal_range(service);
    const auto found =
        std::find_if(first, last, [&](const auto& entry) { return fits(entry.second, request); });
    if (found == last) return std::nullopt;
    ++taken_;
    Fault fault = found->second;
    if (found->second.times > 0 && --found->second.times == 0) faults_.erase(found);
    return fault;
}

}  // namespace sandbox
