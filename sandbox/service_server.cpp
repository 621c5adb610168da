#include "sandbox/service_server.h"

#include <httplib.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <set>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "base/text.h"

namespace sandbox {

namespace {

constexpr std::size_t MOST_THREADS = 512;
constexpr int WAITING_CONNECTIONS = 1024;
constexpr time_t SOCKET_TIMEOUT_S = 30;

constexpr std::size_t MOST_WAITING = std::size_t{1} << 20U;

// Set by a request's handler for the connection that the same thread is serving.
thread_local bool hang_up_now = false;
thread_local bool cut_now = false;

// Threads on demand: one more whenever a job finds none idle.
class GrowingPool final : public httplib::TaskQueue {
 public:
    void enqueue(std::function<void()> job) override {
        const std::lock_guard<std::mutex> lock(mutex_);
        jobs_.push_back(std::move(job));
        if (idle_ < jobs_.size() && threads_.size() < MOST_THREADS) threads_.emplace_back([this] { work(); });
        wake_.notify_one();
    }

    void shutdown() override {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            ending_ = true;
        }
        wake_.notify_all();
        for (std::thread& thread : threads_) thread.join();
    }

 private:
    void work() {
        std::unique_lock<std::mutex> lock(mutex_);
        while (true) {
            ++idle_;
            wake_.wait(lock, [this] { return !jobs_.empty() || ending_; });
            --idle_;
            if (jobs_.empty()) return;
            const std::function<void()> job = std::move(jobs_.front());
            jobs_.pop_front();
            lock.unlock();
            job();
            lock.lock();
        }
    }

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<std::function<void()>> jobs_;
    std::vector<std::thread> threads_;
    std::size_t idle_ = 0;
    bool ending_ = false;
};

// One connection. What is written waits in memory until the request is over, so that a reply can still be
// withheld and otherwise leaves in one piece; only a very long one leaves as it is made.
class Connection final : public httplib::Stream {
 public:
    Connection(socket_t socket, SSL* ssl) : socket_(socket), ssl_(ssl) {}

    bool is_readable() const override { return true; }
    bool is_writable() const override { return true; }

    ssize_t read(char* bytes, size_t size) override {
        // The interim "100 Continue" has to leave before the body that it asks for can come.
        if (!flush()) return -1;
        if (next_ == filled_) {
            const ssize_t got = receive();
            if (got <= 0) return got;
            filled_ = static_cast<std::size_t>(got);
            next_ = 0;
            if (!begun_) allow_missing_length();
            begun_ = true;
        }
        const std::size_t count = std::min(size, filled_ - next_);
        std::copy_n(buffer_.data() + next_, count, bytes);
        next_ += count;
        return static_cast<ssize_t>(count);
    }

    ssize_t write(const char* bytes, size_t size) override {
        waiting_.append(bytes, size);
        if (waiting_.size() > MOST_WAITING && !flush()) return -1;
        return static_cast<ssize_t>(size);
    }

    // Leaves half of the body that waits.
    void cut_body() {
        const std::size_t head = waiting_.find("\r\n\r\n");
        if (head == std::string::npos) return;
        const std::size_t body = waiting_.size() - head - 4;
        waiting_.resize(head + 4 + body / 2);
    }

    void get_remote_ip_and_port(std::string& ip, int& port) const override { loopback(ip, port); }
    void get_local_ip_and_port(std::string& ip, int& port) const override { loopback(ip, port); }
    socket_t socket() const override { return socket_; }

    bool flush() {
        std::size_t sent = 0;
        while (sent < waiting_.size()) {
            const ssize_t count = deliver(waiting_.data() + sent, waiting_.size() - sent);
            if (count <= 0) return false;
            sent += static_cast<std::size_t>(count);
        }
        waiting_.clear();
        return true;
    }

 private:
    static void loopback(std::string& ip, int& port) {
        ip = "127.0.0.1";
        port = 0;
    }

    // A POST without a body and without a length is what people type by hand; the library refuses it.
    void allow_missing_length() {
        const std::string_view head(buffer_.data(), filled_);
        const std::string_view no_body = "Content-Length: 0\r\n";
        const bool whole = head.size() > 4 && head.substr(head.size() - 4) == "\r\n\r\n";
        if (!whole || head.substr(0, 5) != "POST " || filled_ + no_body.size() > buffer_.size()) return;
        const std::string lower = ascii_lower(head);
        if (contains(lower, "\r\ncontent-length:") || contains(lower, "\r\ntransfer-encoding:")) return;
        // Behind the last header line, before the line that ends them.
        std::copy(no_body.begin(), no_body.end(), buffer_.begin() + static_cast<std::ptrdiff_t>(filled_ - 2));
        filled_ += no_body.size() - 2;
        buffer_[filled_++] = '\r';
        buffer_[filled_++] = '\n';
    }

    ssize_t receive() {
        if (ssl_ != nullptr) return SSL_read(ssl_, buffer_.data(), static_cast<int>(buffer_.size()));
        return ::recv(socket_, buffer_.data(), buffer_.size(), 0);
    }

    ssize_t deliver(const char* bytes, std::size_t size) {
        constexpr std::size_t MOST = std::size_t{1} << 20;
        if (ssl_ != nullptr) return SSL_write(ssl_, bytes, static_cast<int>(std::min(size, MOST)));
        return ::send(socket_, bytes, size, MSG_NOSIGNAL);
    }

    socket_t socket_;
    SSL* ssl_;
    std::array<char, 16384> buffer_{};
    std::size_t next_ = 0;
    std::size_t filled_ = 0;
    bool begun_ = false;
    std::string waiting_;
};

ServiceRequest request_from(const httplib::Request& request) {
    ServiceRequest plain;
    plain.method = request.method;
    plain.target = request.target;
    plain.path = request.path;
    plain.body = request.body;
    for (const auto& [key, value] : request.params) plain.query.emplace(key, value);
    return plain;
}

void allow_address_reuse(socket_t socket) {
    // Not the library's own choice, which would let two programs share one port.
    const int yes = 1;
    ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
}

}  // namespace

struct ServiceServer::Listener final : httplib::Server {
    Listener(ServiceHandler wanted, TlsContext context)
        : handler(std::move(wanted)), tls(std::move(context)) {
        new_task_queue = [] { return new GrowingPool; };
        set_socket_options(allow_address_reuse);
        set_idle_interval(0, 0);
        set_read_timeout(SOCKET_TIMEOUT_S, 0);
        set_write_timeout(SOCKET_TIMEOUT_S, 0);
        set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
            // A POST is not read yet at this point.
            if (request.method == "POST") return HandlerResponse::Unhandled;
            answer(request, response);
            return HandlerResponse::Handled;
        });
        Post(".*", [this](const httplib::Request& request, httplib::Response& response) {
            answer(request, response);
        });
    }

    void answer(const httplib::Request& request, httplib::Response& response) const {
        const ServiceReply reply = handler(request_from(request));
        hang_up_now = reply.hang_up;
        cut_now = reply.cut;
        response.status = reply.status;
        if (!reply.location.empty()) response.set_header("Location", reply.location);
        if (reply.padding == 0) return response.set_content(reply.body, reply.type);
        response.set_content_provider(
            reply.body.size() + reply.padding, reply.type,
            [body = reply.body](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
                if (offset < body.size()) return sink.write(body.data() + offset, body.size() - offset);
                const std::string blanks(std::min(length, MOST_WAITING), ' ');
                return sink.write(blanks.data(), blanks.size());
            });
    }

    bool take_port(int& port) {
        if (port == 0) {
            port = bind_to_any_port("127.0.0.1");
            if (port < 0) return false;
        } else if (!bind_to_port("127.0.0.1", port)) {
            return false;
        }
        // The library's queue of 5 makes a burst of connections wait for the next retry of the client's
        // system.
        return ::listen(svr_sock_, WAITING_CONNECTIONS) == 0;
    }

    void end() {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            ending = true;
            for (const socket_t socket : open) ::shutdown(socket, SHUT_RDWR);
        }
        // Only the accepting thread closes the listening socket, so its number cannot pass to another one
        // while that thread still uses it. This wakes it.
        if (accepting.joinable()) {
            ::shutdown(svr_sock_, SHUT_RDWR);
            accepting.join();
        } else if (bound) {
            ::close(svr_sock_);
        }
        bound = false;
    }

    bool process_and_close_socket(socket_t socket) override {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            open.insert(socket);
            if (ending) ::shutdown(socket, SHUT_RDWR);
        }
        const bool served = tls ? serve_tls(socket) : serve_stream(socket, nullptr);
        const std::lock_guard<std::mutex> lock(mutex);
        open.erase(socket);
        ::close(socket);
        return served;
    }

    bool serve_tls(socket_t socket) {
        const std::unique_ptr<SSL, decltype(&SSL_free)> ssl(SSL_new(tls.get()), &SSL_free);
        if (!ssl || SSL_set_fd(ssl.get(), socket) != 1 || SSL_accept(ssl.get()) != 1) return false;
        const bool served = serve_stream(socket, ssl.get());
        if (served) SSL_shutdown(ssl.get());
        return served;
    }

    bool serve_stream(socket_t socket, SSL* ssl) {
        Connection connection(socket, ssl);
        hang_up_now = false;
        cut_now = false;
        bool closed = false;
        const bool served = process_request(connection, true, closed, nullptr);
        if (hang_up_now) return false;
        if (cut_now) connection.cut_body();
        return connection.flush() && served && !cut_now;
    }

    ServiceHandler handler;
    TlsContext tls;
    std::thread accepting;
    bool bound = false;
    std::mutex mutex;
    std::set<socket_t> open;
    bool ending = false;
};

ServiceServer::ServiceServer(ServiceHandler handler, TlsContext tls)
    : listener_(std::make_unique<Listener>(std::move(handler), std::move(tls))) {
    prepare_http_library();
}

ServiceServer::~ServiceServer() {
    stop();
}

bool ServiceServer::bind(int& port) {
    listener_->bound = listener_->take_port(port);
    return listener_->bound;
}

void ServiceServer::serve() {
    listener_->accepting = std::thread([listener = listener_.get()] { listener->listen_after_bind(); });
}

void ServiceServer::stop() {
    listener_->end();
}

}  // namespace sandbox
