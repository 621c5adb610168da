// The real windows over a scripted wallet: the main window is open, workers run when the test says so, and
// messages are pumped by hand, so that nothing here waits for time to pass.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "shell/shell.h"
#include "tests/core/board_builder.h"
#include "tests/core/fake_wallet.h"
#include "tests/support/test_home.h"

struct OpenShell {
    TestHome home;
    FakeWallet wallet;
    Shell shell;
    std::deque<std::function<void()>> jobs;

    OpenShell();
    ~OpenShell();
    OpenShell(const OpenShell&) = delete;
    OpenShell& operator=(const OpenShell&) = delete;

    HWND main() const { return shell.main.load(); }
    HWND control(int id) const { return GetDlgItem(main(), id); }
    std::string text(int id) const { return utf8_text(window_text(control(id))); }
    std::string status() const { return text(1014); }

    // Handles what is in the queue, painting included.
    void pump();
    // Runs the workers that were started, and handles what they post, until nothing is left.
    void work();
    // As a button does it that is pressed; a disabled one does nothing. `of` is the main window if null.
    void press(int id, HWND of = nullptr);
    void command(int id, int event = 0, HWND of = nullptr);
    void take_snapshot(const HolderBoard& board);
    void freeze(const HolderBoard& board, const std::string& amount);

    // Called on this thread in the next loop of messages, also in one that a question runs.
    static void when_asked(std::function<void()> action);
};

std::string cell_of(HWND list, int row, int column);
std::vector<std::string> row_of(HWND list, int row);
std::string clipboard_text();
// What the screen shows at a point of a window's client area, as 0xRRGGBB.
Colour colour_at(HWND window, int x, int y);
std::vector<std::string> items_of(HWND box);
