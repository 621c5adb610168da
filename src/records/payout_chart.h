// The payout chart in whole pixels: where everything stands, so that a window only draws it. Pure. The axis
// is the one place where an amount meets floating point.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct ChartRect {
    int left = 0, top = 0, right = 0, bottom = 0;
};
struct ChartPoint {
    int x = 0, y = 0;
};
struct ChartGridLine {
    int y = 0;
    std::string label;
};

inline constexpr const char* CHART_NO_PAYOUTS = "No payouts in this range.";
inline constexpr const char* CHART_UNIT = "BSV";
// The side of the square at each point of the line.
inline constexpr int CHART_SQUARE = 7;

// The plot inside the chart's area.
ChartRect chart_plot(const ChartRect& area);
// A plot narrower or lower than 20 pixels stays empty.
bool chart_plot_is_usable(const ChartRect& plot);
// False without buckets or with none above 0: CHART_NO_PAYOUTS stands in the middle.
bool chart_has_payouts(const std::vector<std::int64_t>& buckets);

// The value at the top of the axis: the largest bucket, rounded up to 1, 2, 5 or 10 times a power of ten.
std::int64_t chart_axis_top(const std::vector<std::int64_t>& buckets);
// The amount without the zeros behind its first decimal; "0" for 0.
std::string chart_axis_label(std::int64_t sats);
// Five lines, from the bottom up.
std::vector<ChartGridLine> chart_grid(const ChartRect& plot, std::int64_t top);

std::vector<ChartRect> chart_bars(const ChartRect& plot, const std::vector<std::int64_t>& buckets,
                                  std::int64_t top);
// The points of the line; a single one stands at the left edge.
std::vector<ChartPoint> chart_points(const ChartRect& plot, const std::vector<std::int64_t>& buckets,
                                     std::int64_t top);
// The text below the plot: the first label, and "  ->  " and the last if there is a second.
std::string chart_caption(const std::vector<std::string>& axis_labels);
