// The status line of a round on standard error: on a terminal it is rewritten in place while its dots run,
// elsewhere each line is written once.
#pragma once

#include <string>

#include "console/console_streams.h"

class StatusLine {
 public:
    explicit StatusLine(ConsoleStreams streams) : streams_(streams) {}

    void set_animated(bool animated) { animated_ = animated; }
    // Shows the first line of the text.
    void show(const std::string& text);
    // Writes text on lines of its own.
    void print(const std::string& text);
    // Writes a failure, unless the status line says it already.
    void print_failure(const std::string& text);
    // Ends a line that is still being rewritten.
    void end_line();

 private:
    ConsoleStreams streams_;
    bool animated_ = false;
    std::size_t open_width_ = 0;  // of a line that has not been ended yet
    std::string shown_;
};
