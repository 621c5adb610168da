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

HistoryLayout layout_history_window(int width, int height) {
    constexpr int DROPPED_HEIGHT = 200;
    HistoryLayout layout;
    const int column = std::max((std::max(width - 248, 240) - 16) / 3, 100);
    for (int i = 0; i < 3; ++i) {
        const int x = 16 + i * (column + 8);
        layout.filter_labels[static_cast<std::size_t>(i)] = {x, 12, column, 18};
        layout.filters[static_cast<std::size_t>(i)] = {x, 32, column, DROPPED_HEIGHT};
    }
    layout.export_button = {width - 224, 30, 100, 34};
    layout.close = {width - 116, 30, 100, 34};
    const int chart = std::max(height / 3, 140);
    const int list = std::max(height - chart - 180, 80);
    layout.list = {16, 72, width - 32, list};
    layout.payouts_line = {16, list + 78, width - 32, 20};
    layout.fees_line = {16, list + 98, width - 32, 20};
    layout.chart = {16, list + 120, width - 32, chart};
    const int who = std::max(width - 60, 200) * 28 / 100;
    layout.columns = {140, who, 130, who, 140};
    return layout;
}

VaultLayout layout_vault_window(int width, int height) {
    VaultLayout layout;
    const int list = std::max(height - 448, 80);
    layout.vaults_label = {16, 12, 80, 18};
    layout.vaults = {16, 32, std::max(width - 312, 160), 200};
    layout.create = {width - 276, 30, 120, 34};
    layout.close = {width - 146, 30, 114, 34};
    layout.name_label = {16, 72, 200, 18};
    layout.name = {16, 92, width - 32, 28};
    layout.addresses_label = {16, 128, 400, 18};
    layout.addresses = {16, 148, width - 32, list};
    layout.paste = {16, list + 156, std::max(width - 172, 160), 28};
    layout.add = {width - 146, list + 154, 130, 34};
    layout.value = {16, list + 192, width - 252, 24};
    layout.save = {width - 136, list + 188, 120, 34};
    layout.payout_value = {width - 226, list + 188, 210, 34};
    layout.split = {16, list + 228, width - 32, 90};
    layout.message = {16, height - 38, width - 32, 22};
    return layout;
}
