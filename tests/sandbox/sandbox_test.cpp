#include "sandbox/sandbox.h"

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "base/text.h"
#include "tests/sandbox/service_client.h"
#include "tests/support/test_home.h"

namespace {

using namespace sandbox;
using service_client::Started;
using service_client::Transport;

class WholeSandbox : public Started {};

TEST_F(WholeSandbox, TheControlPortMinesAndShowsTheChain) {
    const Transaction tx = payment(money(key(1), 44'000), key(1), key(2), 250);
    ASSERT_EQ(send("woc", hex(tx)).status, 200);
    const Json mined = order("/sandbox/mine", nullptr).json();
    EXPECT_EQ(mined["height"], box.chain().height());
    const Json chain = control("/sandbox/chain").json();
    const Json& last = chain["transactions"].back();
    EXPECT_EQ(last["txid"], tx.txid);
    EXPECT_EQ(last["height"], chain["height"]);
    EXPECT_EQ(last["fee"], 250);
    EXPECT_EQ(last["inputs"][0]["address"], key(1).address);
    EXPECT_EQ(last["outputs"][0], (Json{{"sats", 43'750},
                                        {"address", key(2).address},
                                        {"script", qv_clasp_hex_encode(tx.outputs[0].script)}}));
    const Json world = control("/sandbox/world").json();
    EXPECT_EQ(world["token_id"], box.world().token_id);
    EXPECT_EQ(world["holders"].size(), box.world().holders.size());
    EXPECT_EQ(world["fee_address"], settings().fee_address);
    EXPECT_EQ(world.dump().find(box.world().main_wallet.mnemonic), std::string::npos);
    EXPECT_EQ(control("/sandbox/requests").json()["requests"].back(),
              (Json{{"service", "woc"}, {"method", "POST"}, {"path", "/v1/bsv/main/tx/raw"}}));
    EXPECT_EQ(box.count("POST", "/tx/raw"), 1U);
    EXPECT_EQ(box.count("", "/sandbox/"), 0U);
    box.clear_requests();
    EXPECT_TRUE(box.requests().empty());
    EXPECT_TRUE(contains(control("/download").body, "0.002"));
    ASSERT_EQ(order("/sandbox/version", {{"thousandths", 1'203}}).status, 200);
    EXPECT_TRUE(contains(control("/download").body, "1.203"));
    EXPECT_EQ(box.count("GET", "/download"), 2U);
}

TEST_F(WholeSandbox, StrangeRequestsGetAnAnswer) {
    const Ports& ports = box.ports();
    const std::string long_path(6'000, 'x');
    for (const int port : {ports.woc, ports.ordinals, ports.arc, ports.control}) {
        for (const std::string& path : {std::string("/"), "/" + long_path, std::string("/%ff%00/..//"),
                                        std::string("/v1/bsv/main/tx/"), std::string("/api/bsv20/id/_")}) {
            EXPECT_GE(service_client::get(port, path).status, 400) << port << path.substr(0, 40);
        }
        for (const char* body : {"", "[]", "{\"txhex\":5}", "{\"addresses\":[1]}", "\xff\xfe", "{{{{"}) {
            const std::string text = body;
            for (const char* path : {"/v1/bsv/main/tx/raw", "/v1/bsv/main/addresses/balance", "/v1/tx",
                                     "/sandbox/fault", "/sandbox/lag"}) {
                EXPECT_GE(service_client::ask(port, path, &text, Transport::Plain).status, 400)
                    << path << body;
            }
        }
    }
    for (const char* path : {"/oi/submit", "/api/paymail/claim", "/receipt", "/nowhere"}) {
        EXPECT_GE(post_home(path, {{"txhex", 1}, {"hex", Json::array()}, {"metadata", 7}}).status, 400)
            << path;
    }
}

TEST_F(WholeSandbox, TheSettingsPointAtThisSandbox) {
    const Settings served = box.settings_for();
    const std::string woc_port = std::to_string(box.ports().woc);
    EXPECT_EQ(served.woc_base, "http://127.0.0.1:" + woc_port + "/v1/bsv/main");
    EXPECT_EQ(served.home_host, "localhost:" + std::to_string(box.ports().home));
    EXPECT_EQ(served.home_domain, "localhost");
    EXPECT_EQ(served.local_resolver_port, box.ports().resolver);
    EXPECT_TRUE(file_exists(served.tls_ca_file));
    EXPECT_EQ(served.fee_address, settings().fee_address);
}

class SlowServices : public Started {
 protected:
    SlowServices()
        : Started([] {
              Options options = service_client::quick_options();
              options.latency_ms = 150;
              return options;
          }()) {}
};

TEST_F(SlowServices, FourHundredRequestsAreServedSideBySide) {
    constexpr std::size_t COUNT = 400;
    std::vector<std::thread> askers;
    std::atomic<std::size_t> answered{0};
    const auto start = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < COUNT; ++i) {
        askers.emplace_back([&, i] {
            const std::string path =
                "/address/" + key(static_cast<std::uint8_t>(i % 200 + 1)).address + "/unspent";
            if (woc(path).status == 200) ++answered;
        });
    }
    for (std::thread& asker : askers) asker.join();
    EXPECT_EQ(answered, COUNT);
    EXPECT_EQ(box.count("GET", "/unspent"), COUNT);
    // One after another they would take a minute.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(40));
}

TEST(SandboxPorts, ATakenPortIsNamedAndNoOtherIsKept) {
    Sandbox first(service_client::quick_options());
    std::string error;
    ASSERT_TRUE(first.start(error)) << error;
    Options options = service_client::quick_options();
    options.ports.control = first.ports().control;
    Sandbox second(options);
    EXPECT_FALSE(second.start(error));
    EXPECT_EQ(error, "Port " + std::to_string(options.ports.control) + " on 127.0.0.1 is taken.");
    options.ports = {second.ports().woc, 0, 0, 0, -1, 0};
    Sandbox third(options);
    EXPECT_TRUE(third.start(error)) << error;
    EXPECT_EQ(third.ports().woc, second.ports().woc);
    EXPECT_EQ(third.ports().resolver, -1);
}

TEST(SandboxPorts, ASandboxStartsAndStopsFiftyTimesOnTheSamePorts) {
    Options options = service_client::quick_options(3);
    for (int i = 0; i < 50; ++i) {
        Sandbox box(options);
        std::string error;
        ASSERT_TRUE(box.start(error)) << i << ": " << error;
        options.ports = box.ports();
        ASSERT_EQ(service_client::get(box.ports().control, "/sandbox/world").status, 200) << i;
    }
}

TEST(SandboxConnect, TheStandInHandsOutTheApprovedWallet) {
    const TestHome data;
    Options options = service_client::quick_options(3);
    options.world.folder = data.folder();
    options.world.write_files = true;
    options.answer_connects = true;
    Sandbox box(options);
    std::string error;
    ASSERT_TRUE(box.start(error)) << error;
    const auto connect = [&](const std::string& id) {
        data.write("/connect/" + id + ".req.json",
                   Json{{"id", id}, {"app", "a"}, {"instance", "b"}, {"ts", 1}});
        for (int i = 0; i < 1'500 && !data.exists("/connect/" + id + ".rep.json"); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return data.read_json("/connect/" + id + ".rep.json");
    };
    EXPECT_EQ(connect("one"), (Json{{"ok", true}, {"wallet_id", box.world().main_wallet.id}}));
    box.approve_wallet(box.world().other_wallet.id);
    EXPECT_EQ(connect("two")["wallet_id"], box.world().other_wallet.id);
    ASSERT_EQ(service_client::post(box.ports().control, "/sandbox/approve", {{"wallet_id", ""}}).status, 200);
    EXPECT_EQ(connect("three"), (Json{{"ok", false}}));
}

}  // namespace
