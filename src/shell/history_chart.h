// The chart of the history: a child window that paints the buckets of its data with the look in use.
#pragma once

#include "shell/shell.h"

struct PayoutChart {
    std::vector<std::int64_t> buckets;
    std::vector<std::string> axis_labels;
    bool bars = false;
};

// `chart` outlives the window, which paints what stands there; a change is shown by invalidating it.
HWND create_payout_chart(Shell& shell, HWND parent, int id, const PayoutChart& chart);
