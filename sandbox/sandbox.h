// The whole sandbox: a chain with its world, and every service that the program talks to, on loopback. A
// library for the tests (free ports) and the body of bursaria-sandbox (the ports of settings/sandbox.json).
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/settings.h"
#include "sandbox/chain.h"
#include "sandbox/faults.h"
#include "sandbox/world.h"

namespace sandbox {

// Ports of the services; 0 takes a free one.
struct Ports {
    int woc = 0;
    int ordinals = 0;  // API and content
    int arc = 0;
    int home = 0;      // TLS
    int resolver = 0;  // TLS with a self-made certificate; -1: not served
    int control = 0;   // /sandbox/... and the update page
    int foreign =
        -1;  // TLS with a certificate that nobody trusts, in the place of any service; -1: not served
};

struct Options {
    WorldOptions world;
    Ports ports;
    int latency_ms = 0;
    bool answer_connects = true;  // the stand-in for the wallet program, on a thread of its own
};

// One request as a service got it.
struct SeenRequest {
    std::string service;  // "woc", "ordinals", "arc", "home", "resolver", "update", "foreign"
    std::string method;
    std::string path;  // with the query, as it was sent
    std::string body;  // for the watch alone: the list of requests is kept without, so that it stays small
};

// Looks at each request twice, before the work (`acted` is false) and after it, on the service's own threads.
// True closes the connection without an answer, and before the work nothing is done.
using RequestWatch = std::function<bool(const SeenRequest& request, bool acted)>;

class Sandbox {
 public:
    explicit Sandbox(Options options);
    ~Sandbox();  // stops
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    // Takes all ports, then builds the world and serves, once in the life of this object. False with the
    // reason, and no port held, if one of them or the world's files cannot be had.
    bool start(std::string& error);
    // Closes every port and joins every thread. What was seen and the chain stay readable.
    void stop();

    Chain& chain();
    Directory& directory();
    Faults& faults();
    const World& world() const;
    const Ports& ports() const;
    // The build's settings with every endpoint pointed at this sandbox, and the world's paymail domain.
    Settings settings_for() const;

    // Which wallet the stand-in hands out: its id, or empty to refuse, or "-" to stay silent.
    void approve_wallet(const std::string& wallet_id);

    // What the services have seen since the last clear.
    std::vector<SeenRequest> requests() const;
    void clear_requests();
    // Requests of that method ("" for any) whose path holds the part.
    std::size_t count(const std::string& method, const std::string& path_part) const;
    // An empty one looks at nothing. The one before is not called any more once this returns.
    void watch_requests(RequestWatch watch);
    // Receipts of payments that the family's host has taken: their bodies as they came.
    std::vector<Json> receipts() const;

    // Lists of unspent outputs, token listings and balances show what was there `transactions` transactions
    // ago. Single transactions, spends and histories are always up to date.
    void set_index_lag(std::size_t transactions);
    // The version that the update page names, in thousandths.
    void set_page_version(int thousandths);

 private:
    struct Body;
    std::unique_ptr<Body> body_;
};

}  // namespace sandbox
