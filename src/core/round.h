// One round: its state, and the seams through which it reaches a screen, a wallet and worker threads. The
// controller and what it calls take it as their context, on the window's thread only. Workers get copies of
// what they need.
#pragma once

#include <atomic>
#include <memory>

#include "core/round_state.h"
#include "core/round_wallet.h"
#include "core/round_window.h"
#include "core/round_worker.h"

struct Round {
    RoundState state;
    RoundWindow window;
    RoundWallet wallet;
    RoundWorkers workers;
    // 1 while a status worker runs. Shared, since a worker may outlive the round.
    std::shared_ptr<std::atomic<int>> status_worker_runs = std::make_shared<std::atomic<int>>(0);
};
