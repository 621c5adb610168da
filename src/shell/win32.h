// Windows as the shell uses it: the headers in the order that they need, text in its form, and owners for
// what must be released.
#pragma once

#include <windows.h>
// After windows.h, which they need.
#include <commctrl.h>
#include <windowsx.h>

#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

#include "shell/box.h"
#include "shell/palette.h"

// A text that is not well formed gives an empty one.
std::wstring wide_text(std::string_view utf8);
std::string utf8_text(std::wstring_view wide);

inline COLORREF color_ref(Colour colour) {
    return RGB(colour >> 16 & 0xFF, colour >> 8 & 0xFF, colour & 0xFF);
}

inline RECT rect_of(const Box& box) {
    return {box.x, box.y, box.right(), box.bottom()};
}

struct GdiDeleter {
    void operator()(void* object) const { DeleteObject(object); }
};
template <typename Handle>
using GdiOwner = std::unique_ptr<std::remove_pointer_t<Handle>, GdiDeleter>;
using BrushOwner = GdiOwner<HBRUSH>;
using FontOwner = GdiOwner<HFONT>;

std::wstring window_text(HWND window);
void set_window_text(HWND window, std::string_view utf8);
SIZE client_size(HWND window);

// Puts UTF-16 text on the clipboard; false if another program holds it.
bool copy_text(HWND owner, std::wstring_view text);
// "\r\n" for each line feed that stands alone.
std::wstring with_edit_line_ends(std::string_view utf8);
