// One failure at one service: a world of its own, the actions of a user in it, and what has to hold after
// each of them. The chain is the judge.
#pragma once

#include <chrono>
#include <map>
#include <string>
#include <vector>

#include "tests/faults/fault_table.h"
#include "tests/faults/transfer_watch.h"
#include "tests/journeys/journey.h"

// What a cell of the printed table says, by action.
using Outcomes = std::map<Action, std::string>;

class FaultCell : public Journey {
 public:
    FaultCell(const Target& target, const Failure& failure, Outcomes& outcomes)
        : target_(target), failure_(failure), outcomes_(outcomes) {}

    // Connect, tokens, snapshot and preview with the service failing from the start.
    void look_around(std::uint64_t seed);
    // A pay run during which it fails: from before the app fee on, or from the first holder on.
    void pay(std::uint64_t seed, Action from);
    void check_for_update(std::uint64_t seed);

 private:
    using Clock = std::chrono::steady_clock;

    struct Sent {
        std::string dest;
        std::int64_t sats = 0;
        std::string result;
        std::vector<sandbox::Transaction> fresh;  // what it put on the chain
    };

    void TestBody() override {}
    void begin(std::uint64_t seed);
    void start_failing();
    void start_failing_before(const char* what);
    void stop_failing();
    // Runs one action and looks at its transfers: each had a time-out and kept to it, and the service failed
    // in front of it at least once.
    template <typename Work>
    void act(Action action, Work work);

    HolderBoard board_of_the_world();
    std::string look_at_tokens();
    std::string look_at_snapshot();
    std::string look_at_preview();
    void expect_true_rows(const HolderBoard& board);
    std::string judge_run(const RoundState& frozen, const RoundMessage& message,
                          const std::vector<Sent>& sends, std::int64_t before);
    void judge_send(const Sent& sent);
    void judge_inputs(const sandbox::Transaction& tx);
    void expect_bounded(Clock::time_point start);
    void expect_false_refusals_undone();
    void expect_recovery();

    const Target& target_;
    const Failure& failure_;
    Outcomes& outcomes_;
    std::set<std::string> own_;
    std::size_t unknown_ = 0;  // payments on the chain that were told as failures
};

// The text of a failed send has one of the system's own forms.
bool is_own_send_text(const std::string& text);
