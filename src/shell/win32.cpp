#include "shell/win32.h"

#include <cstring>

#include "base/text.h"

std::wstring wide_text(std::string_view utf8) {
    const std::u16string text = utf16_from_utf8(utf8);
    return {text.begin(), text.end()};
}

std::string utf8_text(std::wstring_view wide) {
    return utf8_from_utf16(std::u16string(wide.begin(), wide.end()));
}

std::wstring window_text(HWND window) {
    const int length = GetWindowTextLengthW(window);
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    text.resize(static_cast<std::size_t>(GetWindowTextW(window, text.data(), length + 1)));
    return text;
}

void set_window_text(HWND window, std::string_view utf8) {
    SetWindowTextW(window, wide_text(utf8).c_str());
}

SIZE client_size(HWND window) {
    RECT area{};
    GetClientRect(window, &area);
    return {area.right, area.bottom};
}

bool copy_text(HWND owner, std::wstring_view text) {
    if (!OpenClipboard(owner)) return false;
    EmptyClipboard();
    const std::size_t bytes = text.size() * sizeof(wchar_t);
    HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, bytes + sizeof(wchar_t));
    bool copied = false;
    if (memory != nullptr) {
        if (void* place = GlobalLock(memory)) {
            std::memcpy(place, text.data(), bytes);
            GlobalUnlock(memory);
            copied = SetClipboardData(CF_UNICODETEXT, memory) != nullptr;
        }
        // The clipboard owns what it took.
        if (!copied) GlobalFree(memory);
    }
    CloseClipboard();
    return copied;
}

std::wstring with_edit_line_ends(std::string_view utf8) {
    std::wstring lines;
    for (const wchar_t c : wide_text(utf8)) {
        if (c == L'\n' && (lines.empty() || lines.back() != L'\r')) lines.push_back(L'\r');
        lines.push_back(c);
    }
    return lines;
}
