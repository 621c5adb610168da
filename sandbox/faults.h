// Failures on order: what a service does wrong, and how many times. Thread-safe.
#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace sandbox {

// Services: "woc", "ordinals", "arc", "home", "resolver", "update"; a path part may narrow a fault down
// ("woc" and "/tx/raw"), and so may the method in front of it ("POST /v1/tx").
//
// Failures of any request:
//   "down"         the connection is closed without an answer, and nothing is done
//   "slow"         the work is done at once, and its answer comes `slow_ms` later
//   "stall"        nothing is done, and the connection is closed `slow_ms` later
//   "429", "html500", "404"  refused with that status, and nothing is done
//   "redirect"     sent on to the same address, and nothing is done
//   "badjson", "wrongtypes", "empty"  done, with an answer that is cut short, has every type wrong, or is not
//   there
//   "cut"          done, and the connection is closed in the middle of the answer's body
//   "huge"         done, with an answer that blanks make `huge_bytes` long
// Failures of a broadcast, which leave every other request alone:
//   "drop_after_accept"  taken, answered as good, and forgotten
//   "accept_silently"    taken, and answered as a failure of the service
//   "wrong_txid"         taken, and answered with another transaction's id
//   "conflict", "missing_inputs"  refused with the network's words, and not taken
//   "refused_200"        not taken, and refused under a status of success
//   "unknown_parent"     refused as "missing_inputs" while an input comes from an unmined transaction
struct Fault {
    std::string failure;
    std::string path_part;
    int times = 1;  // -1: until cleared
    int slow_ms = 3000;
    std::size_t huge_bytes = std::size_t{200} << 20U;
};

bool is_service_name(std::string_view service);
bool is_failure_name(std::string_view failure);
// The failures that concern broadcasts only.
bool is_broadcast_failure(std::string_view failure);
// The request hands a transaction to the network.
bool is_broadcast_request(std::string_view method, std::string_view path);

class Faults {
 public:
    // Faults of one service wait in the order of their arrival.
    void set(const std::string& service, const Fault& fault);
    void clear();
    // How many occurrences have been taken since the last clear.
    std::size_t taken() const;
    // Takes one occurrence of the first fault that fits this request, if there is one. `request` is the
    // method, a blank and the path.
    std::optional<Fault> take(const std::string& service, const std::string& request);

 private:
    mutable std::mutex mutex_;
    std::multimap<std::string, Fault> faults_;
    std::size_t taken_ = 0;
};

}  // namespace sandbox
