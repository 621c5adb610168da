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

// What every window but the main one holds: its handle, and its slot in the shell, which empties with it.
struct WindowRecord {
    Shell& shell;
    HWND& slot;
    HWND window = nullptr;

    WindowRecord(Shell& of, HWND& its_slot) : shell(of), slot(its_slot) {}
    ~WindowRecord() {
        if (slot == window) slot = nullptr;
    }
    WindowRecord(const WindowRecord&) = delete;
    WindowRecord& operator=(const WindowRecord&) = delete;

    HWND control(int id) const { return GetDlgItem(window, id); }
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
// holds in its destructor, which runs at WM_NCDESTROY. An exception ends the program: the system would
// swallow it.
template <typename Record>
LRESULT CALLBACK record_procedure(HWND window, UINT message, WPARAM first, LPARAM second) noexcept {
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
    return CreateWindowExW(0, class_name, plan.title, plan.style, CW_USEDEFAULT, CW_USEDEFAULT, plan.width,
                           plan.height, owner, nullptr, shell.instance, raw);
}

// Makes the window of a slot, owned by the main window and hidden; null if the system refuses it.
template <typename Record>
HWND fill_slot(Shell& shell, HWND& slot, const wchar_t* class_name, const WindowPlan& plan,
               std::unique_ptr<Record> record) {
    if (!register_class(shell, class_name, record_procedure<Record>, nullptr)) return nullptr;
    slot = create_record_window(shell, class_name, plan, shell.main.load(), std::move(record));
    return slot;
}

inline void raise_window(HWND window) {
    if (IsIconic(window))
        ShowWindow(window, SW_RESTORE);
    else
        ShowWindow(window, SW_SHOW);
    SetForegroundWindow(window);
}

inline void hold_smallest_size(LPARAM second, int width, int height) {
    reinterpret_cast<MINMAXINFO*>(second)->ptMinTrackSize = {width, height};
}
