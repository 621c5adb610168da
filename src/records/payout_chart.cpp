#include "records/payout_chart.h"

#include <algorithm>
#include <cmath>

#include "base/amounts.h"

namespace {

constexpr int LEAST_PLOT_SIDE = 20;
constexpr int GRID_STEPS = 4;
constexpr int BAR_GAP = 2;

int width_of(const ChartRect& rect) {
    return rect.right - rect.left;
}
int height_of(const ChartRect& rect) {
    return rect.bottom - rect.top;
}

std::int64_t largest(const std::vector<std::int64_t>& buckets) {
    return buckets.empty() ? 0 : *std::max_element(buckets.begin(), buckets.end());
}

// How far a value reaches above the bottom; a bucket below zero reaches nowhere.
int pixels_of(const ChartRect& plot, std::int64_t value, std::int64_t top) {
    if (value <= 0 || top <= 0) return 0;
    return static_cast<int>(static_cast<double>(height_of(plot) - 1) * static_cast<double>(value) /
                            static_cast<double>(top));
}

// i times top / 4, without the overflow of the product.
std::int64_t grid_value(std::int64_t top, int i) {
    return top / GRID_STEPS * i + top % GRID_STEPS * i / GRID_STEPS;
}

}  // namespace

ChartRect chart_plot(const ChartRect& area) {
    return {area.left + 62, area.top + 16, area.right - 12, area.bottom - 22};
}

bool chart_plot_is_usable(const ChartRect& plot) {
    return width_of(plot) >= LEAST_PLOT_SIDE && height_of(plot) >= LEAST_PLOT_SIDE;
}

bool chart_has_payouts(const std::vector<std::int64_t>& buckets) {
    return largest(buckets) > 0;
}

std::int64_t chart_axis_top(const std::vector<std::int64_t>& buckets) {
    constexpr double BEYOND_AMOUNTS = 9223372036854775808.0;
    const std::int64_t max = largest(buckets);
    if (max <= 0) return max;
    const double p = std::pow(10.0, std::floor(std::log10(static_cast<double>(max))));
    const double m = static_cast<double>(max) / p;
    const double step = m <= 1.0 ? 1.0 : m <= 2.0 ? 2.0 : m <= 5.0 ? 5.0 : 10.0;
    const double top = step * p + 0.5;
    if (top >= BEYOND_AMOUNTS || top < 1.0) return max;
    return static_cast<std::int64_t>(top);
}

std::string chart_axis_label(std::int64_t sats) {
    if (sats == 0) return "0";
    std::string label = format_bsv(sats);
    const std::size_t one_decimal = label.size() - 7;
    while (label.size() > one_decimal && label.back() == '0') label.pop_back();
    return label;
}

std::vector<ChartGridLine> chart_grid(const ChartRect& plot, std::int64_t top) {
    std::vector<ChartGridLine> lines;
    for (int i = 0; i <= GRID_STEPS; ++i) {
        lines.push_back(
            {plot.bottom - i * (height_of(plot) - 1) / GRID_STEPS, chart_axis_label(grid_value(top, i))});
    }
    return lines;
}

std::vector<ChartRect> chart_bars(const ChartRect& plot, const std::vector<std::int64_t>& buckets,
                                  std::int64_t top) {
    std::vector<ChartRect> bars;
    if (buckets.empty()) return bars;
    const int n = static_cast<int>(buckets.size());
    const int bar_w = std::max((width_of(plot) - (n * BAR_GAP + BAR_GAP)) / n, 2);
    int left = plot.left + BAR_GAP;
    for (const std::int64_t value : buckets) {
        bars.push_back({left, plot.bottom - pixels_of(plot, value, top), left + bar_w, plot.bottom});
        left += bar_w + BAR_GAP;
    }
    return bars;
}

std::vector<ChartPoint> chart_points(const ChartRect& plot, const std::vector<std::int64_t>& buckets,
                                     std::int64_t top) {
    std::vector<ChartPoint> points;
    const int n = static_cast<int>(buckets.size());
    for (int i = 0; i < n; ++i) {
        const int x = n == 1 ? plot.left : plot.left + i * width_of(plot) / (n - 1);
        points.push_back({x, plot.bottom - pixels_of(plot, buckets[static_cast<std::size_t>(i)], top)});
    }
    return points;
}

std::string chart_caption(const std::vector<std::string>& axis_labels) {
    if (axis_labels.empty()) return "";
    if (axis_labels.size() == 1) return axis_labels.front();
    return axis_labels.front() + "  ->  " + axis_labels.back();
}
