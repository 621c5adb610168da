// A round with a window made of records, a scripted wallet, and workers that run when the test says so.
#pragma once

#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "core/round_controller.h"
#include "tests/core/board_builder.h"
#include "tests/core/fake_wallet.h"
#include "tests/support/test_home.h"

struct FakeRound {
    TestHome home;
    FakeWallet wallet;
    Round round;

    bool window_exists = true;
    std::map<int, bool> enabled;
    std::map<int, std::string> texts;
    std::vector<std::string> token_items;
    int selected_token = -1;
    std::vector<BoardLine> lines;
    std::vector<MessageWindow> messages;
    bool confirm_answer = true;
    std::function<void()> while_asking;
    std::string preview_text;
    bool dots_run = false;
    int history_reloads = 0;

    std::deque<std::function<void()>> jobs;
    std::deque<std::unique_ptr<RoundMessage>> posted;

    FakeRound() {
        round.wallet = wallet.functions();
        round.workers.start_worker = [this](std::function<void()> job) { jobs.push_back(std::move(job)); };
        round.workers.post = [this](std::unique_ptr<RoundMessage> message) {
            posted.push_back(std::move(message));
            return true;
        };
        fill_window();
    }

    // Runs the workers that have been started, then hands over what they posted; once.
    void work() {
        std::deque<std::function<void()>> started = std::move(jobs);
        jobs.clear();
        for (std::function<void()>& job : started) job();
        std::deque<std::unique_ptr<RoundMessage>> results = std::move(posted);
        posted.clear();
        for (std::unique_ptr<RoundMessage>& message : results) on_message(round, *message);
    }
    void work_until_idle() {
        while (!jobs.empty() || !posted.empty()) work();
    }

    void type_origin(const std::string& text) { texts[CONTROL_ORIGIN] = text; }
    void type_amount(const std::string& text) {
        texts[CONTROL_AMOUNT] = text;
        on_amount_changed(round);
    }
    void take_snapshot(const HolderBoard& board) {
        wallet.board = board;
        type_origin(board.token_id);
        on_snapshot(round);
        work_until_idle();
    }
    void freeze(const HolderBoard& board, const std::string& amount) {
        take_snapshot(board);
        type_amount(amount);
        on_preview(round);
    }
    const std::string& status() { return texts[CONTROL_STATUS]; }
    bool pay_enabled() { return enabled[CONTROL_PAY]; }

 private:
    void fill_window() {
        RoundWindow& window = round.window;
        window.exists = [this] { return window_exists; };
        window.has_control = [](int) { return true; };
        window.enable_control = [this](int control, bool on) { enabled[control] = on; };
        window.set_text = [this](int control, const std::string& text) { texts[control] = text; };
        window.read_edit = [this](int control, std::size_t most) { return texts[control].substr(0, most); };
        window.fill_token_box = [this](const std::vector<std::string>& items, int selected) {
            token_items = items;
            selected_token = selected;
        };
        window.selected_token = [this] { return selected_token; };
        window.fill_board = [this](const std::vector<BoardLine>& board_lines) { lines = board_lines; };
        window.run_dots_timer = [this](bool running) { dots_run = running; };
        window.show_message_window = [this](const MessageWindow& message) {
            messages.push_back(message);
            if (message.confirm && while_asking) while_asking();
            return message.confirm ? confirm_answer : true;
        };
        window.open_preview_window = [this](const std::string& text) { preview_text = text; };
        window.reload_history = [this] { ++history_reloads; };
    }
};
