// Whole roads through a sandbox of their own: its services on free ports, its two wallets on disk, and this
// program beside them, not connected yet. The chain is the judge: what it holds decides what was paid.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "clasp/qv_clasp_wallet.h"
#include "core/dividend_split.h"
#include "core/pay_run.h"
#include "program/wallet_calls.h"
#include "records/payout_ledger.h"
#include "sandbox/sandbox.h"
#include "sandbox/scripts.h"
#include "spend/receipts.h"
#include "tests/support/fake_clock.h"
#include "tests/support/test_home.h"
#include "wallet/binds.h"
#include "wallet/wallet_session.h"

class Journey : public testing::Test {
 protected:
    ~Journey() override;

    // Starts the sandbox and this program. `world.folder` is filled in.
    void open(sandbox::WorldOptions world);
    void open(int holders, std::uint64_t seed = 1, bool token_among_coins = false);
    // Takes the handshake, in real time; after it the clock stands still but for sleeps.
    void connect();
    // As the end of the process and a new start: everything in memory goes.
    static void forget_memory();
    void restart();
    // As another program that binds this installation to the other wallet: its wallet comes with it.
    void switch_wallet();

    sandbox::Chain& chain() { return box->chain(); }
    const sandbox::World& world() { return box->world(); }
    void fail(const std::string& service, const std::string& failure, const std::string& path_part = "",
              int times = -1, int slow_ms = 3000);
    // Runs `act` on a thread of its own as soon as a request with this part in its path has come, and waits
    // for its end in ~thread.
    std::jthread when_asked(const std::string& path_part, std::function<void()> act);

    // A snapshot and its preview, ready to be paid.
    RoundState frozen_round(const std::string& amount);
    static PayJob job_of(const RoundState& state);
    static std::vector<PreviewRow> due_rows(const RoundState& state);

    // Plain coins of the main wallet on the chain.
    std::int64_t wallet_sats();
    // What the outputs of plain form pay to an address, in all transactions of the chain.
    std::int64_t received(const std::string& address);
    std::int64_t miner_fee(const sandbox::Transaction& tx);
    std::vector<sandbox::Transaction> transactions_since(std::size_t mark);
    bool carries_token(const std::string& txid, std::uint32_t vout);

    TestHome home;
    std::unique_ptr<sandbox::Sandbox> box;
    std::unique_ptr<FakeClock> clock;
};

// The count of the requests of one method whose path holds the part.
std::size_t count_requests(const std::vector<sandbox::SeenRequest>& requests, const std::string& method,
                           const std::string& path_part = "");
