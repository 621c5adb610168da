#include "shell/main_window.h"

#include <array>
#include <utility>

#include "core/round_controller.h"
#include "core/round_status.h"
#include "platform/program.h"
#include "program/page_version.h"
#include "program/update_check.h"
#include "shell/board_list.h"
#include "shell/child_controls.h"
#include "shell/history_window.h"
#include "shell/list_columns.h"
#include "shell/main_layout.h"
#include "shell/message_window.h"
#include "shell/screen_reader.h"
#include "shell/settings_window.h"
#include "shell/shell_controls.h"
#include "shell/shell_texts.h"
#include "shell/vault_window.h"
#include "shell/window_class.h"

namespace {

constexpr ChildPlan BUTTONS_AND_LABELS[] = {
    {CONTROL_CONNECT, ChildKind::Button, "Connect", 0, {520, 22, 110, 34}},
    {CONTROL_UNBIND, ChildKind::Button, "Unbind", 0, {640, 22, 100, 34}},
    {CONTROL_SETTINGS, ChildKind::Button, "", 0, {750, 20, 40, 40}},
    {CONTROL_SNAPSHOT, ChildKind::Button, "Snapshot", 0, {0, 0, 180, 76}},
    {CONTROL_PREVIEW, ChildKind::Button, "Preview", 0, {0, 0, 180, 76}},
    {CONTROL_PAY, ChildKind::Button, "Pay", 0, {0, 0, 180, 76}},
    {CONTROL_HISTORY, ChildKind::Button, "History", 0, {0, 0, 180, 76}},
    {CONTROL_VAULT, ChildKind::Button, "Vault", 0, {0, 0, 180, 76}},
    {CONTROL_WALLET_LABEL, ChildKind::Label, "not connected", SS_ENDELLIPSIS, {16, 96, 240, 26}},
    {CONTROL_WALLET_BALANCE, ChildKind::Label, "-", SS_ENDELLIPSIS, {16, 140, 240, 26}},
    {CONTROL_TOKEN_LABEL, ChildKind::Label, "Token", 0, {16, 128, 64, 22}},
    {CONTROL_TOKEN_BOX, ChildKind::Drop, "", 0, {16, 148, 430, 220}},
    {CONTROL_LOAD_TOKENS, ChildKind::Button, "Load tokens", 0, {456, 146, 130, 34}},
    {CONTROL_ORIGIN_LABEL, ChildKind::Label, "Origin", 0, {16, 190, 64, 22}},
    {CONTROL_ORIGIN, ChildKind::Edit, "", 0, {16, 210, 724, 28}},
};
// Between them, in the order of the Tab key, stands the board.
constexpr ChildPlan BELOW_THE_BOARD[] = {
    {CONTROL_SUMMARY, ChildKind::Label, "Snapshot a token you hold or minted.", 0, {16, 458, 724, 108}},
    {CONTROL_AMOUNT_LABEL, ChildKind::Label, "Pay Dividends (BSV)", 0, {16, 522, 220, 20}},
    {CONTROL_AMOUNT, ChildKind::Edit, "", 0, {16, 542, 180, 28}},
    {CONTROL_STATUS,
     ChildKind::Label,
     "Connect Clasp, pick a token, Snapshot, Preview, then Pay.",
     0,
     {16, 586, 560, 22}},
    {CONTROL_VERSION, ChildKind::Label, "", SS_RIGHT | SS_NOTIFY | SS_ENDELLIPSIS, {600, 586, 280, 22}},
    {CONTROL_CLOSE, ChildKind::Button, "Close", 0, {16, 630, 724, 36}},
};

struct MainRecord {
    Shell& shell;
    HWND window = nullptr;

    explicit MainRecord(Shell& of) : shell(of) {}
    ~MainRecord() { shell.main = nullptr; }
    MainRecord(const MainRecord&) = delete;
    MainRecord& operator=(const MainRecord&) = delete;

    LRESULT on_message(UINT number, WPARAM first, LPARAM second);
    void on_create();
    void on_size();
    void on_paint();
    void on_command(int id, int event);
    void on_button(int id);
    void on_version_clicked();
    void on_update_result(int latest_version);
    void on_round_message(LPARAM result);
    bool on_cursor(HWND over);
    LRESULT on_static_colours(HDC dc, HWND label);
    void on_destroy();

    HWND control(int id) const { return GetDlgItem(window, id); }
    void start_update_worker();
};

void MainRecord::on_create() {
    shell.main = window;
    choose_palette(shell.theme, shell.theme.index);
    make_fonts(shell.theme);
    apply_dark_frame(window, shell.theme.palette());
    create_children(shell, window, BUTTONS_AND_LABELS);
    create_board_list(shell, window);
    create_children(shell, window, BELOW_THE_BOARD);
    name_for_screen_readers(control(CONTROL_SETTINGS), L"Settings");
    EnableWindow(control(CONTROL_PAY), FALSE);
    on_size();
    on_window_created(shell.round);
    set_window_text(control(CONTROL_VERSION), version_line(false, settings()));
    start_update_worker();
}

void MainRecord::start_update_worker() {
    shell.round.workers.start_worker([&main = shell.main] {
        const int latest_version = fetch_latest_version();
        if (HWND target = main.load())
            PostMessageW(target, WM_APP_UPDATE, static_cast<WPARAM>(latest_version) + 1, 0);
    });
}

void MainRecord::on_size() {
    const SIZE size = client_size(window);
    const MainLayout layout = layout_main_window(size.cx, size.cy);
    if (layout.controls.empty()) return;
    place_children(window, layout.controls);
    for (const int id : {CONTROL_UNBIND, CONTROL_CONNECT, CONTROL_SETTINGS})
        SetWindowPos(control(id), HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    set_column_widths(control(CONTROL_BOARD), layout.columns);
}

void draw_wallet_card(const Shell& shell, HDC dc, int width) {
    const Palette& palette = shell.theme.palette();
    const RECT card = rect_of(wallet_card_box(width));
    if (card.right - card.left <= 8) return;
    const LONG middle = (card.top + card.bottom) / 2;
    draw_rounded_card(dc, card, 18, wallet_card_fill(shell.theme.index), palette.border);
    draw_line(dc, card.left + 16, middle, card.right - 16, middle, palette.border);
    HFONT font = shell.theme.small_font.get();
    constexpr UINT ONE_LINE = DT_LEFT | DT_TOP | DT_SINGLELINE;
    draw_text(dc, L"Wallet", {card.left + 68, card.top + 14, card.right, middle}, font, palette.muted,
              ONE_LINE);
    draw_text(dc, L"Balance", {card.left + 68, middle + 10, card.right, card.bottom}, font, palette.muted,
              ONE_LINE);
    draw_wallet_icon(dc, card.left + 14, card.top + 18);
}

void MainRecord::on_paint() {
    PAINTSTRUCT paint{};
    HDC dc = BeginPaint(window, &paint);
    const SIZE size = client_size(window);
    const Palette& palette = shell.theme.palette();
    fill_box(dc, {0, BAND_HEIGHT, size.cx, size.cy}, palette.window_bg);
    draw_band(dc, size.cx, BAND_HEIGHT, shell.banner.get(), palette.band);
    draw_wallet_card(shell, dc, size.cx);
    EndPaint(window, &paint);
}

void MainRecord::on_button(int id) {
    Round& round = shell.round;
    switch (id) {
        case CONTROL_CONNECT:
            return on_connect(round);
        case CONTROL_UNBIND:
            return on_unbind(round);
        case CONTROL_LOAD_TOKENS:
            return on_load_tokens(round);
        case CONTROL_SNAPSHOT:
            return on_snapshot(round);
        case CONTROL_PREVIEW:
            return on_preview(round);
        case CONTROL_PAY:
            return on_pay(round);
        case CONTROL_SETTINGS:
            return open_settings_window(shell);
        case CONTROL_HISTORY:
            return open_history_window(shell);
        case CONTROL_VAULT:
            return open_vault_window(shell);
        case CONTROL_VERSION:
            return on_version_clicked();
        case CONTROL_CLOSE:
            PostMessageW(window, WM_CLOSE, 0, 0);
            return;
        default:
            on_board_command(shell, id);
    }
}

void MainRecord::on_command(int id, int event) {
    if (id == CONTROL_TOKEN_BOX) {
        if (event == CBN_SELCHANGE) on_token_selection_changed(shell.round);
    } else if (id == CONTROL_AMOUNT) {
        if (event == EN_CHANGE) on_amount_changed(shell.round);
    } else if (event == BN_CLICKED) {
        // A click on a label and a choice of a menu carry the same event.
        on_button(id);
    }
}

void MainRecord::on_version_clicked() {
    if (shell.update_available) open_page(settings().update_page);
}

void MainRecord::on_update_result(int latest_version) {
    shell.latest_version = latest_version;
    shell.update_available = is_update(latest_version);
    set_window_text(control(CONTROL_VERSION), version_line(shell.update_available, settings()));
    InvalidateRect(control(CONTROL_VERSION), nullptr, TRUE);
    if (!shell.update_available) return;
    const std::wstring question = wide_text(update_question(latest_version, settings()));
    const int answer = MessageBoxW(window, question.c_str(), L"Bursaria update", MB_YESNO | MB_ICONWARNING);
    if (answer == IDYES) open_page(settings().update_page);
}

void MainRecord::on_round_message(LPARAM result) {
    const std::unique_ptr<RoundMessage> message(reinterpret_cast<RoundMessage*>(result));
    if (message != nullptr) ::on_message(shell.round, *message);
}

bool MainRecord::on_cursor(HWND over) {
    if (!shell.update_available || over != control(CONTROL_VERSION)) return false;
    SetCursor(LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_HAND)));
    return true;
}

Colour label_colour(const Shell& shell, int id) {
    const Palette& palette = shell.theme.palette();
    switch (id) {
        case CONTROL_STATUS:
            return shell.round.state.status_animated ? RUNNING_GREEN : palette.text;
        case CONTROL_WALLET_LABEL:
        case CONTROL_WALLET_BALANCE:
        case CONTROL_SUMMARY:
        case CONTROL_AMOUNT_LABEL:
            return palette.text;
        case CONTROL_VERSION:
            if (shell.update_available) return UPDATE_RED;
            return shell.latest_version >= 0 ? palette.accent : palette.muted;
        default:
            return palette.muted;
    }
}

LRESULT MainRecord::on_static_colours(HDC dc, HWND label) {
    const int id = GetDlgCtrlID(label);
    RECT place{};
    GetWindowRect(label, &place);
    MapWindowPoints(HWND_DESKTOP, window, reinterpret_cast<POINT*>(&place), 2);
    const Theme& theme = shell.theme;
    HBRUSH brush = theme.window_brush.get();
    if (id == CONTROL_WALLET_LABEL || id == CONTROL_WALLET_BALANCE)
        brush = theme.card_brush.get();
    else if (place.top < BAND_HEIGHT)
        brush = theme.band_brush.get();
    return static_colours(dc, label_colour(shell, id), brush);
}

void MainRecord::on_destroy() {
    // Workers find no window to post to from here on.
    shell.main = nullptr;
    release_drawing_objects(shell.theme);
    shell.banner.reset();
    shell.seal.reset();
    if (shell.kept_icon != nullptr) DestroyIcon(std::exchange(shell.kept_icon, nullptr));
    PostQuitMessage(0);
}

LRESULT MainRecord::on_message(UINT number, WPARAM first, LPARAM second) {
    switch (number) {
        case WM_CREATE:
            on_create();
            return 0;
        case WM_SIZE:
            on_size();
            return 0;
        case WM_GETMINMAXINFO:
            hold_smallest_size(second, 920, 780);
            return 0;
        case WM_ERASEBKGND:
            return 1;
        case WM_PAINT:
            on_paint();
            return 0;
        case WM_COMMAND:
            on_command(LOWORD(first), HIWORD(first));
            return 0;
        case WM_NOTIFY:
            if (first == CONTROL_BOARD) return on_board_notify(shell, second);
            return 0;
        case WM_TIMER:
            if (first == DOTS_TIMER_ID) on_dots_tick(shell.round);
            return 0;
        case WM_SETCURSOR:
            if (on_cursor(reinterpret_cast<HWND>(first))) return TRUE;
            break;
        case WM_CTLCOLORSTATIC:
            return on_static_colours(reinterpret_cast<HDC>(first), reinterpret_cast<HWND>(second));
        case WM_APP_UPDATE:
            on_update_result(static_cast<int>(first - 1));
            return 0;
        case WM_DESTROY:
            on_destroy();
            return 0;
        default:
            if (number >= WM_APP_CONNECT && number <= WM_APP_BALANCE && number != WM_APP_VAULT) {
                on_round_message(second);
                return 0;
            }
            break;
    }
    if (const auto answer = answer_look_message(shell, window, number, first, second)) return *answer;
    return DefWindowProcW(window, number, first, second);
}

}  // namespace

HWND create_main_window(Shell& shell) {
    HBRUSH background = reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(COLOR_WINDOW + 1));
    if (!register_class(shell, MAIN_CLASS, record_procedure<MainRecord>, background)) return nullptr;
    const WindowPlan plan{L"Bursaria", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, 1040, 900};
    return create_record_window(shell, MAIN_CLASS, plan, nullptr, std::make_unique<MainRecord>(shell));
}
