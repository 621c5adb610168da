#include "shell/shell.h"

#include <string>
#include <thread>

#include "shell/child_controls.h"

void apply_theme(Shell& shell, std::size_t index) {
    choose_palette(shell.theme, index);
    for (HWND window : {shell.main.load(), shell.history, shell.settings, shell.message, shell.vault})
        restyle_window(window, shell.theme.palette());
    shell.ui.theme = theme_name(shell.theme.index);
    save_settings(shell.ui);
}

static bool walk_main_window(HWND main, const MSG& message) {
    if (main == nullptr || message.message != WM_KEYDOWN || message.wParam != VK_TAB) return false;
    if (message.hwnd != main && !IsChild(main, message.hwnd)) return false;
    return focus_next_control(main, GetKeyState(VK_SHIFT) < 0);
}

bool offer_dialog_keys(const Shell& shell, MSG& message) {
    for (HWND window : {shell.history, shell.settings, shell.message, shell.vault})
        if (window != nullptr && IsDialogMessageW(window, &message)) return true;
    return walk_main_window(shell.main.load(), message);
}

RoundWorkers shell_workers(Shell& shell) {
    RoundWorkers workers;
    workers.start_worker = [](std::function<void()> job) noexcept { std::thread(std::move(job)).detach(); };
    workers.post = [&shell](std::unique_ptr<RoundMessage> message) {
        HWND window = shell.main.load();
        if (window == nullptr) return false;
        const LPARAM result = reinterpret_cast<LPARAM>(message.get());
        if (!PostMessageW(window, message->number, 0, result)) return false;
        // The window's procedure owns it now.
        static_cast<void>(message.release());
        return true;
    };
    return workers;
}
