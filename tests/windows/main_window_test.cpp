#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/round_controller.h"
#include "shell/shell_controls.h"
#include "tests/windows/open_shell.h"

using testing::ElementsAre;

namespace {

HolderBoard three_holders() {
    return board().market("alice", "300").nowhere("bob", "50").reserve("issuer", "650");
}

void notify_board(const OpenShell& open, UINT code, int row, int column) {
    NMITEMACTIVATE click{};
    click.hdr = {open.control(CONTROL_BOARD), CONTROL_BOARD, code};
    click.iItem = row;
    click.iSubItem = column;
    SendMessageW(open.main(), WM_NOTIFY, CONTROL_BOARD, reinterpret_cast<LPARAM>(&click));
}

int middle_of_row(HWND list, int row) {
    RECT place{};
    ListView_GetItemRect(list, row, &place, LVIR_BOUNDS);
    return (place.top + place.bottom) / 2;
}

}  // namespace

TEST(MainWindow, StandsWithTheTextsAndStatesOfAProgramThatJustStarted) {
    const OpenShell open;
    struct Row {
        int id;
        const char* text;
        bool enabled = true;
    };
    for (const Row& row :
         {Row{1001, "Connect"}, Row{1002, "Unbind"}, Row{1003, "not connected"}, Row{1004, "-"},
          Row{1006, "Load tokens"}, Row{1008, "Snapshot"}, Row{1010, "Snapshot a token you hold or minted."},
          Row{1012, "Preview"}, Row{1013, "Pay", false},
          Row{1014, "Connect Clasp, pick a token, Snapshot, Preview, then Pay."}, Row{1017, "Token"},
          Row{1018, "Origin"}, Row{1019, "Pay Dividends (BSV)"}, Row{1020, "Close"}, Row{1021, "History"},
          Row{1024, "Vault"}, Row{1025, "Version 0.002"}}) {
        EXPECT_EQ(open.text(row.id), row.text) << row.id;
        EXPECT_EQ(IsWindowEnabled(open.control(row.id)) != 0, row.enabled) << row.id;
    }
    EXPECT_EQ(window_text(open.main()), L"Bursaria");
    const HWND header = ListView_GetHeader(open.control(CONTROL_BOARD));
    std::vector<std::wstring> titles;
    for (int i = 0; i < Header_GetItemCount(header); ++i) {
        wchar_t title[32] = L"";
        HDITEMW item{};
        item.mask = HDI_TEXT;
        item.pszText = title;
        item.cchTextMax = 32;
        Header_GetItem(header, i, &item);
        titles.emplace_back(title);
    }
    EXPECT_THAT(titles, ElementsAre(L"Holder", L"Lots", L"Pay to", L"Role", L"Received"));
}

TEST(MainWindow, IsNeverSmallerThanItsSmallestSizeAndLaysOutWhatItIsGiven) {
    const OpenShell open;
    SetWindowPos(open.main(), nullptr, 0, 0, 300, 300, SWP_NOZORDER);
    RECT frame{};
    GetWindowRect(open.main(), &frame);
    EXPECT_EQ(frame.right - frame.left, 920);
    EXPECT_EQ(frame.bottom - frame.top, 780);
    SetWindowPos(open.main(), nullptr, 0, 0, 1600, 1200, SWP_NOZORDER);
    const SIZE area = client_size(open.main());
    const SIZE list = client_size(open.control(CONTROL_BOARD));
    EXPECT_EQ(list.cy + 2 * GetSystemMetrics(SM_CYBORDER), area.cy - 682);
}

TEST(MainWindow, ShowsEachThemeAtOnceAndRemembersIt) {
    OpenShell open;
    open.take_snapshot(three_holders());
    struct Row {
        std::size_t theme;
        const char* name;
        Colour window, band, card, panel;
    };
    for (const Row& row : {Row{1, "forest", 0x080808, 0x0E1610, 0x1C201C, 0x0A0C0A},
                           Row{2, "rose", 0x12080C, 0x240C16, 0x2A121C, 0x1C0C12},
                           Row{3, "gold", 0x0C0A04, 0x1C1608, 0x241C0A, 0x161208},
                           Row{0, "gold-purple", 0x120C1C, 0x0A0810, 0x2A2436, 0x1C142A}}) {
        apply_theme(open.shell, row.theme);
        open.pump();
        EXPECT_EQ(colour_at(open.main(), 5, 320), row.window) << row.name;
        EXPECT_EQ(colour_at(open.main(), 5, 5), row.band) << row.name;
        EXPECT_EQ(colour_at(open.main(), 40, 225), row.card) << row.name;
        const HWND list = open.control(CONTROL_BOARD);
        EXPECT_EQ(colour_at(list, 600, client_size(list).cy - 5), row.panel) << row.name;
        EXPECT_EQ(json_text(open.home.read_json("/bursaria/ui.json"), "theme"), row.name);
    }
}

TEST(Board, ShowsItsHoldersAndWhatEachIs) {
    OpenShell open;
    open.take_snapshot(three_holders());
    const HWND list = open.control(CONTROL_BOARD);
    ASSERT_EQ(ListView_GetItemCount(list), 3);
    EXPECT_THAT(row_of(list, 0), ElementsAre("alice", "300", "1alice", "in-market", "-"));
    EXPECT_THAT(row_of(list, 1), ElementsAre("bob", "50", "-", "in-market", "-"));
    EXPECT_THAT(row_of(list, 2), ElementsAre("issuer", "650", "-", "reserve", "-"));
    EXPECT_EQ(
        open.text(CONTROL_SUMMARY),
        "Token: Meadow\r\nTotal lots: 1000      In-market: 350      This wallet: 650      Excluded: 0\r\n"
        "Heads: 2      Paid out: 0.00000000 BSV");
}

TEST(Board, PaintsAnExcludedRowAndTakesTheFrozenListAway) {
    OpenShell open;
    open.freeze(three_holders(), "1");
    EXPECT_TRUE(IsWindowEnabled(open.control(CONTROL_PAY)));
    const HWND list = open.control(CONTROL_BOARD);
    const int x = 500;
    EXPECT_EQ(colour_at(list, x, middle_of_row(list, 0)), 0x1C142AU);
    open.shell.round.state.selected_row = 0;
    open.command(COMMAND_EXCLUDE);
    EXPECT_EQ(cell_of(list, 0, 3), "excluded");
    EXPECT_EQ(colour_at(list, x, middle_of_row(list, 0)), EXCLUDED_ROW);
    EXPECT_EQ(open.status(), "Excluded alice.");
    EXPECT_FALSE(IsWindowEnabled(open.control(CONTROL_PAY)));
    open.command(COMMAND_INCLUDE);
    EXPECT_EQ(cell_of(list, 0, 3), "in-market");
    EXPECT_EQ(colour_at(list, x, middle_of_row(list, 0)), 0x1C142AU);
}

TEST(Board, CopiesACellOrARow) {
    OpenShell open;
    open.take_snapshot(three_holders());
    notify_board(open, NM_DBLCLK, 0, 2);
    EXPECT_EQ(clipboard_text(), "1alice");
    EXPECT_EQ(open.status(), "Copied cell. Ctrl+C copies the whole row.");
    open.shell.round.state.selected_row = 1;
    open.command(COMMAND_COPY_ROW);
    EXPECT_EQ(clipboard_text(), "bob\t50\t-\tin-market\t-");
    EXPECT_EQ(open.status(), "Copied row.");
}

TEST(VersionLine, SaysWhatTheCheckFoundAndAsksOnlyForAnUpdate) {
    OpenShell open;
    struct Row {
        int latest;
        std::string line;
        bool asks;
    };
    const std::string update = "Update available, " + settings().update_page;
    for (const Row& row :
         {Row{-1, "Version 0.002", false}, Row{2, "Version 0.002", false}, Row{3, update, true}}) {
        std::string question;
        if (row.asks)
            OpenShell::when_asked([&question] {
                HWND box = FindWindowW(L"#32770", L"Bursaria update");
                question = utf8_text(window_text(GetDlgItem(box, 0xFFFF)));
                EndDialog(box, IDNO);
            });
        SendMessageW(open.main(), WM_APP_UPDATE, static_cast<WPARAM>(row.latest + 1), 0);
        EXPECT_EQ(open.text(CONTROL_VERSION), row.line);
        EXPECT_EQ(question.find("This build:  0.002\nLatest:      0.003") != std::string::npos, row.asks)
            << question;
    }
}
