#include "shell/message_window.h"

#include <algorithm>

#include "platform/program.h"
#include "shell/child_controls.h"
#include "shell/shell_texts.h"
#include "shell/window_class.h"
#include "shell/window_layouts.h"

namespace {

enum MessageControl : int {
    MESSAGE_TEXT = 1301,
    MESSAGE_CLOSE = 1302,
    MESSAGE_COPY = 1303,
    MESSAGE_PRIMARY = 1304,
    MESSAGE_FIRST_LINK = 1400,
};
constexpr const wchar_t* CLASS_NAME = L"QuorvelleBursariaNote";

struct MessageRecord : WindowRecord {
    MessageWindow message;
    bool* confirmed;  // null without confirm mode

    MessageRecord(Shell& of, MessageWindow shown, bool* answer)
        : WindowRecord(of, of.message), message(std::move(shown)), confirmed(answer) {}

    std::size_t link_count() const { return std::min(message.txids.size(), MOST_LINKS); }
    LRESULT on_message(UINT number, WPARAM first, LPARAM second);
    void on_create();
    void on_size();
    void on_command(int id);
};

void MessageRecord::on_create() {
    apply_dark_frame(window, shell.theme.palette());
    const auto add = [this](int id, ChildKind kind, const std::string& text, DWORD style = 0) {
        return create_child(shell, window, {id, kind, text.c_str(), style});
    };
    HWND text = add(MESSAGE_TEXT, ChildKind::Text, "", ES_READONLY);
    SetWindowTextW(text, with_edit_line_ends(message.text).c_str());
    for (std::size_t i = 0; i < link_count(); ++i)
        add(MESSAGE_FIRST_LINK + static_cast<int>(i), ChildKind::Button, "WhatsOnChain  " + message.txids[i]);
    add(MESSAGE_COPY, ChildKind::Button, "Copy");
    if (confirmed != nullptr)
        add(MESSAGE_PRIMARY, ChildKind::Button,
            message.primary_label.empty() ? "Pay" : message.primary_label);
    add(MESSAGE_CLOSE, ChildKind::Button, confirmed != nullptr ? "Cancel" : "Close");
    on_size();
}

void MessageRecord::on_size() {
    const SIZE size = client_size(window);
    const MessageLayout layout = layout_message_window(size.cx, size.cy, link_count(), confirmed != nullptr);
    std::vector<PlacedControl> places = {{MESSAGE_TEXT, layout.text},
                                         {MESSAGE_COPY, layout.copy},
                                         {MESSAGE_PRIMARY, layout.primary},
                                         {MESSAGE_CLOSE, layout.close}};
    for (std::size_t i = 0; i < link_count(); ++i)
        places.push_back({MESSAGE_FIRST_LINK + static_cast<int>(i), layout.links[i]});
    place_children(window, places);
}

void MessageRecord::on_command(int id) {
    const int link = id - MESSAGE_FIRST_LINK;
    if (id == IDOK) {
        press_focused_button(window);
    } else if (link >= 0 && static_cast<std::size_t>(link) < link_count()) {
        open_tx_page(message.txids[static_cast<std::size_t>(link)]);
    } else if (id == MESSAGE_COPY) {
        copy_text(window, with_edit_line_ends(message.text));
    } else if (id == MESSAGE_PRIMARY && confirmed != nullptr) {
        *confirmed = true;
        DestroyWindow(window);
    } else if (id == MESSAGE_CLOSE || id == IDCANCEL) {
        DestroyWindow(window);
    }
}

LRESULT MessageRecord::on_message(UINT number, WPARAM first, LPARAM second) {
    switch (number) {
        case WM_CREATE:
            on_create();
            return 0;
        case WM_SIZE:
            on_size();
            return 0;
        case WM_GETMINMAXINFO:
            hold_smallest_size(second, 520, 360);
            return 0;
        case WM_COMMAND:
            if (HIWORD(first) == BN_CLICKED) on_command(LOWORD(first));
            return 0;
        default:
            break;
    }
    if (const auto answer = answer_look_message(shell, window, number, first, second)) return *answer;
    return DefWindowProcW(window, number, first, second);
}

// Until the window has gone. The end of the program is passed on to the outer loop.
void run_until_gone(HWND window) {
    MSG message{};
    while (IsWindow(window)) {
        const BOOL got = GetMessageW(&message, nullptr, 0, 0);
        if (got <= 0) {
            if (got == 0) PostQuitMessage(static_cast<int>(message.wParam));
            return;
        }
        if (IsDialogMessageW(window, &message)) continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

}  // namespace

// A long list of payments makes it as high as the screen; its buttons have to be on it.
static void keep_on_screen(HWND window) {
    RECT place{};
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    if (!GetWindowRect(window, &place) ||
        !GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &monitor))
        return;
    const RECT& screen = monitor.rcWork;
    if (place.bottom <= screen.bottom) return;
    const int height = std::min<int>(place.bottom - place.top, screen.bottom - screen.top);
    SetWindowPos(window, nullptr, place.left, screen.bottom - height, place.right - place.left, height,
                 SWP_NOZORDER | SWP_NOACTIVATE);
}

bool show_message_window(Shell& shell, const MessageWindow& message) {
    if (shell.message != nullptr) DestroyWindow(shell.message);
    HWND owner = shell.main.load();
    bool confirmed = false;
    const std::wstring title = wide_text(message.title);
    const WindowPlan plan{title.c_str(), WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, 720,
                          message_window_height(message.txids.size())};
    HWND window =
        fill_slot(shell, shell.message, CLASS_NAME, plan,
                  std::make_unique<MessageRecord>(shell, message, message.confirm ? &confirmed : nullptr));
    if (window == nullptr) return !message.confirm;
    keep_on_screen(window);
    raise_window(window);
    if (!message.confirm) return true;
    EnableWindow(owner, FALSE);
    run_until_gone(window);
    EnableWindow(owner, TRUE);
    SetForegroundWindow(owner);
    return confirmed;
}

void open_tx_page(const std::string& txid) {
    const std::string page = tx_page(txid, settings());
    if (!page.empty()) open_page(page);
}
