#include "shell/settings_window.h"

#include "shell/child_controls.h"
#include "shell/message_window.h"
#include "shell/shell_texts.h"
#include "shell/window_class.h"

namespace {

enum SettingsControl : int {
    SETTINGS_THEME_LABEL = 1201,
    SETTINGS_THEME = 1202,
    SETTINGS_CLOSE = 1203,
    SETTINGS_TERMS = 1204,
};
constexpr const wchar_t* CLASS_NAME = L"QuorvelleBursariaSettings";

constexpr ChildPlan CONTROLS[] = {
    {SETTINGS_THEME_LABEL, ChildKind::Label, "Theme", 0, {16, 16, 120, 20}},
    {SETTINGS_THEME, ChildKind::Drop, "", 0, {16, 40, 280, 200}},
    {SETTINGS_TERMS, ChildKind::Button, "Terms of Use", 0, {16, 90, 160, 34}},
    {SETTINGS_CLOSE, ChildKind::Button, "Close", 0, {184, 90, 112, 34}},
};

struct SettingsRecord : WindowRecord {
    explicit SettingsRecord(Shell& of) : WindowRecord(of, of.settings) {}

    LRESULT on_message(UINT number, WPARAM first, LPARAM second);
    void on_create();
    void on_command(int id, int event);
};

void SettingsRecord::on_create() {
    apply_dark_frame(window, shell.theme.palette());
    create_children(shell, window, CONTROLS);
    HWND box = control(SETTINGS_THEME);
    for (std::size_t theme = 0; theme < THEME_COUNT; ++theme)
        ComboBox_AddString(box, wide_text(theme_label(theme)).c_str());
    ComboBox_SetCurSel(box, static_cast<int>(shell.theme.index));
}

void SettingsRecord::on_command(int id, int event) {
    if (id == SETTINGS_THEME && event == CBN_SELCHANGE) {
        const int chosen = ComboBox_GetCurSel(control(SETTINGS_THEME));
        if (chosen >= 0) apply_theme(shell, static_cast<std::size_t>(chosen));
    } else if (id == SETTINGS_TERMS && event == BN_CLICKED) {
        MessageWindow message;
        message.title = "Terms of Use";
        message.text = terms_text(settings());
        show_message_window(shell, message);
    } else if (id == IDOK) {
        press_focused_button(window);
    } else if ((id == SETTINGS_CLOSE || id == IDCANCEL) && event == BN_CLICKED) {
        DestroyWindow(window);
    }
}

LRESULT SettingsRecord::on_message(UINT number, WPARAM first, LPARAM second) {
    switch (number) {
        case WM_CREATE:
            on_create();
            return 0;
        case WM_COMMAND:
            on_command(LOWORD(first), HIWORD(first));
            return 0;
        default:
            break;
    }
    if (const auto answer = answer_look_message(shell, window, number, first, second)) return *answer;
    return DefWindowProcW(window, number, first, second);
}

}  // namespace

void open_settings_window(Shell& shell) {
    const WindowPlan plan{L"Settings", WS_CAPTION | WS_SYSMENU | WS_CLIPCHILDREN, 380, 220};
    if (shell.settings == nullptr)
        fill_slot(shell, shell.settings, CLASS_NAME, plan, std::make_unique<SettingsRecord>(shell));
    if (shell.settings != nullptr) raise_window(shell.settings);
}
