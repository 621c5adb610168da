#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/round_controller.h"
#include "shell/history_window.h"
#include "shell/message_window.h"
#include "shell/note_window.h"
#include "shell/settings_window.h"
#include "tests/windows/open_shell.h"
#include "wallet/binds.h"

using testing::ElementsAre;

namespace {

MessageWindow message_of(const std::string& text, std::size_t transactions, bool confirm) {
    MessageWindow message;
    message.title = "Pay";
    message.text = text;
    for (std::size_t i = 0; i < transactions; ++i) message.txids.push_back(FakeWallet::txid(i));
    message.confirm = confirm;
    return message;
}

std::string text_in(HWND window, int id) {
    return utf8_text(window_text(GetDlgItem(window, id)));
}

}  // namespace

TEST(MessageWindowOnScreen, ShowsTextAndAtMostTwelveLinks) {
    OpenShell open;
    EXPECT_TRUE(show_message_window(open.shell, message_of("one\ntwo\r\nthree", 15, false)));
    open.pump();
    const HWND window = open.shell.message;
    EXPECT_EQ(text_in(window, 1301), "one\r\ntwo\r\nthree");
    EXPECT_EQ(text_in(window, 1400), "WhatsOnChain  " + FakeWallet::txid(0));
    EXPECT_EQ(text_in(window, 1411), "WhatsOnChain  " + FakeWallet::txid(11));
    EXPECT_EQ(GetDlgItem(window, 1412), nullptr);
    EXPECT_EQ(text_in(window, 1302), "Close");
    open.press(1303, window);
    EXPECT_EQ(clipboard_text(), "one\r\ntwo\r\nthree");
    show_message_window(open.shell, message_of("another", 0, false));
    EXPECT_FALSE(IsWindow(window)) << "a new one takes the old one's place";
    open.press(1302, open.shell.message);
    EXPECT_EQ(open.shell.message, nullptr);
}

TEST(MessageWindowOnScreen, IsOnTheScreenWithItsButtonsHoweverManyWerePaid) {
    OpenShell open;
    show_message_window(open.shell, message_of("Paid 400.", 400, false));
    RECT place{};
    RECT screen{};
    GetWindowRect(open.shell.message, &place);
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &screen, 0);
    EXPECT_LE(place.bottom, screen.bottom);
    EXPECT_GE(place.top, screen.top);
    RECT close{};
    GetWindowRect(GetDlgItem(open.shell.message, 1302), &close);
    EXPECT_LE(close.bottom, place.bottom);
}

TEST(MessageWindowOnScreen, SaysYesOnlyForItsPrimaryButton) {
    OpenShell open;
    struct Row {
        const char* how;
        UINT message;
        WPARAM first;
        bool answer;
    };
    for (const Row& row :
         {Row{"primary button", WM_COMMAND, 1304, true}, Row{"Cancel", WM_COMMAND, 1302, false},
          Row{"Escape", WM_COMMAND, IDCANCEL, false}, Row{"frame", WM_CLOSE, 0, false}}) {
        bool owner_enabled = true;
        std::string primary;
        OpenShell::when_asked([&] {
            owner_enabled = IsWindowEnabled(open.main()) != 0;
            primary = text_in(open.shell.message, 1304);
            PostMessageW(open.shell.message, row.message, row.first, 0);
        });
        EXPECT_EQ(show_message_window(open.shell, message_of("Pay?", 0, true)), row.answer) << row.how;
        EXPECT_FALSE(owner_enabled);
        EXPECT_EQ(primary, "Pay");
        EXPECT_TRUE(IsWindowEnabled(open.main()));
        EXPECT_EQ(open.shell.message, nullptr);
    }
}

TEST(PreviewWindow, ShowsTheFrozenListAndCopiesItsText) {
    OpenShell open;
    open.freeze(board().market("alice", "300").nowhere("bob", "100").reserve("issuer", "1"), "1");
    const HWND window = open.shell.preview;
    ASSERT_NE(window, nullptr);
    const HWND list = GetDlgItem(window, 1601);
    ASSERT_EQ(ListView_GetItemCount(list), 2);
    EXPECT_THAT(row_of(list, 0), ElementsAre("alice", "300", "0.75000000 BSV"));
    EXPECT_THAT(row_of(list, 1), ElementsAre("bob", "100", "skip"));
    EXPECT_EQ(text_in(window, 1604), "This list stays frozen until you Snapshot again.");
    open.press(1603, window);
    EXPECT_NE(clipboard_text().find("\r\nRemainder after pro-rata: 0.25000000 BSV"), std::string::npos);
    // The seven cards are painted, and nothing stands where an eighth would.
    EXPECT_EQ(colour_at(window, 100, 110), 0x2A2436U);
    EXPECT_EQ(colour_at(window, client_size(window).cx / 2, 205), 0x120C1CU);
    SendMessageW(window, WM_KEYDOWN, VK_ESCAPE, 0);
    EXPECT_EQ(open.shell.preview, nullptr);
}

TEST(PayButton, SendsTheFeeAndThenEachHolderOnceConfirmed) {
    OpenShell open;
    open.freeze(board().market("alice", "300").market("bob", "100"), "1");
    OpenShell::when_asked([&] { PostMessageW(open.shell.message, WM_COMMAND, 1304, 0); });
    open.press(CONTROL_PAY);
    open.work();
    EXPECT_THAT(open.wallet.sends,
                ElementsAre(FakeSend{settings().fee_address, 1'000'000, ""},
                            FakeSend{"1alice", 75'000'000, ""}, FakeSend{"1bob", 25'000'000, ""}));
    EXPECT_NE(GetDlgItem(open.shell.message, 1402), nullptr) << "a link for each of three transactions";
    EXPECT_FALSE(IsWindowEnabled(open.control(CONTROL_PAY)));
    EXPECT_EQ(cell_of(open.control(1009), 0, 4), "0.75000000");
}

TEST(SettingsWindow, SwitchesTheThemeOfOpenWindows) {
    OpenShell open;
    open.press(CONTROL_SETTINGS);
    const HWND window = open.shell.settings;
    open.press(CONTROL_SETTINGS);
    EXPECT_EQ(open.shell.settings, window) << "one instance";
    const HWND box = GetDlgItem(window, 1202);
    EXPECT_THAT(items_of(box), ElementsAre("Gold-Purple", "Forest", "Rose", "Gold"));
    ComboBox_SetCurSel(box, 2);
    open.command(1202, CBN_SELCHANGE, window);
    EXPECT_EQ(colour_at(window, 350, 10), 0x12080CU);
    EXPECT_EQ(colour_at(open.main(), 5, 320), 0x12080CU);
    open.press(1204, window);
    EXPECT_EQ(window_text(open.shell.message), L"Terms of Use");
    open.press(1203, window);
    EXPECT_EQ(open.shell.settings, nullptr);
}

TEST(NoteWindow, KeepsANoteThatTheBoardThenShows) {
    OpenShell open;
    open.take_snapshot(board().market("alice", "300"));
    open_note_window(open.shell, 0);
    const HWND window = open.shell.note;
    ASSERT_NE(window, nullptr);
    set_window_text(GetDlgItem(window, 1452), "asked for monthly");
    open.press(1453, window);
    EXPECT_EQ(cell_of(open.control(1009), 0, 0), "alice  \xC3\x82\xC2\xB7 note");
}

TEST(NoteWindow, WritesNothingIntoTheFileOfAnotherWallet) {
    OpenShell open;
    open.take_snapshot(board().market("alice", "300"));
    open_note_window(open.shell, 0);
    const HWND window = open.shell.note;
    set_window_text(GetDlgItem(window, 1452), "asked for monthly");
    qv_clasp_set_active_wallet_id("w2");
    open.press(1453, window);
    EXPECT_EQ(open.shell.note, nullptr);
    EXPECT_FALSE(open.home.exists("/bursaria/w2_holder_notes.json"));
    qv_clasp_set_active_wallet_id("");
}

TEST(HistoryWindow, ShowsTheLedgerNewestFirstWithItsSums) {
    OpenShell open;
    const Json entries = {
        {{"kind", "app_fee"}, {"name", "BA"}, {"sats", 1'000'000}, {"token_id", "app_fee"}, {"unix", 10}},
        {{"dest", "1a"},
         {"kind", "payout"},
         {"name", "alice"},
         {"sats", 500},
         {"token_id", "t_0"},
         {"unix", 20}},
        {{"dest", "1b"},
         {"kind", "payout"},
         {"name", "bob"},
         {"sats", 700},
         {"token_id", "u_0"},
         {"unix", 30}}};
    open.home.write("/bursaria/none_paid.json", Json{{"entries", entries}});
    open.press(CONTROL_HISTORY);
    const HWND window = open.shell.history;
    ASSERT_NE(window, nullptr);
    const HWND list = GetDlgItem(window, 1104);
    ASSERT_EQ(ListView_GetItemCount(list), 2);
    EXPECT_EQ(cell_of(list, 0, 1), "bob");
    EXPECT_EQ(cell_of(list, 0, 2), "0.00000700 BSV");
    EXPECT_EQ(text_in(window, 1112), "Total fees paid: 0.01000000 BSV");
    ComboBox_SetCurSel(GetDlgItem(window, 1101), 1);
    open.command(1101, CBN_SELCHANGE, window);
    EXPECT_EQ(ListView_GetItemCount(list), 1) << "one token";
}

TEST(VaultWindow, NeedsAWallet) {
    OpenShell open;
    open.press(CONTROL_VAULT);
    EXPECT_EQ(open.shell.vault, nullptr);
    ASSERT_NE(open.shell.message, nullptr);
}
