// Where everything stands in the windows around the main one. Pure; sizes in pixels.
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

struct HistoryLayout {
    std::array<Box, 3> filter_labels;  // token, range, chart
    std::array<Box, 3> filters;
    Box export_button;
    Box close;
    Box list;
    Box payouts_line;
    Box fees_line;
    Box chart;
    std::array<int, 5> columns{};
};

HistoryLayout layout_history_window(int width, int height);

struct VaultLayout {
    Box vaults_label;
    Box vaults;
    Box create;
    Box close;
    Box name_label;
    Box name;
    Box addresses_label;
    Box addresses;
    Box paste;
    Box add;
    Box value;
    Box save;
    Box payout_value;
    Box split;
    Box message;
};

VaultLayout layout_vault_window(int width, int height);
