#include "shell/window_layouts.h"

#include <algorithm>

#include "shell/main_layout.h"

bool layout_preview_window(int width, int height, PreviewLayout& layout) {
    if (width < SMALLEST_LAYOUT || height < SMALLEST_LAYOUT) return false;
    const int fourth = (width - 62) / 4;
    const int third = (width - 52) / 3;
    for (std::size_t i = 0; i < layout.cards.size(); ++i) {
        const int place = static_cast<int>(i);
        layout.cards[i] = i < 4 ? Box{16 + place * (fourth + 10), 42, fourth, 74}
                                : Box{16 + (place - 4) * (third + 10), 126, third, 74};
    }
    layout.frozen_note = {16, 12, width - 32, 22};
    layout.heading = {16, 212, width - 32, 22};
    layout.list = {16, 238, width - 32, std::max(height - 300, 80)};
    layout.copy = {16, height - 50, 110, 34};
    layout.close = {width - 126, height - 50, 110, 34};
    const int all = std::max(width - 40, 200);
    layout.columns = {all * 46 / 100, all * 18 / 100, all - all * 64 / 100};
    return true;
}

MessageLayout layout_message_window(int width, int height, std::size_t link_count, bool confirm) {
    MessageLayout layout;
    const int shown = static_cast<int>(std::min(link_count, MOST_LINKS));
    const int links = shown == 0 ? 0 : shown * 22 + 8;
    layout.text = {16, 16, width - 32, height - links - 78};
    for (int i = 0; i < shown; ++i)
        layout.links[static_cast<std::size_t>(i)] = {16, height - links - 50 + i * 22, width - 32, 20};
    layout.copy = {16, height - 50, confirm ? 100 : 110, 34};
    layout.close = {width - 116, height - 50, 100, 34};
    layout.primary = {width - 224, height - 50, 100, 34};
    return layout;
}

int message_window_height(std::size_t transaction_count) {
    return std::max(static_cast<int>(transaction_count) * 22 + 480, 420);
}
