#include "tests/windows/open_shell.h"

#include <gtest/gtest.h>

// After windows.h, which they need.
#include <objidl.h>
// After objidl.h, which it needs.
#include <gdiplus.h>

#include "core/round_controller.h"
#include "shell/main_window.h"
#include "shell/round_screen.h"

namespace {

std::deque<std::function<void()>> asked;

void CALLBACK answer(HWND, UINT, UINT_PTR timer, DWORD) {
    KillTimer(nullptr, timer);
    if (asked.empty()) return;
    const std::function<void()> action = std::move(asked.front());
    asked.pop_front();
    action();
}

void start_drawing() {
    static const bool started = [] {
        const INITCOMMONCONTROLSEX controls{sizeof(INITCOMMONCONTROLSEX),
                                            ICC_LISTVIEW_CLASSES | ICC_STANDARD_CLASSES};
        InitCommonControlsEx(&controls);
        static ULONG_PTR gdiplus = 0;
        const Gdiplus::GdiplusStartupInput input;
        return Gdiplus::GdiplusStartup(&gdiplus, &input, nullptr) == Gdiplus::Ok;
    }();
    ASSERT_TRUE(started);
}

}  // namespace

OpenShell::OpenShell() {
    start_drawing();
    wallet.connected = false;
    shell.instance = GetModuleHandleW(nullptr);
    shell.round.wallet = wallet.functions();
    shell.round.workers = shell_workers(shell);
    shell.round.workers.start_worker = [this](std::function<void()> job) { jobs.push_back(std::move(job)); };
    shell.round.window = round_screen(shell);
    create_main_window(shell);
    ShowWindow(main(), SW_SHOWNORMAL);
    // The first worker asks the download page for the newest version; nobody does that here.
    jobs.clear();
    pump();
}

OpenShell::~OpenShell() {
    jobs.clear();
    if (main() != nullptr) DestroyWindow(main());
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
}

void OpenShell::pump() {
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (offer_dialog_keys(shell, message)) continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

void OpenShell::work() {
    while (!jobs.empty()) {
        const std::function<void()> job = std::move(jobs.front());
        jobs.pop_front();
        job();
        pump();
    }
}

void OpenShell::press(int id, HWND of) {
    HWND window = of != nullptr ? of : main();
    HWND button = GetDlgItem(window, id);
    ASSERT_NE(button, nullptr) << id;
    if (IsWindowEnabled(button)) command(id, BN_CLICKED, window);
    pump();
}

void OpenShell::command(int id, int event, HWND of) {
    HWND window = of != nullptr ? of : main();
    SendMessageW(window, WM_COMMAND, MAKEWPARAM(id, event), reinterpret_cast<LPARAM>(GetDlgItem(window, id)));
    pump();
}

void OpenShell::take_snapshot(const HolderBoard& board) {
    wallet.connected = true;
    wallet.board = board;
    set_window_text(control(CONTROL_ORIGIN), board.token_id);
    press(CONTROL_SNAPSHOT);
    work();
}

void OpenShell::freeze(const HolderBoard& board, const std::string& amount) {
    take_snapshot(board);
    set_window_text(control(CONTROL_AMOUNT), amount);
    press(CONTROL_PREVIEW);
}

void OpenShell::when_asked(std::function<void()> action) {
    asked.push_back(std::move(action));
    SetTimer(nullptr, 0, 50, answer);
}

std::string cell_of(HWND list, int row, int column) {
    std::wstring text(512, L'\0');
    LVITEMW item{};
    item.iSubItem = column;
    item.pszText = text.data();
    item.cchTextMax = 512;
    text.resize(static_cast<std::size_t>(
        SendMessageW(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item))));
    return utf8_text(text);
}

std::vector<std::string> row_of(HWND list, int row) {
    std::vector<std::string> cells;
    const int columns = Header_GetItemCount(ListView_GetHeader(list));
    for (int column = 0; column < columns; ++column) cells.push_back(cell_of(list, row, column));
    return cells;
}

std::string clipboard_text() {
    if (!OpenClipboard(nullptr)) return "(the clipboard does not open)";
    std::string text;
    if (HANDLE memory = GetClipboardData(CF_UNICODETEXT)) {
        text = utf8_text(static_cast<const wchar_t*>(GlobalLock(memory)));
        GlobalUnlock(memory);
    }
    CloseClipboard();
    return text;
}

Colour colour_at(HWND window, int x, int y) {
    UpdateWindow(window);
    HDC dc = GetDC(window);
    const COLORREF colour = GetPixel(dc, x, y);
    ReleaseDC(window, dc);
    return static_cast<Colour>(GetRValue(colour) << 16 | GetGValue(colour) << 8 | GetBValue(colour));
}

std::vector<std::string> items_of(HWND box) {
    std::vector<std::string> items;
    for (int i = 0; i < ComboBox_GetCount(box); ++i) {
        std::wstring text(static_cast<std::size_t>(ComboBox_GetLBTextLen(box, i)) + 1, L'\0');
        text.resize(static_cast<std::size_t>(ComboBox_GetLBText(box, i, text.data())));
        items.push_back(utf8_text(text));
    }
    return items;
}
