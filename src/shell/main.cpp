#include <objidl.h>
// After objidl.h, which it needs.
#include <gdiplus.h>

#include <cstdlib>

#include "clasp/qv_clasp_wallet.h"
#include "core/round_controller.h"
#include "platform/program.h"
#include "program/wallet_calls.h"
#include "shell/main_window.h"
#include "shell/round_screen.h"

namespace {

enum Resource : int {
    RESOURCE_ICON = 101,
    RESOURCE_BANNER = 103,
    RESOURCE_SEAL = 104,
};

void load_icons(Shell& shell) {
    const auto load = [&shell](int size, UINT flags) {
        return static_cast<HICON>(
            LoadImageW(shell.instance, MAKEINTRESOURCEW(RESOURCE_ICON), IMAGE_ICON, size, size, flags));
    };
    shell.kept_icon = load(48, LR_DEFAULTCOLOR);
    shell.big_icon = load(32, LR_DEFAULTCOLOR);
    if (shell.big_icon == nullptr) shell.big_icon = load(0, LR_DEFAULTSIZE | LR_SHARED);
    if (shell.big_icon == nullptr)
        shell.big_icon = LoadIconW(nullptr, reinterpret_cast<LPCWSTR>(IDI_APPLICATION));
    shell.small_icon = load(16, LR_DEFAULTCOLOR);
}

int run_message_loop(const Shell& shell) {
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (offer_dialog_keys(shell, message)) continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return static_cast<int>(message.wParam);
}

int run_shell(Shell& shell, int show) {
    shell.banner = load_picture(shell.instance, RESOURCE_BANNER);
    shell.seal = load_picture(shell.instance, RESOURCE_SEAL);
    load_icons(shell);
    HWND window = create_main_window(shell);
    if (window == nullptr) return 1;
    ShowWindow(window, show);
    UpdateWindow(window);
    return run_message_loop(shell);
}

// Workers that still run end here, in the middle of whatever they do. An ordinary return would first destroy
// what the libraries hold, beside the workers that use it: that can hang until the last of them has timed
// out.
[[noreturn]] void end_process(int exit_code) {
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(exit_code));
    std::abort();
}

}  // namespace

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR, int show) {
    const std::string folder = program_folder();
    if (folder != ".") SetCurrentDirectoryW(wide_text(folder).c_str());
    if (bring_window_forward(utf8_text(MAIN_CLASS))) return 0;
    qv_clasp_init(folder, "The Bursaria");

    // Never destroyed: a worker that outlives the window still asks it for a window to post to.
    Shell& shell = *new Shell;
    shell.instance = instance;
    load_settings(shell.ui);
    shell.theme.index = theme_from_name(shell.ui.theme);
    // What is saved is the look in use, whatever the file called it.
    shell.ui.theme = theme_name(shell.theme.index);
    qv_clasp_http_start();
    shell.round.wallet = library_wallet();
    shell.round.workers = shell_workers(shell);
    shell.round.window = round_screen(shell);
    qv_clasp_set_log_sink(status_line_sink(shell.round.workers));

    const INITCOMMONCONTROLSEX controls{sizeof(INITCOMMONCONTROLSEX),
                                        ICC_LISTVIEW_CLASSES | ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&controls);
    ULONG_PTR gdiplus = 0;
    const Gdiplus::GdiplusStartupInput input;
    Gdiplus::GdiplusStartup(&gdiplus, &input, nullptr);
    const int exit_code = run_shell(shell, show);
    qv_clasp_http_stop();
    Gdiplus::GdiplusShutdown(gdiplus);
    end_process(exit_code);
}
