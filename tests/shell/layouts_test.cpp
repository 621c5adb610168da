#include <gtest/gtest.h>

#include <algorithm>

#include "core/round_state.h"
#include "shell/main_layout.h"
#include "shell/shell_controls.h"
#include "shell/window_layouts.h"

namespace {

Box box_of(const MainLayout& layout, int id) {
    const auto found = std::find_if(layout.controls.begin(), layout.controls.end(),
                                    [id](const PlacedControl& placed) { return placed.id == id; });
    return found == layout.controls.end() ? Box{} : found->box;
}

}  // namespace

TEST(MainLayout, PlacesEachControlInAWindowOfTheFirstSize) {
    const MainLayout layout = layout_main_window(1024, 861);
    struct Row {
        int id;
        Box box;
    };
    constexpr Row ROWS[] = {
        {CONTROL_SETTINGS, {972, 12, 36, 36}},        {CONTROL_UNBIND, {890, 94, 118, 32}},
        {CONTROL_SNAPSHOT, {366, 154, 207, 76}},      {CONTROL_PREVIEW, {583, 154, 207, 76}},
        {CONTROL_PAY, {800, 154, 207, 76}},           {CONTROL_HISTORY, {366, 240, 316, 76}},
        {CONTROL_VAULT, {692, 240, 316, 76}},         {CONTROL_WALLET_LABEL, {84, 190, 258, 26}},
        {CONTROL_WALLET_BALANCE, {84, 265, 258, 26}}, {CONTROL_TOKEN_BOX, {86, 332, 782, 220}},
        {CONTROL_BOARD, {16, 414, 992, 179}},         {CONTROL_SUMMARY, {16, 601, 992, 108}},
        {CONTROL_AMOUNT, {16, 739, 180, 28}},         {CONTROL_STATUS, {16, 775, 704, 22}},
        {CONTROL_VERSION, {728, 775, 280, 22}},       {CONTROL_CLOSE, {16, 809, 992, 36}},
    };
    for (const Row& row : ROWS) EXPECT_EQ(box_of(layout, row.id), row.box) << row.id;
    EXPECT_EQ(layout.controls.size(), 22U);
    EXPECT_EQ(layout.columns, (std::array{290, 72, 408, 88, 110}));
    EXPECT_EQ(wallet_card_box(1024), (Box{16, 154, 340, 162}));
}

TEST(MainLayout, ALowWindowKeepsItsBoardAndPushesTheRestDown) {
    const MainLayout layout = layout_main_window(904, 700);
    EXPECT_EQ(box_of(layout, CONTROL_BOARD).height, 80);
    EXPECT_EQ(box_of(layout, CONTROL_STATUS).y, 676);
    const MainLayout narrow = layout_main_window(300, 600);
    EXPECT_EQ(wallet_card_box(300).width, 250);
    EXPECT_EQ(box_of(narrow, CONTROL_TOKEN_BOX).width, 160);
    EXPECT_EQ(narrow.columns[2], 80);
    EXPECT_TRUE(layout_main_window(199, 600).controls.empty());
    EXPECT_TRUE(layout_main_window(600, 199).controls.empty());
}

TEST(MessageLayout, LinksTakeTheirRoomFromTheText) {
    const MessageLayout plain = layout_message_window(700, 440, 0, false);
    EXPECT_EQ(plain.text, (Box{16, 16, 668, 362}));
    EXPECT_EQ(plain.copy.width, 110);
    const MessageLayout linked = layout_message_window(700, 440, 2, true);
    EXPECT_EQ(linked.text.height, 310);
    EXPECT_EQ(linked.links[1], (Box{16, 360, 668, 20}));
    EXPECT_EQ(linked.primary, (Box{476, 390, 100, 34}));
    EXPECT_EQ(linked.close.x, 584);
    EXPECT_EQ(message_window_height(0), 480);
    EXPECT_EQ(message_window_height(20), 920);
}
