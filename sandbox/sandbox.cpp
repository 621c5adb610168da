#include "sandbox/sandbox.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <thread>

#include "base/text.h"
#include "sandbox/service_arc.h"
#include "sandbox/service_context.h"
#include "sandbox/service_control.h"
#include "sandbox/service_home.h"
#include "sandbox/service_ordinals.h"
#include "sandbox/service_reply.h"
#include "sandbox/service_resolver.h"
#include "sandbox/service_server.h"
#include "sandbox/service_tls.h"
#include "sandbox/service_woc.h"

namespace sandbox {

namespace {

constexpr std::chrono::milliseconds CONNECT_LOOK{20};
// A port on which nothing of this system ever listens.
constexpr int NO_PORT = 1;

// Waiting that ends when the sandbox does. It takes real time, also while a test's clock runs ahead.
class Pause {
 public:
    // False if the end came first.
    bool wait(std::chrono::milliseconds duration) {
        std::unique_lock<std::mutex> lock(mutex_);
        return !wake_.wait_for(lock, duration, [this] { return ended_; });
    }
    void end() {
        const std::lock_guard<std::mutex> lock(mutex_);
        ended_ = true;
        wake_.notify_all();
    }

 private:
    std::mutex mutex_;
    std::condition_variable wake_;
    bool ended_ = false;
};

using Answer = ServiceReply (*)(ServiceContext&, const ServiceRequest&);

ServiceReply answer_page(ServiceContext& context, const ServiceRequest& request) {
    return answer_update_page(context, request);
}

ServiceReply hung_up() {
    ServiceReply reply;
    reply.hang_up = true;
    return reply;
}

std::string loopback_url(int port, const std::string& path) {
    return "http://127.0.0.1:" + std::to_string(port) + path;
}

}  // namespace

struct Sandbox::Body {
    explicit Body(Options wanted) : options(std::move(wanted)), ports(options.ports) {}

    // One request of a service, with the latency and the failures that were ordered.
    ServiceReply serve(const std::string& service, Answer answer, ServiceRequest request) {
        SeenRequest seen{service, request.method, request.target, ""};
        context.requests.add(seen);
        seen.body = request.body;
        if (closes(seen, false)) return hung_up();
        ServiceReply reply = serve_with_faults(service, answer, request);
        if (closes(seen, true)) reply.hang_up = true;
        return reply;
    }

    bool closes(const SeenRequest& seen, bool acted) {
        const std::shared_lock lock(watch_mutex);
        return watch && watch(seen, acted);
    }

    ServiceReply serve_with_faults(const std::string& service, Answer answer, ServiceRequest& request) {
        if (options.latency_ms > 0) pause.wait(std::chrono::milliseconds(options.latency_ms));
        const std::optional<Fault> fault =
            context.faults.take(service, request.method + " " + request.target);
        if (!fault) return answer(context, request);
        ServiceReply reply;
        if (refuse(*fault, request.target, reply)) return reply;
        if (fault->failure == "stall") {
            pause.wait(std::chrono::milliseconds(fault->slow_ms));
            return hung_up();
        }
        if (is_broadcast_failure(fault->failure)) request.broadcast_fault = fault->failure;
        reply = answer(context, request);
        spoil(*fault, reply);
        if (fault->failure == "slow") pause.wait(std::chrono::milliseconds(fault->slow_ms));
        return reply;
    }

    ServiceHandler service(const char* name, Answer answer) {
        return [this, name, answer](const ServiceRequest& request) { return serve(name, answer, request); };
    }

    // The control port serves the sandbox's own paths without latency and failures, and the download page
    // with them.
    ServiceReply serve_control(const ServiceRequest& request) {
        if (request.path.starts_with("/sandbox/")) return answer_control(context, request);
        return serve("update", answer_page, request);
    }

    bool open(int& port, ServiceHandler handler, TlsContext tls, std::string& error) {
        auto server = std::make_unique<ServiceServer>(std::move(handler), std::move(tls));
        if (!server->bind(port)) {
            error = "Port " + std::to_string(port) + " on 127.0.0.1 is taken.";
            return false;
        }
        servers.push_back(std::move(server));
        return true;
    }

    bool open_tls(int& port, ServiceHandler handler, TlsContext tls, std::string& error) {
        if (!tls) error = "The sandbox has no certificate (" + authority_file() + ").";
        return tls && open(port, std::move(handler), std::move(tls), error);
    }

    bool open_ports(std::string& error) {
        const auto control = [this](const ServiceRequest& request) { return serve_control(request); };
        return open(ports.woc, service("woc", answer_woc), nullptr, error) &&
               open(ports.ordinals, service("ordinals", answer_ordinals), nullptr, error) &&
               open(ports.arc, service("arc", answer_arc), nullptr, error) &&
               open_tls(ports.home, service("home", answer_home), home_tls(), error) &&
               (ports.resolver < 0 ||
                open_tls(ports.resolver, service("resolver", answer_resolver), self_made_tls(), error)) &&
               (ports.foreign < 0 ||
                open_tls(ports.foreign, service("foreign", answer_home), foreign_tls(), error)) &&
               open(ports.control, control, nullptr, error);
    }

    void build_world() {
        context.world = make_world(options.world, context.chain, context.directory);
        context.home_domain = options.world.home_domain;
        context.oracle_address = ::settings().oracle_address;
        context.fee_address = ::settings().fee_address;
        context.approval.set(context.world.main_wallet.id);
    }

    void answer_connects_until_end() {
        const std::string family_folder = options.world.folder + "/Quorvelle";
        while (pause.wait(CONNECT_LOOK)) {
            const std::string wallet_id = context.approval.wallet_id();
            if (wallet_id != "-") sandbox::answer_connects(family_folder, wallet_id);
        }
    }

    void close() {
        pause.end();
        if (connects.joinable()) connects.join();
        for (const auto& server : servers) server->stop();
        servers.clear();
    }

    Options options;
    Ports ports;
    ServiceContext context;
    Pause pause;
    std::shared_mutex watch_mutex;
    RequestWatch watch;
    std::vector<std::unique_ptr<ServiceServer>> servers;
    std::thread connects;
    bool started = false;
};

Sandbox::Sandbox(Options options) : body_(std::make_unique<Body>(std::move(options))) {}

Sandbox::~Sandbox() {
    stop();
}

bool Sandbox::start(std::string& error) {
    if (body_->started) {
        error = "This sandbox has been started before.";
        return false;
    }
    body_->started = true;
    if (!body_->open_ports(error)) {
        body_->close();
        return false;
    }
    try {
        body_->build_world();
    } catch (const std::exception& fault) {
        error = std::string("The world cannot be made: ") + fault.what() + ".";
        body_->close();
        return false;
    }
    for (const auto& server : body_->servers) server->serve();
    const WorldOptions& world = body_->options.world;
    if (body_->options.answer_connects && world.write_files && !world.folder.empty()) {
        body_->connects = std::thread([body = body_.get()] { body->answer_connects_until_end(); });
    }
    return true;
}

void Sandbox::stop() {
    body_->close();
}

Chain& Sandbox::chain() {
    return body_->context.chain;
}

Directory& Sandbox::directory() {
    return body_->context.directory;
}

Faults& Sandbox::faults() {
    return body_->context.faults;
}

const World& Sandbox::world() const {
    return body_->context.world;
}

const Ports& Sandbox::ports() const {
    return body_->ports;
}

Settings Sandbox::settings_for() const {
    const Ports& ports = body_->ports;
    Settings settings = ::settings();
    settings.woc_base = loopback_url(ports.woc, WOC_API_PATH);
    settings.woc_site = loopback_url(ports.woc, "");
    settings.ordinals_api_base = loopback_url(ports.ordinals, "/api");
    settings.ordinals_content_base = loopback_url(ports.ordinals, "");
    settings.arc_tx_endpoint = loopback_url(ports.arc, "/v1/tx");
    settings.home_host = "localhost:" + std::to_string(ports.home);
    settings.home_host_pin.clear();
    settings.home_domain = body_->options.world.home_domain;
    settings.update_page = loopback_url(ports.control, UPDATE_PAGE_PATH);
    settings.tls_ca_file = authority_file();
    settings.local_resolver_port = ports.resolver < 0 ? NO_PORT : ports.resolver;
    return settings;
}

void Sandbox::approve_wallet(const std::string& wallet_id) {
    body_->context.approval.set(wallet_id);
}

std::vector<SeenRequest> Sandbox::requests() const {
    return body_->context.requests.all();
}

void Sandbox::clear_requests() {
    body_->context.requests.clear();
}

std::size_t Sandbox::count(const std::string& method, const std::string& path_part) const {
    const std::vector<SeenRequest> seen = requests();
    return static_cast<std::size_t>(std::count_if(seen.begin(), seen.end(), [&](const SeenRequest& request) {
        return (method.empty() || request.method == method) && contains(request.path, path_part);
    }));
}

void Sandbox::watch_requests(RequestWatch watch) {
    const std::unique_lock lock(body_->watch_mutex);
    body_->watch = std::move(watch);
}

std::vector<Json> Sandbox::receipts() const {
    return body_->context.receipts.all();
}

void Sandbox::set_index_lag(std::size_t transactions) {
    body_->context.index_lag = transactions;
}

void Sandbox::set_page_version(int thousandths) {
    body_->context.page_version = thousandths;
}

}  // namespace sandbox
