// A window with a record: the record arrives through the create parameters, is attached at WM_NCCREATE and
// freed at WM_NCDESTROY. A message that finds none goes to the default procedure.
#pragma once

#include "shell/shell.h"

struct WindowPlan {
    const wchar_t* title = L"";
    DWORD style = WS_OVERLAPPEDWINDOW;
    int width = CW_USEDEFAULT;
    int height = CW_USEDEFAULT;
};

// Registers the class at its first use; false if the system refuses it.
inline bool register_class(const Shell& shell, const wchar_t* name, WNDPROC procedure, HBRUSH background) {
    WNDCLASSEXW known{};
    known.cbSize = sizeof(known);
    if (GetClassInfoExW(shell.instance, name, &known)) return true;
    WNDCLASSEXW made{};
    made.cbSize = sizeof(made);
    made.lpfnWndProc = procedure;
    made.hInstance = shell.instance;
    made.hIcon = shell.big_icon;
    made.hIconSm = shell.small_icon;
    made.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
    made.hbrBackground = background;
    made.lpszClassName = name;
    return RegisterClassExW(&made) != 0;
}

// `Record` has the members `HWND window` and `LRESULT on_message(UINT, WPARAM, LPARAM)`, and frees what it
// holds in its destructor, which runs at WM_NCDESTROY.
template <typename Record>
LRESULT CALLBACK record_procedure(HWND window, UINT message, WPARAM first, LPARAM second) {
    if (message == WM_NCCREATE) {
        auto* record = static_cast<Record*>(reinterpret_cast<CREATESTRUCTW*>(second)->lpCreateParams);
        record->window = window;
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(record));
        return DefWindowProcW(window, message, first, second);
    }
    auto* record = reinterpret_cast<Record*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (record == nullptr) return DefWindowProcW(window, message, first, second);
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        delete record;
        return DefWindowProcW(window, message, first, second);
    }
    return record->on_message(message, first, second);
}

// The window, hidden; the record belongs to it. A window that got as far as WM_NCCREATE has freed the record
// also where its creation failed.
template <typename Record>
HWND create_record_window(const Shell& shell, const wchar_t* class_name, const WindowPlan& plan, HWND owner,
                          std::unique_ptr<Record> record) {
    Record* raw = record.release();
    HWND window = CreateWindowExW(0, class_name, plan.title, plan.style, CW_USEDEFAULT, CW_USEDEFAULT,
                                  plan.width, plan.height, owner, nullptr, shell.instance, raw);
    return window;
}

// What each themed window answers alike: the erased background and the colours of its controls.
inline LRESULT erase_with(HWND window, WPARAM dc, HBRUSH brush) {
    RECT area{};
    GetClientRect(window, &area);
    FillRect(reinterpret_cast<HDC>(dc), &area, brush);
    return 1;
}

inline void hold_smallest_size(LPARAM second, int width, int height) {
    reinterpret_cast<MINMAXINFO*>(second)->ptMinTrackSize = {width, height};
}
