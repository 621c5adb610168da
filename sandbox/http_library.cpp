#include <httplib.h>

#include <thread>

#include "sandbox/service_server.h"

namespace sandbox {

void prepare_http_library() {
    static const bool prepared = [] {
        httplib::Server server;
        server.new_task_queue = [] { return new httplib::ThreadPool(1); };
        const auto echo = [](const httplib::Request& request, httplib::Response& response) {
            response.set_content(request.body, "text/plain");
        };
        server.Get("/", echo).Post("/", echo);
        const int port = server.bind_to_any_port("127.0.0.1");
        std::thread serving([&] { server.listen_after_bind(); });
        while (!server.is_running()) std::this_thread::yield();
        httplib::Client client("127.0.0.1", port);
        const bool served = client.Get("/") && client.Post("/", "x", "text/plain");
        server.stop();
        serving.join();
        return served;
    }();
    static_cast<void>(prepared);
}

}  // namespace sandbox
