#include "shell/round_screen.h"

#include "base/text.h"
#include "shell/board_list.h"
#include "shell/history_window.h"
#include "shell/message_window.h"
#include "shell/preview_window.h"
#include "shell/shell_controls.h"

namespace {

HWND control(const Shell& shell, int id) {
    return GetDlgItem(shell.main.load(), id);
}

std::string read_edit(HWND edit, std::size_t most_characters) {
    return edit == nullptr ? "" : utf8_text(window_text(edit).substr(0, most_characters));
}

void set_text(const Shell& shell, int id, const std::string& text) {
    HWND window = control(shell, id);
    if (window == nullptr) return;
    // A text that stands already is not set again: an edit would report a change, a label would flicker.
    if (utf8_text(window_text(window)) != text) set_window_text(window, text);
    InvalidateRect(window, nullptr, TRUE);
}

void fill_token_box(HWND box, const std::vector<std::string>& items, int selected) {
    ComboBox_ResetContent(box);
    for (std::size_t i = 0; i < items.size(); ++i) {
        const int place = ComboBox_AddString(box, wide_text(shown_text(items[i])).c_str());
        if (place >= 0) ComboBox_SetItemData(box, place, static_cast<LPARAM>(i));
    }
    if (selected >= 0) ComboBox_SetCurSel(box, selected);
}

int selected_token(HWND box) {
    const int place = ComboBox_GetCurSel(box);
    return place < 0 ? -1 : static_cast<int>(ComboBox_GetItemData(box, place));
}

void run_dots_timer(HWND window, bool running) {
    if (running)
        SetTimer(window, DOTS_TIMER_ID, DOTS_PERIOD_MS, nullptr);
    else
        KillTimer(window, DOTS_TIMER_ID);
}

}  // namespace

RoundWindow round_screen(Shell& shell) {
    RoundWindow screen;
    screen.exists = [&shell] { return shell.main.load() != nullptr; };
    screen.has_control = [&shell](int id) { return control(shell, id) != nullptr; };
    screen.enable_control = [&shell](int id, bool enabled) { EnableWindow(control(shell, id), enabled); };
    screen.set_text = [&shell](int id, const std::string& text) { set_text(shell, id, text); };
    screen.read_edit = [&shell](int id, std::size_t most) { return read_edit(control(shell, id), most); };
    screen.fill_token_box = [&shell](const std::vector<std::string>& items, int selected) {
        fill_token_box(control(shell, CONTROL_TOKEN_BOX), items, selected);
    };
    screen.selected_token = [&shell] { return selected_token(control(shell, CONTROL_TOKEN_BOX)); };
    screen.fill_board = [&shell](const std::vector<BoardLine>& lines) { fill_board_list(shell, lines); };
    screen.run_dots_timer = [&shell](bool running) { run_dots_timer(shell.main.load(), running); };
    screen.show_message_window = [&shell](const MessageWindow& message) {
        return show_message_window(shell, message);
    };
    screen.open_preview_window = [&shell](const std::string& text) { open_preview_window(shell, text); };
    screen.reload_history = [&shell] { reload_history(shell); };
    return screen;
}
