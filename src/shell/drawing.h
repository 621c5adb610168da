// Drawing primitives: they know colours and rectangles, no window and no round. Shapes are anti-aliased by
// GDI+, which must have been started.
#pragma once

#include <functional>
#include <vector>

#include "shell/button_look.h"
#include "shell/win32.h"

struct Picture;  // a GDI+ bitmap

struct PictureDeleter {
    void operator()(Picture* picture) const;
};
using PictureOwner = std::unique_ptr<Picture, PictureDeleter>;

// Has `draw` paint an area of the size of `place` aside, with its corner at the origin, and copies it into
// `place` at once, so that nothing flickers.
void draw_aside(HDC dc, const RECT& place, const std::function<void(HDC aside, const RECT& area)>& draw);

// A PNG of the raw data type in this program's resources; null where it is missing or does not read.
PictureOwner load_picture(HINSTANCE instance, int resource);

void fill_box(HDC dc, const RECT& area, Colour colour);

// The banner at the top left, scaled to the band's height, on the band colour, which shows where it ends.
void draw_band(HDC dc, int width, int height, Picture* banner, Colour band);
// What the band shows of the banner under `part` (in the band's own pixels), drawn at the origin of `dc`.
void draw_band_part(HDC dc, const RECT& part, int band_height, Picture* banner);

// The body of a painted button, row by row, within its rounded outline.
void draw_button_body(HDC dc, const RECT& area, const ButtonLook& look);
// Inside the outline of the button that the keyboard works on.
void draw_focus_ring(HDC dc, const RECT& area, const ButtonLook& look, Colour colour);
// The picture on a big button: a disc of 32 pixels around the centre.
void draw_glyph(HDC dc, int control, int x, int y);
void draw_gear(HDC dc, int x, int y, Colour colour);
void draw_wallet_icon(HDC dc, int x, int y);

void draw_rounded_card(HDC dc, const RECT& area, int radius, Colour fill, Colour outline);
// A card of four arcs of diameter 28, anti-aliased.
void draw_soft_card(HDC dc, const RECT& area, Colour fill, Colour outline);
void draw_line(HDC dc, int x1, int y1, int x2, int y2, Colour colour);
void draw_polyline(HDC dc, const std::vector<POINT>& points, int width, Colour colour);
void draw_text(HDC dc, std::wstring_view text, RECT area, HFONT font, Colour colour, UINT format);
