#include "sandbox/sandbox.h"

#include <chrono>
#include <thread>

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
    EXPECT_EQ(world.dump().find(box.world().main_wallet.mnemonic), std::string::npos);
    EXPECT_EQ(control("/sandbox/requests").json()["requests"].back(),
              (Json{{"service", "woc"}, {"method", "POST"}, {"path", "/v1/bsv/main/tx/raw"}}));
    EXPECT_EQ(box.count("POST", "/tx/raw"), 1U);
    EXPECT_EQ(box.count("", "/sandbox/"), 0U);
    ASSERT_EQ(order("/sandbox/version", {{"thousandths", 1'203}}).status, 200);
    EXPECT_TRUE(contains(control("/download").body, "1.203"));
}

TEST_F(WholeSandbox, StrangeRequestsGetAnAnswer) {
    const Ports& ports = box.ports();
    for (const int port : {ports.woc, ports.ordinals, ports.arc, ports.control}) {
        for (const std::string path : {"/", "/%ff%00/..//", "/v1/bsv/main/tx/", "/api/bsv20/id/_"})
            EXPECT_GE(service_client::get(port, path).status, 400) << port << path;
        for (const std::string body :
             {"", "[]", "{\"txhex\":5}", "{\"addresses\":[1]}", "\xff\xfe", "{{{{"}) {
            for (const char* path : {"/v1/bsv/main/tx/raw", "/v1/bsv/main/addresses/balance", "/v1/tx",
                                     "/sandbox/fault", "/sandbox/lag"})
                EXPECT_GE(service_client::ask(port, path, &body, Transport::Plain).status, 400)
                    << path << body;
        }
    }
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
    EXPECT_TRUE(third.start(error)) << error << " a port was kept";
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
