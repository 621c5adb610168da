// The floor of the window program's start: one window with nothing in it.
#include <windows.h>

static LRESULT CALLBACK on_message(HWND window, UINT message, WPARAM first, LPARAM second) {
    if (message == WM_DESTROY) PostQuitMessage(0);
    return DefWindowProcW(window, message, first, second);
}

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR, int show) {
    WNDCLASSW made{};
    made.lpfnWndProc = on_message;
    made.hInstance = instance;
    made.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
    made.lpszClassName = L"BareWindow";
    if (!RegisterClassW(&made)) return 1;
    HWND window = CreateWindowExW(0, made.lpszClassName, L"Bare", WS_OVERLAPPEDWINDOW, CW_USEDEFAULT,
                                  CW_USEDEFAULT, 1040, 900, nullptr, nullptr, instance, nullptr);
    if (window == nullptr) return 1;
    ShowWindow(window, show);
    UpdateWindow(window);
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return 0;
}
