// Failures on order: what a service does wrong, and how many times. Thread-safe.
#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace sandbox {

// Services: "woc", "ordinals", "arc", "home", "resolver"; a path part may narrow a fault down ("woc" and "/tx/raw").
// Failures: "down" (the connection is closed without an answer), "slow" (waits past every time-out of the caller, or
// `slow_ms`), "429", "html500", "badjson", "wrongtypes", "drop_after_accept" (a broadcast is taken, answered as good,
// and forgotten), "conflict" and "missing_inputs" (a broadcast is refused with these words and not taken),
// "accept_silently" (a broadcast is taken and then answered as a failure), "empty", "404".
struct Fault {
    std::string failure;
    std::string path_part;
    int times = 1;  // -1: until cleared
    int slow_ms = 3000;
};

class Faults {
 public:
    void set(const std::string& service, const Fault& fault);
    void clear();
    // Takes one occurrence of a fault for this request, if there is one.
    std::optional<Fault> take(const std::string& service, const std::string& path);

 private:
    std::mutex mutex_;
    std::multimap<std::string, Fault> faults_;
};

}  // namespace sandbox
