// A small HTTP server for tests: answers by script, counts what it was asked. It listens on a free port of
// 127.0.0.1 and stops when it goes away. Handlers run on the server's own threads.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

struct ScriptedAnswer {
    int status = 200;
    std::string body{};
    std::string content_type = "application/json";
    std::string location{};  // a redirect
    int delay_ms = 0;        // real time; keep it small
    bool hang_up = false;    // the connection is closed without an answer
};

struct ScriptedRequest {
    std::string method;
    std::string path;  // with its query
    std::string body;
    std::map<std::string, std::string> headers;  // keys in lower case
};

class ScriptedServer {
 public:
    enum class Transport { Plain, Tls };
    explicit ScriptedServer(Transport transport = Transport::Plain);
    ~ScriptedServer();
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    int port() const;
    // "http://127.0.0.1:PORT", or "https://localhost:PORT" with the sandbox's certificate.
    std::string base() const;

    // Answers for "METHOD path" (an exact path with its query): one after another, the last one for ever.
    void on(const std::string& method, const std::string& path, std::vector<ScriptedAnswer> answers);
    void on(const std::string& method, const std::string& path, const std::string& body, int status = 200);
    // Asked first, for every request; returns true if it has filled the answer.
    void on_any(std::function<bool(const ScriptedRequest&, ScriptedAnswer&)> handler);
    // Without a script the answer is this one: 404 and no body at first.
    void otherwise(ScriptedAnswer answer);

    std::vector<ScriptedRequest> requests() const;
    // How many requests of the method have a path that contains `part`.
    std::size_t count(const std::string& method, const std::string& part = "") const;
    void clear_requests();

 private:
    struct Body;
    std::unique_ptr<Body> body_;
};
