// How a round gets work off the window's thread, and how the results come back: a job is started and never
// waited for, and it posts one message whose receiver owns what is in it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "index/holder_board.h"
#include "index/token_row.h"

// The numbers are fixed: the first application message is 32769.
enum RoundMessageNumber : unsigned {
    WM_APP_CONNECT = 32769,
    WM_APP_TOKENS = 32770,
    WM_APP_SNAPSHOT = 32771,
    WM_APP_PAY = 32772,
    WM_APP_STATUS = 32773,
    WM_APP_VAULT = 32774,
    WM_APP_BALANCE = 32775,
    WM_APP_UPDATE = 32776,
};

// One posted result. Each message fills the fields that belong to it.
struct RoundMessage {
    unsigned number = 0;
    std::optional<std::string> text;  // the result text, or the status line
    std::vector<TokenRow> tokens;     // WM_APP_TOKENS
    HolderBoard board;                // WM_APP_SNAPSHOT
    bool stopped = false;             // WM_APP_PAY: the run stopped on a failure
    bool balance_known = false;       // WM_APP_BALANCE
    std::int64_t balance_sats = 0;
};

struct RoundWorkers {
    // Runs the job on a thread of its own. A thread that cannot be started ends the program.
    std::function<void(std::function<void()> job)> start_worker;
    // Hands the message to the window's thread; from any thread. False if it could not be posted, and it is
    // freed.
    std::function<bool(std::unique_ptr<RoundMessage> message)> post;
};
