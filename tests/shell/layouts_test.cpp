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

TEST(PreviewLayout, FourCardsStandAboveThree) {
    PreviewLayout layout;
    ASSERT_TRUE(layout_preview_window(744, 521, layout));
    EXPECT_EQ(layout.cards[3], (Box{556, 42, 170, 74}));
    EXPECT_EQ(layout.cards[6], (Box{496, 126, 230, 74}));
    EXPECT_EQ(layout.list, (Box{16, 238, 712, 221}));
    EXPECT_EQ(layout.columns, (std::array{323, 126, 254}));
    EXPECT_FALSE(layout_preview_window(744, 199, layout));
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

TEST(HistoryLayout, TheChartTakesAThirdAndTheListTheRest) {
    const HistoryLayout layout = layout_history_window(744, 581);
    EXPECT_EQ(layout.filters[0], (Box{16, 32, 160, 200}));
    EXPECT_EQ(layout.filter_labels[2], (Box{352, 12, 160, 18}));
    EXPECT_EQ(layout.export_button, (Box{520, 30, 100, 34}));
    EXPECT_EQ(layout.close, (Box{628, 30, 100, 34}));
    EXPECT_EQ(layout.list, (Box{16, 72, 712, 208}));
    EXPECT_EQ(layout.payouts_line.y, 286);
    EXPECT_EQ(layout.fees_line.y, 306);
    EXPECT_EQ(layout.chart, (Box{16, 328, 712, 193}));
    EXPECT_EQ(layout.columns, (std::array{140, 191, 130, 191, 140}));
    const HistoryLayout smallest = layout_history_window(300, 300);
    EXPECT_EQ(smallest.filters[1], (Box{124, 32, 100, 200}));
    EXPECT_EQ(smallest.list.height, 80);
    EXPECT_EQ(smallest.chart.height, 140);
    EXPECT_EQ(smallest.columns[1], 67);
}

TEST(VaultLayout, TheAddressesTakeWhatTheRestLeaves) {
    const VaultLayout layout = layout_vault_window(624, 541);
    EXPECT_EQ(layout.vaults, (Box{16, 32, 312, 200}));
    EXPECT_EQ(layout.create, (Box{348, 30, 120, 34}));
    EXPECT_EQ(layout.close, (Box{478, 30, 114, 34}));
    EXPECT_EQ(layout.addresses, (Box{16, 148, 592, 93}));
    EXPECT_EQ(layout.paste, (Box{16, 249, 452, 28}));
    EXPECT_EQ(layout.add, (Box{478, 247, 130, 34}));
    EXPECT_EQ(layout.value, (Box{16, 285, 372, 24}));
    EXPECT_EQ(layout.save, (Box{488, 281, 120, 34}));
    EXPECT_EQ(layout.payout_value, (Box{398, 281, 210, 34}));
    EXPECT_EQ(layout.split, (Box{16, 321, 592, 90}));
    EXPECT_EQ(layout.message, (Box{16, 503, 592, 22}));
    EXPECT_EQ(layout_vault_window(300, 400).addresses.height, 80);
    EXPECT_EQ(layout_vault_window(300, 400).paste.width, 160);
}
