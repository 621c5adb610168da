// The services of a payment around one play-money chain, which verifies every transaction in full: the home
// host, the chain service, ARC and the index. What each target of a broadcast does is scripted turn by turn;
// requests are counted. With it one bound wallet and a clock that no sleep holds up.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "sandbox/chain.h"
#include "tests/support/fake_clock.h"
#include "tests/support/one_wallet.h"
#include "tests/support/scripted_server.h"
#include "tests/support/test_home.h"

// One turn of a target: whether the network gets the transaction, and what the target answers. "TXID" in the
// body stands for the id of the transaction.
struct Turn {
    bool take = true;
    ScriptedAnswer answer;
};
Turn takes(const std::string& body, int status = 200);
Turn refuses(const std::string& body, int status = 400);
Turn hangs_up(bool take = false);

class PlayNetwork {
 public:
    explicit PlayNetwork(const Json& wallet_document = one_wallet_document());
    ~PlayNetwork();
    PlayNetwork(const PlayNetwork&) = delete;
    PlayNetwork& operator=(const PlayNetwork&) = delete;

    TestHome home_folder;
    FakeClock clock;
    sandbox::Chain chain;

    // The turns of each target from now on, the last one for ever. At first each takes everything.
    void home_does(std::vector<Turn> turns) { replace(home_, std::move(turns)); }
    void woc_does(std::vector<Turn> turns) { replace(woc_, std::move(turns)); }
    void arc_does(std::vector<Turn> turns) { replace(arc_, std::move(turns)); }

    // How many looks at a transaction miss before the chain service shows it; -1: it never does.
    std::atomic<int> misses{0};
    std::atomic<bool> index_answers{true};
    std::atomic<bool> lists_answer{true};
    std::atomic<bool> looks_answer{true};

    // Calls this before each answer from now on, on the server's thread.
    void on_request(std::function<void(const std::string& path)> action) {
        const std::lock_guard lock(mutex_);
        on_request_ = std::move(action);
    }

    // Money for an address in outputs of these values. Returns the txid.
    std::string fund(const std::string& address, const std::vector<std::int64_t>& values);
    // From now on the lists of an address are what they are now, spent or not.
    void freeze_lists(const std::string& address);
    // A transaction, unknown to this program, that spends an output of the wallet's receive key 0.
    void spend_elsewhere(const std::string& txid, std::uint32_t vout);

    std::size_t posts(const std::string& part) const;
    std::size_t gets(const std::string& part) const;
    // The looks at transactions, each of which asks once for the bytes.
    std::size_t probes() const { return gets("/hex"); }
    std::size_t list_reads() const { return gets("/unspent/all"); }
    void clear_requests();

    // What an address owns on the chain, all together.
    std::int64_t owned(const std::string& address) const;
    // The transactions that came in over the network, oldest first.
    std::vector<sandbox::Transaction> payments() const;
    // What was written into the record of this wallet, such as "_spent.json".
    Json record(const std::string& suffix) const;

 private:
    struct Target {
        std::vector<Turn> turns;
        std::size_t next = 0;
    };
    void replace(Target& target, std::vector<Turn> turns);
    ScriptedAnswer broadcast(Target& target, const std::string& raw_hex);
    ScriptedAnswer answer(const ScriptedRequest& request);
    ScriptedAnswer look_up(const std::string& path);
    ScriptedAnswer address_list(const std::string& address, const std::string& rest);

    std::mutex mutex_;
    std::function<void(const std::string& path)> on_request_;
    Target home_{{takes(R"({"ok":true})")}};
    Target woc_{{takes("\"TXID\"\n")}};
    Target arc_{{takes(R"({"txid":"TXID","txStatus":"SEEN_ON_NETWORK"})")}};
    std::map<std::string, std::vector<sandbox::Coin>> frozen_;
    std::size_t funded_ = 0;
    ScriptedServer plain_;
    ScriptedServer tls_{ScriptedServer::Transport::Tls};
};
