#include "shell/drawing.h"

#include <objidl.h>
#include <shlwapi.h>
// After objidl.h, which it needs.
#include <gdiplus.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "core/round_state.h"

struct Picture {
    std::unique_ptr<Gdiplus::Bitmap> bitmap;
};

namespace {

constexpr DWORD SHORTEST_PICTURE = 8;
constexpr BYTE OPAQUE_ALPHA = 255;

Gdiplus::Color gdiplus_color(Colour colour) {
    return {OPAQUE_ALPHA, static_cast<BYTE>(colour >> 16), static_cast<BYTE>(colour >> 8),
            static_cast<BYTE>(colour)};
}

void smooth(Gdiplus::Graphics& graphics) {
    graphics.SetSmoothingMode(Gdiplus::SmoothingModeAntiAlias);
    graphics.SetPixelOffsetMode(Gdiplus::PixelOffsetModeHalf);
}

// A rounded line of the glyphs.
struct GlyphPen {
    Gdiplus::Pen pen;
    GlyphPen(DWORD argb, float width) : pen(Gdiplus::Color(argb), width) {
        pen.SetLineCap(Gdiplus::LineCapRound, Gdiplus::LineCapRound, Gdiplus::DashCapRound);
    }
};

// Round at any size: not every GDI+ cuts a small ellipse into enough pieces of its own.
std::array<Gdiplus::PointF, 64> ellipse(float left, float top, float width, float height) {
    std::array<Gdiplus::PointF, 64> points;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const double angle = static_cast<double>(i) * 2 * std::numbers::pi / points.size();
        points[i] = {left + width / 2 * (1 + static_cast<float>(std::cos(angle))),
                     top + height / 2 * (1 + static_cast<float>(std::sin(angle)))};
    }
    return points;
}

void draw_ellipse(Gdiplus::Graphics& graphics, const Gdiplus::Pen& pen, float left, float top, float width,
                  float height) {
    const auto points = ellipse(left, top, width, height);
    graphics.DrawPolygon(&pen, points.data(), static_cast<INT>(points.size()));
}

void fill_ellipse(Gdiplus::Graphics& graphics, const Gdiplus::Brush& brush, float left, float top,
                  float width, float height) {
    const auto points = ellipse(left, top, width, height);
    graphics.FillPolygon(&brush, points.data(), static_cast<INT>(points.size()));
}

// An ellipse or a disc around the origin that the glyph is drawn from.
void ring(Gdiplus::Graphics& graphics, const GlyphPen& line, float radius) {
    draw_ellipse(graphics, line.pen, -radius, -radius, 2 * radius, 2 * radius);
}

void disc(Gdiplus::Graphics& graphics, DWORD argb, float width, float height, float x = 0, float y = 0) {
    const Gdiplus::SolidBrush brush{Gdiplus::Color(argb)};
    fill_ellipse(graphics, brush, x - width / 2, y - height / 2, width, height);
}

void bar(Gdiplus::Graphics& graphics, DWORD argb, float x, float y, float width, float height) {
    const Gdiplus::SolidBrush brush{Gdiplus::Color(argb)};
    graphics.FillRectangle(&brush, x, y, width, height);
}

void target_glyph(Gdiplus::Graphics& graphics, const GlyphPen& line, DWORD argb) {
    ring(graphics, line, 8);
    ring(graphics, line, 4);
    disc(graphics, argb, 3.2F, 3.2F);
}

void eye_glyph(Gdiplus::Graphics& graphics, const GlyphPen& line, DWORD) {
    draw_ellipse(graphics, line.pen, -9.0F, -5.5F, 18.0F, 11.0F);
    disc(graphics, 0xFF483410, 6.4F, 6.4F);
    disc(graphics, 0xFFFFF4C8, 2.2F, 2.2F, 1.0F, -1.0F);
}

void bars_glyph(Gdiplus::Graphics& graphics, const GlyphPen&, DWORD argb) {
    bar(graphics, argb, -5.2F, -7.0F, 3.6F, 14.0F);
    bar(graphics, argb, 1.8F, -7.0F, 3.6F, 14.0F);
}

void clock_glyph(Gdiplus::Graphics& graphics, const GlyphPen& line, DWORD) {
    ring(graphics, line, 7.5F);
    graphics.DrawLine(&line.pen, 0.0F, 1.0F, 0.0F, -5.0F);
    graphics.DrawLine(&line.pen, 0.0F, 1.0F, 4.5F, 3.0F);
}

void bulb_glyph(Gdiplus::Graphics& graphics, const GlyphPen& line, DWORD argb) {
    draw_ellipse(graphics, line.pen, -6.5F, -9.0F, 13.0F, 13.0F);
    bar(graphics, argb, -3.2F, 3.5F, 6.4F, 2.2F);
    bar(graphics, argb, -2.2F, 6.2F, 4.4F, 2.0F);
}

struct Glyph {
    int control;
    DWORD line;
    DWORD disc;
    void (*draw)(Gdiplus::Graphics& graphics, const GlyphPen& line, DWORD argb);
};

constexpr std::array<Glyph, 5> GLYPHS = {{
    {CONTROL_SNAPSHOT, 0xFFCEBAE6, 0x30FFFFFF, target_glyph},
    {CONTROL_PREVIEW, 0xFFF2CE54, 0x28F2CE54, eye_glyph},
    {CONTROL_PAY, 0xFFA894BA, 0x30FFFFFF, bars_glyph},
    {CONTROL_HISTORY, 0xFFD6D0C6, 0x30FFFFFF, clock_glyph},
    {CONTROL_VAULT, 0xFFF2CE54, 0x28F2CE54, bulb_glyph},
}};

int scaled_width(Gdiplus::Bitmap& bitmap, int height) {
    return bitmap.GetHeight() == 0
               ? 0
               : static_cast<int>(bitmap.GetWidth() * static_cast<UINT>(height) / bitmap.GetHeight());
}

void draw_banner_at(HDC dc, int x, int y, int height, Gdiplus::Bitmap& bitmap) {
    Gdiplus::Graphics graphics(dc);
    graphics.SetInterpolationMode(Gdiplus::InterpolationModeHighQualityBicubic);
    graphics.SetPixelOffsetMode(Gdiplus::PixelOffsetModeHalf);
    graphics.DrawImage(&bitmap, Gdiplus::Rect(x, y, scaled_width(bitmap, height), height));
}

// Selects an object for as long as it lives.
class Selected {
 public:
    Selected(HDC dc, HGDIOBJ object) : dc_(dc), before_(SelectObject(dc, object)) {}
    ~Selected() { SelectObject(dc_, before_); }
    Selected(const Selected&) = delete;
    Selected& operator=(const Selected&) = delete;

 private:
    HDC dc_;
    HGDIOBJ before_;
};

void draw_outline(HDC dc, const RECT& area, int radius, Colour colour) {
    const GdiOwner<HPEN> pen(CreatePen(PS_SOLID, 1, color_ref(colour)));
    const Selected pen_in_use(dc, pen.get());
    const Selected hollow(dc, GetStockObject(NULL_BRUSH));
    RoundRect(dc, area.left, area.top, area.right, area.bottom, 2 * radius, 2 * radius);
}

}  // namespace

void PictureDeleter::operator()(Picture* picture) const {
    delete picture;
}

void draw_aside(HDC dc, const RECT& place, const std::function<void(HDC aside, const RECT& area)>& draw) {
    const RECT area{0, 0, place.right - place.left, place.bottom - place.top};
    HDC aside = CreateCompatibleDC(dc);
    {
        const GdiOwner<HBITMAP> bitmap(CreateCompatibleBitmap(dc, area.right, area.bottom));
        const Selected bitmap_in_use(aside, bitmap.get());
        draw(aside, area);
        BitBlt(dc, place.left, place.top, area.right, area.bottom, aside, 0, 0, SRCCOPY);
    }
    DeleteDC(aside);
}

PictureOwner load_picture(HINSTANCE instance, int resource) {
    HRSRC found = FindResourceW(instance, MAKEINTRESOURCEW(resource), RT_RCDATA);
    if (found == nullptr) return nullptr;
    const DWORD size = SizeofResource(instance, found);
    HGLOBAL loaded = LoadResource(instance, found);
    const auto* bytes = static_cast<const BYTE*>(loaded == nullptr ? nullptr : LockResource(loaded));
    if (bytes == nullptr || size < SHORTEST_PICTURE) return nullptr;
    IStream* stream = SHCreateMemStream(bytes, size);
    if (stream == nullptr) return nullptr;
    auto bitmap = std::make_unique<Gdiplus::Bitmap>(stream);
    stream->Release();
    if (bitmap->GetLastStatus() != Gdiplus::Ok) return nullptr;
    return PictureOwner(new Picture{std::move(bitmap)});
}

void fill_box(HDC dc, const RECT& area, Colour colour) {
    const BrushOwner brush(CreateSolidBrush(color_ref(colour)));
    FillRect(dc, &area, brush.get());
}

void draw_band(HDC dc, int width, int height, Picture* banner, Colour band) {
    fill_box(dc, {0, 0, width, height}, band);
    if (banner != nullptr) draw_banner_at(dc, 0, 0, height, *banner->bitmap);
}

void draw_band_part(HDC dc, const RECT& part, int band_height, Picture* banner) {
    if (banner != nullptr) draw_banner_at(dc, -part.left, -part.top, band_height, *banner->bitmap);
}

void draw_button_body(HDC dc, const RECT& area, const ButtonLook& look) {
    const GdiOwner<HRGN> region(CreateRoundRectRgn(area.left, area.top, area.right + 1, area.bottom + 1,
                                                   2 * look.radius, 2 * look.radius));
    const int height = area.bottom - area.top;
    SaveDC(dc);
    SelectClipRgn(dc, region.get());
    for (int row = 0; row < height; ++row) {
        const int mix = height > 1 ? row * 255 / (height - 1) : 0;
        fill_box(dc, {area.left, area.top + row, area.right, area.top + row + 1},
                 blend_colours(look.top, look.bottom, mix));
    }
    RestoreDC(dc, -1);
    draw_outline(dc, area, look.radius, look.outline);
}

void draw_focus_ring(HDC dc, const RECT& area, const ButtonLook& look, Colour colour) {
    constexpr int INSET = 3;
    draw_outline(dc, {area.left + INSET, area.top + INSET, area.right - INSET, area.bottom - INSET},
                 look.radius - INSET, colour);
}

void draw_glyph(HDC dc, int control, int x, int y) {
    const auto glyph = std::find_if(GLYPHS.begin(), GLYPHS.end(),
                                    [control](const Glyph& row) { return row.control == control; });
    if (glyph == GLYPHS.end()) return;
    Gdiplus::Graphics graphics(dc);
    smooth(graphics);
    graphics.TranslateTransform(static_cast<float>(x), static_cast<float>(y));
    disc(graphics, glyph->disc, 32, 32);
    glyph->draw(graphics, GlyphPen(glyph->line, 1.8F), glyph->line);
}

void draw_gear(HDC dc, int x, int y, Colour colour) {
    Gdiplus::Graphics graphics(dc);
    smooth(graphics);
    graphics.TranslateTransform(static_cast<float>(x), static_cast<float>(y));
    const Gdiplus::Pen pen(gdiplus_color(colour), 2.0F);
    draw_ellipse(graphics, pen, -6, -6, 12, 12);
    for (int spoke = 0; spoke < 8; ++spoke) {
        const double angle = spoke * std::numbers::pi / 4;
        const auto dx = static_cast<float>(std::cos(angle));
        const auto dy = static_cast<float>(std::sin(angle));
        graphics.DrawLine(&pen, 5 * dx, 5 * dy, 10 * dx, 10 * dy);
    }
}

void draw_wallet_icon(HDC dc, int x, int y) {
    Gdiplus::Graphics graphics(dc);
    smooth(graphics);
    graphics.TranslateTransform(static_cast<float>(x), static_cast<float>(y));
    const Gdiplus::Pen pen(Gdiplus::Color(0xFF48424A), 1.5F);
    const Gdiplus::SolidBrush gold{Gdiplus::Color(0xFFF2C42A)};
    const Gdiplus::SolidBrush body{Gdiplus::Color(0xFFF6F6F4)};
    const Gdiplus::SolidBrush latch{Gdiplus::Color(0xFFE8A824)};
    fill_ellipse(graphics, gold, 10, 0, 16, 16);
    draw_ellipse(graphics, pen, 10, 0, 16, 16);
    graphics.FillRectangle(&body, 1, 12, 34, 24);
    graphics.DrawRectangle(&pen, 1, 12, 34, 24);
    graphics.FillRectangle(&latch, 22, 18, 14, 9);
    graphics.DrawRectangle(&pen, 22, 18, 14, 9);
    draw_ellipse(graphics, pen, 30.0F, 20.5F, 4.0F, 4.0F);
}

void draw_rounded_card(HDC dc, const RECT& area, int radius, Colour fill, Colour outline) {
    const BrushOwner brush(CreateSolidBrush(color_ref(fill)));
    const GdiOwner<HPEN> pen(CreatePen(PS_SOLID, 1, color_ref(outline)));
    const Selected brush_in_use(dc, brush.get());
    const Selected pen_in_use(dc, pen.get());
    RoundRect(dc, area.left, area.top, area.right, area.bottom, 2 * radius, 2 * radius);
}

void draw_soft_card(HDC dc, const RECT& area, Colour fill, Colour outline) {
    constexpr int DIAMETER = 28;
    Gdiplus::Graphics graphics(dc);
    graphics.SetSmoothingMode(Gdiplus::SmoothingModeAntiAlias);
    const int right = area.right - 1 - DIAMETER;
    const int bottom = area.bottom - 1 - DIAMETER;
    Gdiplus::GraphicsPath path;
    path.AddArc(static_cast<int>(area.left), static_cast<int>(area.top), DIAMETER, DIAMETER, 180.0F, 90.0F);
    path.AddArc(right, static_cast<int>(area.top), DIAMETER, DIAMETER, 270.0F, 90.0F);
    path.AddArc(right, bottom, DIAMETER, DIAMETER, 0.0F, 90.0F);
    path.AddArc(static_cast<int>(area.left), bottom, DIAMETER, DIAMETER, 90.0F, 90.0F);
    path.CloseFigure();
    const Gdiplus::SolidBrush brush(gdiplus_color(fill));
    const Gdiplus::Pen pen(gdiplus_color(outline), 1.0F);
    graphics.FillPath(&brush, &path);
    graphics.DrawPath(&pen, &path);
}

void draw_line(HDC dc, int x1, int y1, int x2, int y2, Colour colour) {
    const GdiOwner<HPEN> pen(CreatePen(PS_SOLID, 1, color_ref(colour)));
    const Selected pen_in_use(dc, pen.get());
    MoveToEx(dc, x1, y1, nullptr);
    LineTo(dc, x2, y2);
}

void draw_polyline(HDC dc, const std::vector<POINT>& points, int width, Colour colour) {
    const GdiOwner<HPEN> pen(CreatePen(PS_SOLID, width, color_ref(colour)));
    const Selected pen_in_use(dc, pen.get());
    Polyline(dc, points.data(), static_cast<int>(points.size()));
}

void draw_text(HDC dc, std::wstring_view text, RECT area, HFONT font, Colour colour, UINT format) {
    const Selected font_in_use(dc, font);
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, color_ref(colour));
    DrawTextW(dc, text.data(), static_cast<int>(text.size()), &area, format | DT_NOPREFIX);
}
