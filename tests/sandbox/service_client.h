// A started sandbox without files, and small calls on its services, as its tests need them.
#pragma once

#include <gtest/gtest.h>
#include <httplib.h>

#include <algorithm>
#include <memory>
#include <string>

#include "base/hex.h"
#include "base/json_file.h"
#include "sandbox/sandbox.h"
#include "sandbox/service_tls.h"
#include "sandbox/sighash.h"

namespace service_client {

struct Answer {
    int status = 0;  // 0: no answer came
    std::string body;
    std::string type;
    Json json() const {
        Json document;
        parse_json(body, document);
        return document;
    }
};

inline Answer answer_from(const httplib::Result& result) {
    if (!result) return {};
    return {result->status, result->body, result->get_header_value("Content-Type")};
}

enum class Transport { Plain, Home, Resolver };

// One request on a connection of its own; `body` makes it a POST.
inline Answer ask(int port, const std::string& path, const std::string* body, Transport transport) {
    const bool tls = transport != Transport::Plain;
    const std::string host = transport == Transport::Home ? "https://localhost:"
                             : tls                        ? "https://127.0.0.1:"
                                                          : "http://127.0.0.1:";
    httplib::Client client(host + std::to_string(port));
    client.set_read_timeout(60, 0);
    if (transport == Transport::Home) client.set_ca_cert_path(sandbox::authority_file().c_str());
    if (transport == Transport::Resolver) client.enable_server_certificate_verification(false);
    return answer_from(body == nullptr ? client.Get(path.c_str())
                                       : client.Post(path.c_str(), *body, "application/json"));
}
inline Answer get(int port, const std::string& path, Transport transport = Transport::Plain) {
    return ask(port, path, nullptr, transport);
}
inline Answer post(int port, const std::string& path, const Json& body,
                   Transport transport = Transport::Plain) {
    const std::string text = dump_json(body, -1);
    return ask(port, path, &text, transport);
}

inline sandbox::Options quick_options(int holders = 8) {
    sandbox::Options options;
    options.world.holders = holders;
    options.world.write_files = false;
    options.answer_connects = false;
    return options;
}

// Each test has a chain of its own.
class Started : public ::testing::Test {
 protected:
    explicit Started(sandbox::Options options = quick_options()) : box(std::move(options)) {}
    void SetUp() override {
        std::string error;
        ASSERT_TRUE(box.start(error)) << error;
    }

    Answer woc(const std::string& path) { return get(box.ports().woc, "/v1/bsv/main" + path); }
    Answer ordinals(const std::string& path) { return get(box.ports().ordinals, path); }
    Answer home(const std::string& path) { return get(box.ports().home, path, Transport::Home); }
    Answer post_home(const std::string& path, const Json& body) {
        return post(box.ports().home, path, body, Transport::Home);
    }
    Answer control(const std::string& path) { return get(box.ports().control, path); }
    Answer order(const std::string& path, const Json& body) { return post(box.ports().control, path, body); }

    // The three ways to hand a transaction to the network.
    Answer send(const std::string& service, const std::string& raw_hex) {
        const sandbox::Ports& ports = box.ports();
        if (service == "home") return post_home("/oi/submit", {{"txhex", raw_hex}});
        if (service == "arc") return post(ports.arc, "/v1/tx", {{"rawTx", raw_hex}});
        return post(ports.woc, "/v1/bsv/main/tx/raw", {{"txhex", raw_hex}});
    }

    // Fresh money for a key, in a block.
    sandbox::Coin money(const sandbox::KeyPair& key, std::int64_t sats) {
        const Bytes script = sandbox::p2pkh_script(key.hash160);
        return {box.chain().fund({{sats, script}}), 0, sats, script, box.chain().height()};
    }
    // A signed payment of a whole coin but the fee.
    static sandbox::Transaction payment(const sandbox::Coin& coin, const sandbox::KeyPair& from,
                                        const sandbox::KeyPair& to, std::int64_t fee_sats = 100) {
        sandbox::Transaction tx;
        sandbox::add_input(tx, coin);
        tx.outputs = {{coin.sats - fee_sats, sandbox::p2pkh_script(to.hash160)}};
        sandbox::sign_transaction(tx, {{coin, from}});
        return tx;
    }
    static std::string hex(const sandbox::Transaction& tx) { return qv_clasp_hex_encode(tx.raw); }
    static sandbox::KeyPair key(std::uint8_t number) { return sandbox::key_from_priv(Bytes(32, number)); }

    sandbox::Sandbox box;
};

}  // namespace service_client
