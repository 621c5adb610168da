#include "console/console_window.h"

#include "base/text.h"
#include "core/round_state.h"

namespace {

// As an edit hands it out: text that is not well formed reads as empty.
std::string cut_at_characters(const std::string& text, std::size_t most_characters) {
    return utf8_from_utf16(utf16_from_utf8(text).substr(0, most_characters));
}

void set_text(ConsoleWindow& window, int control, const std::string& text) {
    if (control == CONTROL_ORIGIN || control == CONTROL_AMOUNT) {
        window.edits[control] = text;
    } else if (control == CONTROL_STATUS) {
        window.status = text;
        window.status_line.show(text);
    }
}

bool ask(ConsoleWindow& window, const MessageWindow& message) {
    if (window.assume_yes) return true;
    window.status_line.print(window.preview_text);
    window.status_line.print(message.text);
    window.streams.err << message.primary_label << "? [y/N] " << std::flush;
    std::string answer;
    std::getline(window.streams.in, answer);
    answer = ascii_lower(trim_white(answer));
    return answer == "y" || answer == "yes";
}

bool show_message_window(ConsoleWindow& window, const MessageWindow& message) {
    if (message.confirm) return ask(window, message);
    window.message = message.text;
    return true;
}

}  // namespace

RoundWindow round_window_of(ConsoleWindow& window) {
    RoundWindow functions;
    functions.exists = [] { return true; };
    functions.has_control = [](int) { return true; };
    functions.enable_control = [&window](int control, bool enabled) { window.enabled[control] = enabled; };
    functions.set_text = [&window](int control, const std::string& text) { set_text(window, control, text); };
    functions.read_edit = [&window](int control, std::size_t most_characters) {
        return cut_at_characters(window.edits[control], most_characters);
    };
    functions.fill_token_box = [](const std::vector<std::string>&, int) {};
    functions.selected_token = [] { return -1; };
    functions.fill_board = [](const std::vector<BoardLine>&) {};
    functions.run_dots_timer = [&window](bool running) {
        window.dots_run = running && window.streams.err_is_terminal;
        window.status_line.set_animated(running);
    };
    functions.show_message_window = [&window](const MessageWindow& message) {
        return show_message_window(window, message);
    };
    functions.open_preview_window = [&window](const std::string& text) { window.preview_text = text; };
    functions.reload_history = [] {};
    return functions;
}
