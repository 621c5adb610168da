#include "shell/theme.h"

#include <dwmapi.h>
#include <uxtheme.h>

namespace {

enum FrameAttribute : DWORD {
    FRAME_DARK_MODE = 20,
    FRAME_BORDER_COLOUR = 34,
    FRAME_CAPTION_COLOUR = 35,
    FRAME_TEXT_COLOUR = 36,
};

// The height is that of a line, so that a label of 22 pixels shows one with its descenders.
FontOwner make_font(const wchar_t* face, int height, int weight) {
    return FontOwner(CreateFontW(height, 0, 0, 0, weight, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                                 OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, CLEARTYPE_QUALITY,
                                 DEFAULT_PITCH | FF_DONTCARE, face));
}

BrushOwner make_brush(Colour colour) {
    return BrushOwner(CreateSolidBrush(color_ref(colour)));
}

void set_frame_colour(HWND window, DWORD attribute, DWORD value) {
    DwmSetWindowAttribute(window, attribute, &value, sizeof(value));
}

BOOL CALLBACK restyle_child(HWND child, LPARAM palette) {
    wchar_t name[32] = L"";
    GetClassNameW(child, name, 32);
    const std::wstring_view kind(name);
    if (kind == WC_LISTVIEWW)
        style_list(child, *reinterpret_cast<const Palette*>(palette));
    else if (kind == WC_EDITW || kind == WC_COMBOBOXW)
        strip_visual_style(child);
    return TRUE;
}

}  // namespace

void choose_palette(Theme& theme, std::size_t index) {
    theme.index = index < THEME_COUNT ? index : 0;
    const Palette& palette = theme.palette();
    theme.window_brush = make_brush(palette.window_bg);
    theme.panel_brush = make_brush(palette.panel_bg);
    theme.band_brush = make_brush(palette.band);
    theme.card_brush = make_brush(wallet_card_fill(theme.index));
}

void make_fonts(Theme& theme) {
    theme.body_font = make_font(L"Segoe UI", 20, FW_NORMAL);
    theme.small_font = make_font(L"Segoe UI", 16, FW_NORMAL);
    theme.title_font = make_font(L"Georgia", 36, FW_BOLD);
}

void release_drawing_objects(Theme& theme) {
    theme = Theme{.index = theme.index,
                  .window_brush = {},
                  .panel_brush = {},
                  .band_brush = {},
                  .card_brush = {},
                  .body_font = {},
                  .small_font = {},
                  .title_font = {}};
}

void apply_dark_frame(HWND window, const Palette& palette) {
    set_frame_colour(window, FRAME_DARK_MODE, 1);
    set_frame_colour(window, FRAME_CAPTION_COLOUR, color_ref(palette.band));
    set_frame_colour(window, FRAME_BORDER_COLOUR, color_ref(palette.border));
    set_frame_colour(window, FRAME_TEXT_COLOUR, color_ref(palette.text));
}

void style_list(HWND list, const Palette& palette) {
    strip_visual_style(list);
    ListView_SetBkColor(list, color_ref(palette.panel_bg));
    ListView_SetTextBkColor(list, color_ref(palette.panel_bg));
    ListView_SetTextColor(list, color_ref(palette.text));
    ListView_SetOutlineColor(list, color_ref(palette.border));
    if (HWND header = ListView_GetHeader(list)) {
        strip_visual_style(header);
        InvalidateRect(header, nullptr, TRUE);
    }
}

void restyle_window(HWND window, const Palette& palette) {
    if (window == nullptr) return;
    apply_dark_frame(window, palette);
    EnumChildWindows(window, restyle_child, reinterpret_cast<LPARAM>(&palette));
    RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_FRAME);
}

void strip_visual_style(HWND control) {
    SetWindowTheme(control, L"", L"");
}

LRESULT panel_colours(const Theme& theme, HDC dc) {
    SetBkColor(dc, color_ref(theme.palette().panel_bg));
    SetTextColor(dc, color_ref(theme.palette().text));
    return reinterpret_cast<LRESULT>(theme.panel_brush.get());
}

LRESULT static_colours(HDC dc, Colour text, HBRUSH brush) {
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, color_ref(text));
    return reinterpret_cast<LRESULT>(brush);
}
