// A main window without a screen: what the round shows is kept here for the command to read, and the status
// line goes to standard error. On the main thread only.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "console/console_streams.h"
#include "console/status_line.h"
#include "core/round_window.h"

struct ConsoleWindow {
    explicit ConsoleWindow(ConsoleStreams console_streams)
        : streams(console_streams), status_line(console_streams) {}

    ConsoleStreams streams;
    StatusLine status_line;
    bool assume_yes = false;

    std::map<int, bool> enabled;       // controls that the round enabled or disabled
    std::map<int, std::string> edits;  // what stands in the amount and the origin edit
    std::string status;                // the text of the status line
    std::string message;               // the text of the last message window that asked nothing
    std::string preview_text;          // the text of the preview window
    bool dots_run = false;
};

// The functions that a round takes; valid as long as the window lives.
RoundWindow round_window_of(ConsoleWindow& window);
