#include "shell/history_chart.h"

#include <algorithm>

#include "records/payout_chart.h"
#include "shell/window_class.h"

namespace {

constexpr const wchar_t* CLASS_NAME = L"BaPayChart";
constexpr int LABEL_GAP = 6;
constexpr int LABEL_HEIGHT = 18;
constexpr int LINE_WIDTH = 2;

struct ChartRecord {
    Shell& shell;
    const PayoutChart& chart;
    HWND window = nullptr;

    LRESULT on_message(UINT number, WPARAM first, LPARAM second);
    void on_paint();
    void draw(HDC dc, const RECT& area) const;
    void draw_axis(HDC dc, const RECT& area, const ChartRect& plot, std::int64_t top) const;
    void draw_text_in(HDC dc, std::string_view text, const RECT& area, UINT format) const {
        draw_text(dc, wide_text(text), area, shell.theme.small_font.get(), shell.theme.palette().muted,
                  format | DT_SINGLELINE);
    }
};

RECT rect_of_chart(const ChartRect& rect) {
    return {rect.left, rect.top, rect.right, rect.bottom};
}

void ChartRecord::draw_axis(HDC dc, const RECT& area, const ChartRect& plot, std::int64_t top) const {
    const Palette& palette = shell.theme.palette();
    draw_text_in(dc, CHART_UNIT, {area.left + 8, area.top, plot.right, plot.top}, DT_LEFT | DT_BOTTOM);
    for (const ChartGridLine& line : chart_grid(plot, top)) {
        draw_line(dc, plot.left, line.y, plot.right, line.y, palette.border);
        // The one at the top leaves the corner to the unit.
        const int label_top = std::max(line.y - LABEL_HEIGHT / 2, plot.top);
        draw_text_in(dc, line.label, {area.left, label_top, plot.left - LABEL_GAP, label_top + LABEL_HEIGHT},
                     DT_RIGHT | DT_VCENTER);
    }
    draw_line(dc, plot.left, plot.bottom, plot.right, plot.bottom, palette.muted);
    draw_line(dc, plot.left, plot.top, plot.left, plot.bottom, palette.muted);
}

void draw_bars(HDC dc, const ChartRect& plot, const PayoutChart& chart, std::int64_t top, Colour colour) {
    for (const ChartRect& bar : chart_bars(plot, chart.buckets, top))
        fill_box(dc, rect_of_chart(bar), colour);
}

void draw_line_graph(HDC dc, const ChartRect& plot, const PayoutChart& chart, std::int64_t top,
                     Colour colour) {
    constexpr int HALF = CHART_SQUARE / 2;
    std::vector<POINT> points;
    for (const ChartPoint& point : chart_points(plot, chart.buckets, top))
        points.push_back({point.x, point.y});
    draw_polyline(dc, points, LINE_WIDTH, colour);
    for (const POINT& point : points)
        fill_box(dc, {point.x - HALF, point.y - HALF, point.x + HALF + 1, point.y + HALF + 1}, colour);
}

void ChartRecord::draw(HDC dc, const RECT& area) const {
    const Palette& palette = shell.theme.palette();
    fill_box(dc, area, palette.border);
    fill_box(dc, {area.left + 1, area.top + 1, area.right - 1, area.bottom - 1}, palette.panel_bg);
    const ChartRect plot = chart_plot({area.left, area.top, area.right, area.bottom});
    if (!chart_plot_is_usable(plot)) return;
    if (!chart_has_payouts(chart.buckets)) {
        draw_text_in(dc, CHART_NO_PAYOUTS, area, DT_CENTER | DT_VCENTER);
        return;
    }
    const std::int64_t top = chart_axis_top(chart.buckets);
    draw_axis(dc, area, plot, top);
    if (chart.bars)
        draw_bars(dc, plot, chart, top, palette.accent);
    else
        draw_line_graph(dc, plot, chart, top, palette.accent);
    draw_text_in(dc, chart_caption(chart.axis_labels), {plot.left, plot.bottom, plot.right, area.bottom},
                 DT_CENTER | DT_VCENTER | DT_END_ELLIPSIS);
}

void ChartRecord::on_paint() {
    PAINTSTRUCT paint{};
    HDC dc = BeginPaint(window, &paint);
    const SIZE size = client_size(window);
    draw_aside(dc, {0, 0, size.cx, size.cy}, [this](HDC aside, const RECT& area) { draw(aside, area); });
    EndPaint(window, &paint);
}

LRESULT ChartRecord::on_message(UINT number, WPARAM first, LPARAM second) {
    switch (number) {
        case WM_PAINT:
            on_paint();
            return 0;
        case WM_ERASEBKGND:
            return 1;
        case WM_SIZE:
            InvalidateRect(window, nullptr, FALSE);
            return 0;
        default:
            return DefWindowProcW(window, number, first, second);
    }
}

}  // namespace

HWND create_payout_chart(Shell& shell, HWND parent, int id, const PayoutChart& chart) {
    if (!register_class(shell, CLASS_NAME, record_procedure<ChartRecord>, nullptr)) return nullptr;
    auto record = std::make_unique<ChartRecord>(ChartRecord{shell, chart});
    // The window owns the record from its creation on.
    return CreateWindowExW(0, CLASS_NAME, L"", WS_CHILD | WS_VISIBLE, 0, 0, 0, 0, parent,
                           reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), shell.instance,
                           record.release());
}
