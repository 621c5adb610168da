// What a round asks of a screen. The Windows program, the console program and the tests each supply one.
// Every function is set and is called on the window's thread only. All text is UTF-8 with lone line feeds; a
// screen that needs another form converts it.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

// One line of the board list, a text for each column.
struct BoardLine {
    std::string holder;
    std::string lots;
    std::string pay_to;
    std::string role;
    std::string received;
    bool excluded = false;
};

// The one window for text to read or to confirm.
struct MessageWindow {
    std::string title;
    std::string text;
    std::vector<std::string> txids;  // shown as links to the transactions' pages
    bool confirm = false;            // asks, and waits for the answer
    std::string primary_label;       // of the button that confirms
};

struct RoundWindow {
    // The main window is there, and takes posted messages.
    std::function<bool()> exists;

    std::function<bool(int control)> has_control;
    std::function<void(int control, bool enabled)> enable_control;
    std::function<void(int control, const std::string& text)> set_text;
    // The text of an edit, cut at this many UTF-16 units; empty for a missing control.
    std::function<std::string(int control, std::size_t most_characters)> read_edit;

    // Replaces the items of the token box; `selected` is -1 for none.
    std::function<void(const std::vector<std::string>& items, int selected)> fill_token_box;
    // The index of the selected item, -1 for none.
    std::function<int()> selected_token;
    // Replaces the lines of the board list.
    std::function<void(const std::vector<BoardLine>& lines)> fill_board;

    // Starts the timer of the running dots (period DOTS_PERIOD_MS, each tick an on_dots_tick), or kills it.
    std::function<void(bool running)> run_dots_timer;

    // True at once, or with `confirm` true only if the primary button was pressed.
    std::function<bool(const MessageWindow& message)> show_message_window;
    // Shows the frozen list with this text.
    std::function<void(const std::string& text)> open_preview_window;
    // Reads the ledger again for the history window, if that is open.
    std::function<void()> reload_history;
};

inline constexpr int DOTS_TIMER_ID = 7;
inline constexpr int DOTS_PERIOD_MS = 400;
