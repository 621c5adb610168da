// One HTTP service on 127.0.0.1, plain or over TLS: it takes connections, reads one request from each, hands
// it to a function and writes that function's reply. Threads are made as connections come, up to a few
// hundred, so that a server which nobody asks costs nothing. It knows no chain and no service's forms.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "sandbox/service_tls.h"

namespace sandbox {

struct ServiceRequest {
    std::string method;
    std::string target;  // as it was sent, with the query
    std::string path;    // decoded, without the query
    std::map<std::string, std::string> query;
    std::string body;
    std::string broadcast_fault;  // a failure on order that concerns a broadcast; empty otherwise
};

struct ServiceReply {
    int status = 200;
    std::string body;
    std::string type = "application/json";
    std::string location{};   // where a redirect leads
    std::size_t padding = 0;  // blanks behind the body, sent as they go
    bool hang_up = false;     // close the connection without an answer
    bool cut = false;         // close it in the middle of the body
};

// Has the HTTP library serve one request on a thread that is joined before this returns, once a process. The
// library fills tables of its own at the first request; filled by then, no thread finds another at it.
void prepare_http_library();

// Called on many threads at once.
using ServiceHandler = std::function<ServiceReply(const ServiceRequest&)>;

class ServiceServer {
 public:
    // A null `tls` serves plain HTTP.
    ServiceServer(ServiceHandler handler, TlsContext tls);
    ~ServiceServer();  // stops
    ServiceServer(const ServiceServer&) = delete;
    ServiceServer& operator=(const ServiceServer&) = delete;

    // Takes the port, or a free one for 0, which is written back; false if it cannot be had. From here on
    // connections wait in the queue until `serve` is called.
    bool bind(int& port);
    void serve();
    // Closes every connection and joins all threads. A handler that is running is waited for.
    void stop();

 private:
    struct Listener;
    std::unique_ptr<Listener> listener_;
};

}  // namespace sandbox
