// Where everything in the preview and the message window stands. Pure; sizes in pixels.
#pragma once

#include <array>
#include <cstddef>

#include "shell/box.h"

// The seven cards that are shown; the eighth, the app fee, has no place and is not painted: the fee stands in
// the text.
struct PreviewLayout {
    std::array<Box, 7> cards;
    Box frozen_note;
    Box heading;
    Box list;
    Box copy;
    Box close;
    std::array<int, 3> columns{};
};

// False, with nothing set, if the area is too small to lay out.
bool layout_preview_window(int width, int height, PreviewLayout& layout);

inline constexpr std::size_t MOST_LINKS = 12;

struct MessageLayout {
    Box text;
    std::array<Box, MOST_LINKS> links;
    Box copy;
    Box close;
    Box primary;
};

MessageLayout layout_message_window(int width, int height, std::size_t link_count, bool confirm);
// Counts every transaction, also those without a link; the system keeps it to the screen.
int message_window_height(std::size_t transaction_count);
