// How long a program takes until its window is painted, and the memory that it holds two seconds later.
//   window-start NAME CLASS STARTS PROGRAM
// Prints a line of JSON for each start; ends with 1 where no window of the class is painted within a minute.
#include <windows.h>
// After windows.h, which it needs.
#include <psapi.h>

#include <chrono>
#include <cstdio>
#include <string>

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto LONGEST = std::chrono::seconds(60);
constexpr double MEGABYTE = 1e6;

struct Program {
    PROCESS_INFORMATION info{};
    ~Program() {
        TerminateProcess(info.hProcess, 0);
        WaitForSingleObject(info.hProcess, 10'000);
        CloseHandle(info.hProcess);
        CloseHandle(info.hThread);
    }
};

// Sets the flag behind `unpainted` if this window or one in it still has something to paint.
BOOL CALLBACK look_for_unpainted(HWND window, LPARAM unpainted) {
    if (IsWindowVisible(window) && GetUpdateRect(window, nullptr, FALSE))
        *reinterpret_cast<bool*>(unpainted) = true;
    return TRUE;
}

bool is_painted(HWND window) {
    if (!IsWindowVisible(window)) return false;
    bool unpainted = false;
    look_for_unpainted(window, reinterpret_cast<LPARAM>(&unpainted));
    EnumChildWindows(window, look_for_unpainted, reinterpret_cast<LPARAM>(&unpainted));
    return !unpainted;
}

HWND window_of(const Program& program, const wchar_t* window_class) {
    HWND window = FindWindowW(window_class, nullptr);
    DWORD owner = 0;
    if (window != nullptr) GetWindowThreadProcessId(window, &owner);
    return owner == program.info.dwProcessId ? window : nullptr;
}

// Shown, its thread at rest before its messages, and nothing left to paint.
bool wait_for_painted(const Program& program, const wchar_t* window_class) {
    for (const auto end = Clock::now() + LONGEST; Clock::now() < end; Sleep(1)) {
        HWND window = window_of(program, window_class);
        if (window == nullptr || !IsWindowVisible(window)) continue;
        if (WaitForInputIdle(program.info.hProcess, 1000) != 0) continue;
        if (is_painted(window)) return true;
    }
    return false;
}

bool measure_start(const char* name, const wchar_t* window_class, std::wstring path) {
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    Program program;
    const auto begin = Clock::now();
    if (!CreateProcessW(nullptr, path.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &program.info))
        return false;
    if (!wait_for_painted(program, window_class)) return false;
    const std::chrono::duration<double, std::milli> took = Clock::now() - begin;
    Sleep(2000);
    PROCESS_MEMORY_COUNTERS memory{};
    GetProcessMemoryInfo(program.info.hProcess, &memory, sizeof(memory));
    std::printf(R"({"name":"%s","run_type":"iteration","time_unit":"ms","cpu_time":%.1f,"real_time":%.1f,)"
                R"("resident_mb":%.1f})"
                "\n",
                name, took.count(), took.count(), static_cast<double>(memory.WorkingSetSize) / MEGABYTE);
    return true;
}

}  // namespace

int main(int count, char** words) {
    if (count != 5) return 2;
    const auto wide = [](const char* text) {
        std::wstring result(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text, -1, nullptr, 0)),
                            L'\0');
        MultiByteToWideChar(CP_UTF8, 0, text, -1, result.data(), static_cast<int>(result.size()));
        return result;
    };
    for (int start = std::atoi(words[3]); start > 0; --start) {
        if (!measure_start(words[1], wide(words[2]).c_str(), wide(words[4]))) {
            std::fprintf(stderr, "%s: no window was painted\n", words[1]);
            return 1;
        }
    }
    return 0;
}
