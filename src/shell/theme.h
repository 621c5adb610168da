// The look in use: the palette, the shared brushes and fonts, and how frames, lists and edits are given it.
// On the window's thread only.
#pragma once

#include "shell/win32.h"

struct Theme {
    std::size_t index = 0;
    BrushOwner window_brush;
    BrushOwner panel_brush;
    BrushOwner band_brush;
    BrushOwner card_brush;
    FontOwner body_font;
    FontOwner small_font;
    FontOwner title_font;  // made and freed, never selected

    const Palette& palette() const { return palette_of(index); }
};

// An index beyond the last means the first. The brushes in use before are deleted.
void choose_palette(Theme& theme, std::size_t index);
void make_fonts(Theme& theme);
void release_drawing_objects(Theme& theme);

// The title bar and the border; failures are ignored, as on systems without those attributes.
void apply_dark_frame(HWND window, const Palette& palette);
void style_list(HWND list, const Palette& palette);
// Frame, lists, edits and boxes of one open window, and a repaint; null is passed over.
void restyle_window(HWND window, const Palette& palette);
// Without its visual style a control shows the colours that its parent gives.
void strip_visual_style(HWND control);

// The answer to a WM_CTLCOLOR message of an edit or a box.
LRESULT panel_colours(const Theme& theme, HDC dc);
// The answer for a static with its text colour, standing on `brush`.
LRESULT static_colours(HDC dc, Colour text, HBRUSH brush);
