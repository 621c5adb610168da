#include "platform/program.h"

#include "platform/win32/wide.h"

// After windows.h, which it needs.
#include <shellapi.h>

// Runs before main: from then on a library that is loaded by name comes from the system's folder only, never
// from the folder of the program or the current one, where anybody may have put a file of that name.
[[maybe_unused]] static const BOOL libraries_from_system =
    SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);

std::string program_folder() {
    std::wstring path(32768, L'\0');
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    path.resize(length < path.size() ? length : 0);
    const std::size_t cut = path.find_last_of(L"\\/");
    const std::string folder = cut == std::wstring::npos ? "" : utf8_from_wide(path.substr(0, cut));
    return folder.empty() ? "." : folder;
}

bool bring_window_forward(const std::string& window_class) {
    const HWND window = FindWindowW(wide_from_utf8(window_class).c_str(), nullptr);
    if (!window) return false;
    if (IsIconic(window)) ShowWindow(window, SW_RESTORE);
    SetForegroundWindow(window);
    return true;
}

static bool shell_open(const std::string& what, const std::string& working_folder) {
    const std::wstring folder = wide_from_utf8(working_folder);
    const HINSTANCE result = ShellExecuteW(nullptr, L"open", wide_from_utf8(what).c_str(), nullptr,
                                           folder.empty() ? nullptr : folder.c_str(), SW_SHOWNORMAL);
    return reinterpret_cast<INT_PTR>(result) > 32;
}

bool start_program(const std::string& path, const std::string& working_folder) {
    return shell_open(path, working_folder);
}

bool open_page(const std::string& url) {
    return shell_open(url, "");
}

bool stdout_is_terminal() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) != 0;
}
