#include "tests/support/scripted_server.h"

#include <httplib.h>

#include <chrono>
#include <stdexcept>
#include <thread>

#include "base/text.h"
#include "sandbox/service_server.h"

struct ScriptedServer::Body {
    std::unique_ptr<httplib::Server> server;
    std::thread thread;
    int port = 0;
    bool tls = false;

    mutable std::mutex mutex;
    std::map<std::string, std::vector<ScriptedAnswer>> scripts;  // in the order they are given out
    std::map<std::string, std::size_t> given;
    std::function<bool(const ScriptedRequest&, ScriptedAnswer&)> any;
    ScriptedAnswer fallback{.status = 404, .body = ""};
    std::vector<ScriptedRequest> seen;

    ScriptedAnswer answer_to(const ScriptedRequest& request) {
        std::function<bool(const ScriptedRequest&, ScriptedAnswer&)> handler;
        {
            const std::lock_guard<std::mutex> hold(mutex);
            seen.push_back(request);
            handler = any;
        }
        ScriptedAnswer answer;
        if (handler && handler(request, answer)) return answer;
        const std::lock_guard<std::mutex> hold(mutex);
        const std::string key = request.method + " " + request.path;
        const auto script = scripts.find(key);
        if (script == scripts.end() || script->second.empty()) return fallback;
        const std::size_t turn = std::min(given[key]++, script->second.size() - 1);
        return script->second[turn];
    }

    void serve(const httplib::Request& incoming, httplib::Response& outgoing) {
        ScriptedRequest request{incoming.method, incoming.target, incoming.body, {}};
        for (const auto& [key, value] : incoming.headers) request.headers[ascii_lower(key)] = value;
        const ScriptedAnswer answer = answer_to(request);
        if (answer.delay_ms > 0) std::this_thread::sleep_for(std::chrono::milliseconds(answer.delay_ms));
        outgoing.status = answer.status;
        if (!answer.location.empty()) outgoing.set_header("Location", answer.location);
        if (answer.hang_up) {
            // A length is promised and the connection given up before a byte of it is sent.
            outgoing.set_content_provider(1000, "text/plain",
                                          [](std::size_t, std::size_t, httplib::DataSink&) { return false; });
            return;
        }
        outgoing.set_content(answer.body, answer.content_type);
    }
};

ScriptedServer::ScriptedServer(Transport transport) : body_(std::make_unique<Body>()) {
    sandbox::prepare_http_library();
    body_->tls = transport == Transport::Tls;
    if (body_->tls) {
        const std::string folder = BURSARIA_SANDBOX_TLS;
        body_->server = std::make_unique<httplib::SSLServer>((folder + "/server.pem").c_str(),
                                                             (folder + "/server.key").c_str());
    } else {
        body_->server = std::make_unique<httplib::Server>();
    }
    body_->server->set_keep_alive_max_count(1);
    body_->server->new_task_queue = [] { return new httplib::ThreadPool(16); };
    const auto handler = [body = body_.get()](const httplib::Request& request, httplib::Response& response) {
        body->serve(request, response);
    };
    body_->server->Get(".*", handler).Post(".*", handler);
    body_->port = body_->server->bind_to_any_port("127.0.0.1");
    if (body_->port <= 0) throw std::runtime_error("no free port");
    body_->thread = std::thread([body = body_.get()] { body->server->listen_after_bind(); });
    while (!body_->server->is_running()) std::this_thread::yield();
}

ScriptedServer::~ScriptedServer() {
    body_->server->stop();
    body_->thread.join();
}

int ScriptedServer::port() const {
    return body_->port;
}

std::string ScriptedServer::base() const {
    return (body_->tls ? "https://localhost:" : "http://127.0.0.1:") + std::to_string(body_->port);
}

void ScriptedServer::on(const std::string& method, const std::string& path,
                        std::vector<ScriptedAnswer> answers) {
    const std::lock_guard<std::mutex> hold(body_->mutex);
    body_->scripts[method + " " + path] = std::move(answers);
    body_->given[method + " " + path] = 0;
}

void ScriptedServer::on(const std::string& method, const std::string& path, const std::string& body,
                        int status) {
    on(method, path, std::vector<ScriptedAnswer>{{.status = status, .body = body}});
}

void ScriptedServer::on_any(std::function<bool(const ScriptedRequest&, ScriptedAnswer&)> handler) {
    const std::lock_guard<std::mutex> hold(body_->mutex);
    body_->any = std::move(handler);
}

void ScriptedServer::otherwise(ScriptedAnswer answer) {
    const std::lock_guard<std::mutex> hold(body_->mutex);
    body_->fallback = std::move(answer);
}

std::vector<ScriptedRequest> ScriptedServer::requests() const {
    const std::lock_guard<std::mutex> hold(body_->mutex);
    return body_->seen;
}

std::size_t ScriptedServer::count(const std::string& method, const std::string& part) const {
    const std::lock_guard<std::mutex> hold(body_->mutex);
    std::size_t found = 0;
    for (const ScriptedRequest& request : body_->seen) {
        if (request.method == method && contains(request.path, part)) ++found;
    }
    return found;
}

void ScriptedServer::clear_requests() {
    const std::lock_guard<std::mutex> hold(body_->mutex);
    body_->seen.clear();
}
