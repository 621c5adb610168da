// A rectangle in pixels, as the layouts hand it out.
#pragma once

struct Box {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    int right() const { return x + width; }
    int bottom() const { return y + height; }
    bool empty() const { return width <= 0 || height <= 0; }
    bool operator==(const Box&) const = default;
};
