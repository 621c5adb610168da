#include "console/status_line.h"

#include "base/text.h"

void StatusLine::show(const std::string& text) {
    const std::string line = text.substr(0, text.find('\n'));
    if (streams_.err_is_terminal) {
        // Blanks wipe what a longer line left behind.
        const std::size_t spare = open_width_ > line.size() ? open_width_ - line.size() : 0;
        streams_.err << '\r' << line << std::string(spare, ' ');
        open_width_ = line.size();
        if (!animated_) end_line();
        streams_.err.flush();
    } else if (text != shown_) {
        streams_.err << line << '\n' << std::flush;
    }
    shown_ = text;
}

void StatusLine::print(const std::string& text) {
    end_line();
    streams_.err << shown_text(text);
    if (!text.ends_with('\n')) streams_.err << '\n';
    streams_.err.flush();
}

void StatusLine::print_failure(const std::string& text) {
    const bool said = shown_ == text && text.find('\n') == std::string::npos;
    if (!said) print(text);
}

void StatusLine::end_line() {
    if (open_width_ > 0) streams_.err << '\n';
    open_width_ = 0;
}
