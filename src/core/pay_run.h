// The pay run: first the app fee, then one send for each due holder in board order, each followed at once by
// its ledger row. It stops at the first failure, retries nothing and cannot be resumed. It runs on a worker
// thread, works on its own copy of the frozen list, and tells the outcome with one message at the end.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/round_state.h"
#include "core/round_wallet.h"
#include "core/round_worker.h"

// The question before a Pay.
std::string pay_confirmation_text(const RoundState& state);

// Sends and writes the ledger. The result is the finished WM_APP_PAY message.
std::unique_ptr<RoundMessage> run_pay(const PayJob& job, const RoundWallet& wallet);
// The worker: runs the job and posts its message.
void pay_worker(const PayJob& job, const RoundWallet& wallet, const RoundWorkers& workers);

// The first run of 64 hexadecimal digits of a text that begins with "success"; empty if there is none.
std::string find_txid(std::string_view result);
// Every run of 64 hexadecimal digits, each once, in order of first appearance.
std::vector<std::string> extract_txids(std::string_view text);
