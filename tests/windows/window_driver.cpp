// Drives windows of another process, as a person would: presses their buttons, types into their edits, reads
// their texts. For scripts and screenshots.
//
//   window-driver STEPS        a file with a step a line, words apart by blanks, the last argument to the end
//
//   folder PATH                LOCALAPPDATA of the programs that are started
//   start PROGRAM
//   run SECONDS STATUS PROGRAM       starts it, waits for its end and compares the exit status
//   window CLASS SECONDS       waits for a window of this class; the steps after it are about it
//   gone SECONDS               waits until that window is no more
//   ended SECONDS              waits until the program of that window has ended
//   enabled ID SECONDS         waits until a control is enabled
//   says ID SECONDS TEXT       waits until a control's text contains TEXT
//   click ID | command ID | text ID TEXT | choose ID INDEX | key VIRTUAL_KEY | close | size WIDTH HEIGHT
//   menu ID ROW INDEX          a right click on a row of a list, and the entry of the menu that comes
//   read ID | rows ID | clipboard       prints a text, the cells of a list (apart by tabs), the clipboard
//   bounds                     brings the window to the front and prints its place as WIDTHxHEIGHT+X+Y
//   iconic | minimise | pause MILLISECONDS
//
// Ends with 1 at the first step that does not succeed, with its line on standard error.
#include <windows.h>
// After windows.h, which it needs.
#include <commctrl.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "platform/win32/wide.h"

namespace {

constexpr DWORD MOST_MESSAGE_MS = 30'000;
HWND target = nullptr;
HANDLE target_program = nullptr;

struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Words {
    std::istringstream line;
    explicit Words(const std::string& text) : line(text) {}
    std::string word() {
        std::string next;
        if (!(line >> next)) throw Failure("a word is missing");
        return next;
    }
    int number() { return std::stoi(word()); }
    std::string rest() {
        std::string text;
        std::getline(line >> std::ws, text);
        return text;
    }
};

void wait_until(int seconds, const std::string& what, const std::function<bool()>& holds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    while (!holds()) {
        if (std::chrono::steady_clock::now() > end) throw Failure("not within the time: " + what);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

LRESULT ask(HWND window, UINT message, WPARAM first, LPARAM second) {
    DWORD_PTR answer = 0;
    if (!SendMessageTimeoutW(window, message, first, second, SMTO_ABORTIFHUNG, MOST_MESSAGE_MS, &answer))
        throw Failure("the window does not answer");
    return static_cast<LRESULT>(answer);
}

HWND control(int id) {
    HWND found = GetDlgItem(target, id);
    if (found == nullptr) throw Failure("there is no control " + std::to_string(id));
    return found;
}

std::string text_of(HWND window) {
    std::wstring text(static_cast<std::size_t>(ask(window, WM_GETTEXTLENGTH, 0, 0)) + 1, L'\0');
    text.resize(static_cast<std::size_t>(
        ask(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
    return utf8_from_wide(text);
}

void notify_parent(int id, int event) {
    PostMessageW(target, WM_COMMAND, MAKEWPARAM(id, event), reinterpret_cast<LPARAM>(control(id)));
}

// Memory of the process that a window belongs to, for messages that carry an address.
struct RemoteMemory {
    HANDLE process = nullptr;
    void* place = nullptr;
    explicit RemoteMemory(HWND window) {
        DWORD id = 0;
        GetWindowThreadProcessId(window, &id);
        process = OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, id);
        place = VirtualAllocEx(process, nullptr, 65536, MEM_COMMIT, PAGE_READWRITE);
        if (place == nullptr) throw Failure("no memory in the other process");
    }
    ~RemoteMemory() {
        VirtualFreeEx(process, place, 0, MEM_RELEASE);
        CloseHandle(process);
    }
    RemoteMemory(const RemoteMemory&) = delete;
    RemoteMemory& operator=(const RemoteMemory&) = delete;
    void write(const void* from, std::size_t size) const {
        WriteProcessMemory(process, place, from, size, nullptr);
    }
    void read(std::size_t offset, void* to, std::size_t size) const {
        ReadProcessMemory(process, static_cast<char*>(place) + offset, to, size, nullptr);
    }
};

std::string cell(HWND list, const RemoteMemory& memory, int row, int column) {
    constexpr int MOST = 4000;
    LVITEMW item{};
    item.iSubItem = column;
    item.pszText = reinterpret_cast<wchar_t*>(static_cast<char*>(memory.place) + 1024);
    item.cchTextMax = MOST;
    memory.write(&item, sizeof(item));
    const LRESULT length =
        ask(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(memory.place));
    std::wstring text(static_cast<std::size_t>(length), L'\0');
    memory.read(1024, text.data(), text.size() * sizeof(wchar_t));
    return utf8_from_wide(text);
}

void print_rows(HWND list) {
    const RemoteMemory memory(list);
    const HWND header = reinterpret_cast<HWND>(ask(list, LVM_GETHEADER, 0, 0));
    const LRESULT columns = ask(header, HDM_GETITEMCOUNT, 0, 0);
    const LRESULT rows = ask(list, LVM_GETITEMCOUNT, 0, 0);
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column)
            std::printf("%s%s", cell(list, memory, row, column).c_str(), column + 1 < columns ? "\t" : "\n");
}

void choose_from_menu(int id, int row, int index) {
    HWND list = control(id);
    ask(list, LVM_ENSUREVISIBLE, static_cast<WPARAM>(row), FALSE);
    RECT place{LVIR_BOUNDS, 0, 0, 0};
    const RemoteMemory memory(list);
    memory.write(&place, sizeof(place));
    ask(list, LVM_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(memory.place));
    memory.read(0, &place, sizeof(place));
    const LPARAM point = MAKELPARAM(place.left + 20, (place.top + place.bottom) / 2);
    PostMessageW(list, WM_RBUTTONDOWN, MK_RBUTTON, point);
    PostMessageW(list, WM_RBUTTONUP, 0, point);
    HWND menu = nullptr;
    wait_until(20, "the menu", [&menu] {
        menu = FindWindowW(L"#32768", nullptr);
        return menu != nullptr && IsWindowVisible(menu);
    });
    for (int step = 0; step <= index; ++step) PostMessageW(menu, WM_KEYDOWN, VK_DOWN, 0);
    PostMessageW(menu, WM_KEYDOWN, VK_RETURN, 0);
    wait_until(20, "the end of the menu", [menu] { return !IsWindow(menu) || !IsWindowVisible(menu); });
}

void print_clipboard() {
    if (!OpenClipboard(nullptr)) throw Failure("the clipboard does not open");
    const auto* text = static_cast<const wchar_t*>(GlobalLock(GetClipboardData(CF_UNICODETEXT)));
    if (text != nullptr) std::printf("%s\n", utf8_from_wide(text).c_str());
    CloseClipboard();
}

HANDLE start(const std::string& program) {
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION started{};
    if (!CreateProcessW(wide_from_utf8(program).c_str(), nullptr, nullptr, nullptr, FALSE, 0, nullptr,
                        nullptr, &startup, &started))
        throw Failure("the program does not start");
    CloseHandle(started.hThread);
    return started.hProcess;
}

DWORD wait_for_end(HANDLE program, int seconds) {
    if (WaitForSingleObject(program, static_cast<DWORD>(seconds) * 1000) != WAIT_OBJECT_0)
        throw Failure("the program has not ended");
    DWORD status = 0;
    GetExitCodeProcess(program, &status);
    return status;
}

void run(Words& words) {
    const int seconds = words.number();
    const auto expected = static_cast<DWORD>(words.number());
    const DWORD status = wait_for_end(start(words.rest()), seconds);
    if (status != expected) throw Failure("the program ended with " + std::to_string(status));
}

void find_window(Words& words) {
    const std::wstring name = wide_from_utf8(words.word());
    wait_until(words.number(), "the window", [&name] {
        target = FindWindowW(name.c_str(), nullptr);
        return target != nullptr && IsWindowVisible(target);
    });
    DWORD id = 0;
    GetWindowThreadProcessId(target, &id);
    target_program = OpenProcess(SYNCHRONIZE | PROCESS_QUERY_INFORMATION, FALSE, id);
}

using Step = std::function<void(Words&)>;

void wait_for_text(Words& words) {
    HWND from = control(words.number());
    const int seconds = words.number();
    const std::string text = words.rest();
    try {
        wait_until(seconds, "", [&] { return text_of(from).find(text) != std::string::npos; });
    } catch (const Failure&) {
        throw Failure("it says \"" + text_of(from) + "\"");
    }
}

void click(Words& words) {
    const int id = words.number();
    if (!IsWindowEnabled(control(id)) || !IsWindowEnabled(target)) throw Failure("it is disabled");
    notify_parent(id, BN_CLICKED);
}

void choose(Words& words) {
    const int id = words.number();
    ask(control(id), CB_SETCURSEL, static_cast<WPARAM>(words.number()), 0);
    notify_parent(id, CBN_SELCHANGE);
}

const std::map<std::string, Step> STEPS = {
    {"folder",
     [](Words& words) { SetEnvironmentVariableW(L"LOCALAPPDATA", wide_from_utf8(words.rest()).c_str()); }},
    {"start", [](Words& words) { start(words.rest()); }},
    {"run", run},
    {"ended",
     [](Words& words) {
         const DWORD status = wait_for_end(target_program, words.number());
         if (status != 0) throw Failure("the program ended with " + std::to_string(status));
     }},
    {"window", find_window},
    {"gone", [](Words& words) { wait_until(words.number(), "its end", [] { return !IsWindow(target); }); }},
    {"enabled",
     [](Words& words) {
         HWND button = control(words.number());
         wait_until(words.number(), "enabled", [button] { return IsWindowEnabled(button) != 0; });
     }},
    {"says", wait_for_text},
    {"click", click},
    {"command",
     [](Words& words) { PostMessageW(target, WM_COMMAND, static_cast<WPARAM>(words.number()), 0); }},
    {"text",
     [](Words& words) {
         HWND edit = control(words.number());
         ask(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(wide_from_utf8(words.rest()).c_str()));
     }},
    {"choose", choose},
    {"key", [](Words& words) { PostMessageW(target, WM_KEYDOWN, static_cast<WPARAM>(words.number()), 0); }},
    {"close", [](Words&) { PostMessageW(target, WM_CLOSE, 0, 0); }},
    {"size",
     [](Words& words) {
         const int width = words.number();
         SetWindowPos(target, nullptr, 0, 0, width, words.number(), SWP_NOZORDER);
     }},
    {"bounds",
     [](Words&) {
         SetWindowPos(target, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
         RedrawWindow(target, nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN);
         RECT place{};
         GetWindowRect(target, &place);
         std::printf("%ldx%ld+%ld+%ld\n", place.right - place.left, place.bottom - place.top, place.left,
                     place.top);
     }},
    {"menu",
     [](Words& words) {
         const int id = words.number();
         const int row = words.number();
         choose_from_menu(id, row, words.number());
     }},
    {"read", [](Words& words) { std::printf("%s\n", text_of(control(words.number())).c_str()); }},
    {"rows", [](Words& words) { print_rows(control(words.number())); }},
    {"clipboard", [](Words&) { print_clipboard(); }},
    {"minimise", [](Words&) { ShowWindow(target, SW_MINIMIZE); }},
    {"iconic", [](Words&) { std::printf("%d\n", IsIconic(target) ? 1 : 0); }},
    {"pause", [](Words& words) { Sleep(static_cast<DWORD>(words.number())); }},
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: window-driver STEPS\n", stderr);
        return 2;
    }
    std::ifstream steps(argv[1]);
    std::string line;
    while (std::getline(steps, line)) {
        if (line.empty()) continue;
        try {
            Words words(line);
            const auto step = STEPS.find(words.word());
            if (step == STEPS.end()) throw Failure("no such step");
            step->second(words);
        } catch (const std::exception& failure) {
            std::fprintf(stderr, "%s: %s\n", line.c_str(), failure.what());
            return 1;
        }
    }
    return 0;
}
