// Where everything in the main window stands, for a client area of a given size. Pure; sizes in pixels.
#pragma once

#include <array>
#include <vector>

#include "shell/box.h"

inline constexpr int BAND_HEIGHT = 140;
inline constexpr int SMALLEST_LAYOUT = 200;

struct PlacedControl {
    int id = 0;
    Box box;
};

struct MainLayout {
    std::vector<PlacedControl> controls;  // nothing if the area is too small to lay out
    std::array<int, 5> columns{};         // widths of the board's columns
};

MainLayout layout_main_window(int width, int height);

// The card behind the wallet's label and balance; painted, not a control.
Box wallet_card_box(int width);
