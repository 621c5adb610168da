#include "shell/settings_window.h"

#include "shell/message_window.h"
#include "shell/painted_button.h"
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

struct SettingsRecord {
    Shell& shell;
    HWND window = nullptr;

    explicit SettingsRecord(Shell& of) : shell(of) {}
    ~SettingsRecord() {
        if (shell.settings == window) shell.settings = nullptr;
    }
    SettingsRecord(const SettingsRecord&) = delete;
    SettingsRecord& operator=(const SettingsRecord&) = delete;

    LRESULT on_message(UINT number, WPARAM first, LPARAM second);
    void on_create();
    void on_command(int id, int event);
};

HWND add_child(const SettingsRecord& record, const wchar_t* kind, const wchar_t* text, DWORD style, int id,
               const Box& box) {
    HWND child = CreateWindowExW(0, kind, text, WS_CHILD | WS_VISIBLE | style, box.x, box.y, box.width,
                                 box.height, record.window, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                                 record.shell.instance, nullptr);
    SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(record.shell.theme.body_font.get()), TRUE);
    return child;
}

void SettingsRecord::on_create() {
    apply_dark_frame(window, shell.theme.palette());
    add_child(*this, WC_STATICW, L"Theme", 0, SETTINGS_THEME_LABEL, {16, 16, 120, 20});
    HWND box = add_child(*this, WC_COMBOBOXW, L"", CBS_DROPDOWNLIST | WS_VSCROLL | WS_TABSTOP, SETTINGS_THEME,
                         {16, 40, 280, 200});
    strip_visual_style(box);
    for (std::size_t theme = 0; theme < THEME_COUNT; ++theme)
        ComboBox_AddString(box, wide_text(theme_label(theme)).c_str());
    ComboBox_SetCurSel(box, static_cast<int>(shell.theme.index));
    create_painted_button(shell, window, SETTINGS_TERMS, "Terms of Use", {16, 90, 160, 34});
    create_painted_button(shell, window, SETTINGS_CLOSE, "Close", {184, 90, 112, 34});
}

void SettingsRecord::on_command(int id, int event) {
    if (id == SETTINGS_THEME && event == CBN_SELCHANGE) {
        const int chosen = ComboBox_GetCurSel(GetDlgItem(window, SETTINGS_THEME));
        if (chosen >= 0) apply_theme(shell, static_cast<std::size_t>(chosen));
    } else if (id == SETTINGS_TERMS && event == BN_CLICKED) {
        MessageWindow message;
        message.title = "Terms of Use";
        message.text = terms_text(settings());
        show_message_window(shell, message);
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
        case WM_DRAWITEM:
            draw_painted_button(shell, *reinterpret_cast<const DRAWITEMSTRUCT*>(second));
            return TRUE;
        case WM_CTLCOLOREDIT:
        case WM_CTLCOLORLISTBOX:
            return panel_colours(shell.theme, reinterpret_cast<HDC>(first));
        case WM_CTLCOLORSTATIC:
            return static_colours(reinterpret_cast<HDC>(first), shell.theme.palette().muted,
                                  shell.theme.window_brush.get());
        case WM_ERASEBKGND:
            return erase_with(window, first, shell.theme.window_brush.get());
        default:
            return DefWindowProcW(window, number, first, second);
    }
}

}  // namespace

void open_settings_window(Shell& shell) {
    if (shell.settings == nullptr) {
        if (!register_class(shell, CLASS_NAME, record_procedure<SettingsRecord>, nullptr)) return;
        const WindowPlan plan{L"Settings", WS_CAPTION | WS_SYSMENU | WS_CLIPCHILDREN, 380, 220};
        shell.settings = create_record_window(shell, CLASS_NAME, plan, shell.main.load(),
                                              std::make_unique<SettingsRecord>(shell));
    }
    ShowWindow(shell.settings, SW_SHOW);
    SetForegroundWindow(shell.settings);
}
