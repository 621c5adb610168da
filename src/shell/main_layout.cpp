#include "shell/main_layout.h"

#include <algorithm>

#include "core/round_state.h"
#include "shell/shell_controls.h"

namespace {

constexpr int MARGIN = 16;
constexpr int CARD_TOP = 154;
constexpr int CARD_BOTTOM = 316;

int card_width(int width) {
    return std::clamp(width * 34 / 100, 250, 340);
}

void place_band(int width, std::vector<PlacedControl>& controls) {
    controls.push_back({CONTROL_SETTINGS, {width - 52, 12, 36, 36}});
    controls.push_back({CONTROL_CONNECT, {width - 134, 56, 118, 32}});
    controls.push_back({CONTROL_UNBIND, {width - 134, 94, 118, 32}});
}

void place_actions(int width, std::vector<PlacedControl>& controls) {
    const int card = card_width(width);
    const int x = card + 26;
    const int area = std::max(width - x - MARGIN, 360);
    const int third = (area - 20) / 3;
    const int half = (area - 10) / 2;
    controls.push_back({CONTROL_SNAPSHOT, {x, 154, third, 76}});
    controls.push_back({CONTROL_PREVIEW, {x + 10 + third, 154, third, 76}});
    controls.push_back({CONTROL_PAY, {x + 20 + 2 * third, 154, third, 76}});
    controls.push_back({CONTROL_HISTORY, {x, 240, half, 76}});
    controls.push_back({CONTROL_VAULT, {x + 10 + half, 240, area - half - 10, 76}});
    controls.push_back({CONTROL_WALLET_LABEL, {84, 190, card - 82, 26}});
    controls.push_back({CONTROL_WALLET_BALANCE, {84, 265, card - 82, 26}});
}

void place_token(int width, std::vector<PlacedControl>& controls) {
    controls.push_back({CONTROL_TOKEN_LABEL, {16, 336, 64, 22}});
    controls.push_back({CONTROL_TOKEN_BOX, {86, 332, std::max(width - 242, 160), 220}});
    controls.push_back({CONTROL_LOAD_TOKENS, {width - 146, 330, 130, 34}});
    controls.push_back({CONTROL_ORIGIN_LABEL, {16, 378, 64, 22}});
    controls.push_back({CONTROL_ORIGIN, {86, 374, width - 102, 28}});
}

void place_board(int width, int height, std::vector<PlacedControl>& controls) {
    const int list = std::max(height - 682, 80);
    controls.push_back({CONTROL_BOARD, {MARGIN, 414, width - 32, list}});
    controls.push_back({CONTROL_SUMMARY, {MARGIN, list + 422, width - 32, 108}});
    controls.push_back({CONTROL_AMOUNT_LABEL, {MARGIN, list + 534, 280, 26}});
    controls.push_back({CONTROL_AMOUNT, {MARGIN, list + 560, 180, 28}});
    controls.push_back({CONTROL_STATUS, {MARGIN, list + 596, std::max(width - 320, 120), 22}});
    controls.push_back({CONTROL_VERSION, {width - 296, list + 596, 280, 22}});
    controls.push_back({CONTROL_CLOSE, {MARGIN, height - 52, width - 32, 36}});
}

std::array<int, 5> board_columns(int width) {
    const int all = std::max(width - 56, 240);
    const int holder = all * 30 / 100;
    return {holder, 72, std::max(all - holder - 270, 80), 88, 110};
}

}  // namespace

MainLayout layout_main_window(int width, int height) {
    MainLayout layout;
    if (width < SMALLEST_LAYOUT || height < SMALLEST_LAYOUT) return layout;
    place_band(width, layout.controls);
    place_actions(width, layout.controls);
    place_token(width, layout.controls);
    place_board(width, height, layout.controls);
    layout.columns = board_columns(width);
    return layout;
}

Box wallet_card_box(int width) {
    return {MARGIN, CARD_TOP, card_width(width), CARD_BOTTOM - CARD_TOP};
}
