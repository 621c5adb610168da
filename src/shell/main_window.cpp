#include "shell/main_window.h"

#include <array>
#include <utility>

#include "core/round_controller.h"
#include "core/round_status.h"
#include "platform/program.h"
#include "shell/board_list.h"
#include "shell/main_layout.h"
#include "shell/message_window.h"
#include "shell/page_version.h"
#include "shell/painted_button.h"
#include "shell/settings_window.h"
#include "shell/shell_controls.h"
#include "shell/shell_texts.h"
#include "shell/update_check.h"
#include "shell/window_class.h"

namespace {

enum class Kind { Button, Label, Drop, Edit, Board };

struct ControlPlan {
    int id;
    Kind kind;
    const char* text;
    Box box;
    DWORD style;
};

constexpr DWORD ONE_LINE_LABEL = SS_NOPREFIX | SS_LEFT;
constexpr DWORD CUT_LABEL = SS_NOPREFIX | SS_ENDELLIPSIS;

constexpr std::array<ControlPlan, 22> CONTROLS = {{
    {CONTROL_CONNECT, Kind::Button, "Connect", {520, 22, 110, 34}, 0},
    {CONTROL_UNBIND, Kind::Button, "Unbind", {640, 22, 100, 34}, 0},
    {CONTROL_SETTINGS, Kind::Button, "", {750, 20, 40, 40}, 0},
    {CONTROL_SNAPSHOT, Kind::Button, "Snapshot", {0, 0, 180, 76}, 0},
    {CONTROL_PREVIEW, Kind::Button, "Preview", {0, 0, 180, 76}, 0},
    {CONTROL_PAY, Kind::Button, "Pay", {0, 0, 180, 76}, 0},
    {CONTROL_HISTORY, Kind::Button, "History", {0, 0, 180, 76}, 0},
    {CONTROL_VAULT, Kind::Button, "Vault", {0, 0, 180, 76}, 0},
    {CONTROL_WALLET_LABEL, Kind::Label, "not connected", {16, 96, 240, 26}, CUT_LABEL},
    {CONTROL_WALLET_BALANCE, Kind::Label, "-", {16, 140, 240, 26}, CUT_LABEL},
    {CONTROL_TOKEN_LABEL, Kind::Label, "Token", {16, 128, 64, 22}, ONE_LINE_LABEL},
    {CONTROL_TOKEN_BOX, Kind::Drop, "", {16, 148, 430, 220}, CBS_DROPDOWNLIST | WS_VSCROLL | WS_TABSTOP},
    {CONTROL_LOAD_TOKENS, Kind::Button, "Load tokens", {456, 146, 130, 34}, 0},
    {CONTROL_ORIGIN_LABEL, Kind::Label, "Origin", {16, 190, 64, 22}, ONE_LINE_LABEL},
    {CONTROL_ORIGIN, Kind::Edit, "", {16, 210, 724, 28}, ES_AUTOHSCROLL | WS_TABSTOP},
    {CONTROL_BOARD, Kind::Board, "", {}, 0},
    {CONTROL_SUMMARY,
     Kind::Label,
     "Snapshot a token you hold or minted.",
     {16, 458, 724, 108},
     ONE_LINE_LABEL},
    {CONTROL_AMOUNT_LABEL, Kind::Label, "Pay Dividends (BSV)", {16, 522, 220, 20}, ONE_LINE_LABEL},
    {CONTROL_AMOUNT, Kind::Edit, "", {16, 542, 180, 28}, ES_AUTOHSCROLL | WS_TABSTOP},
    {CONTROL_STATUS,
     Kind::Label,
     "Connect Clasp, pick a token, Snapshot, Preview, then Pay.",
     {16, 586, 560, 22},
     ONE_LINE_LABEL},
    {CONTROL_VERSION, Kind::Label, "", {600, 586, 280, 22}, SS_NOPREFIX | SS_RIGHT | SS_NOTIFY},
    {CONTROL_CLOSE, Kind::Button, "Close", {16, 630, 724, 36}, 0},
}};

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
    void create_control(const ControlPlan& plan);
    void start_update_worker();
};

void MainRecord::create_control(const ControlPlan& plan) {
    if (plan.kind == Kind::Button) {
        create_painted_button(shell, window, plan.id, plan.text, plan.box);
        return;
    }
    if (plan.kind == Kind::Board) {
        create_board_list(shell, window);
        return;
    }
    const wchar_t* kinds[] = {WC_BUTTONW, WC_STATICW, WC_COMBOBOXW, WC_EDITW};
    HWND made =
        CreateWindowExW(plan.kind == Kind::Edit ? WS_EX_CLIENTEDGE : 0, kinds[static_cast<int>(plan.kind)],
                        wide_text(plan.text).c_str(), WS_CHILD | WS_VISIBLE | plan.style, plan.box.x,
                        plan.box.y, plan.box.width, plan.box.height, window,
                        reinterpret_cast<HMENU>(static_cast<INT_PTR>(plan.id)), shell.instance, nullptr);
    SendMessageW(made, WM_SETFONT, reinterpret_cast<WPARAM>(shell.theme.body_font.get()), TRUE);
    if (plan.kind == Kind::Edit || plan.kind == Kind::Drop) strip_visual_style(made);
    if (plan.kind == Kind::Drop) SendMessageW(made, CB_SETMINVISIBLE, 12, 0);
}

void MainRecord::on_create() {
    shell.main = window;
    choose_palette(shell.theme, shell.theme.index);
    make_fonts(shell.theme);
    apply_dark_frame(window, shell.theme.palette());
    for (const ControlPlan& plan : CONTROLS) create_control(plan);
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
            PostMessageW(target, WM_APP_UPDATE, static_cast<WPARAM>(latest_version + 1), 0);
    });
}

void MainRecord::on_size() {
    const SIZE size = client_size(window);
    const MainLayout layout = layout_main_window(size.cx, size.cy);
    if (layout.controls.empty()) return;
    for (const PlacedControl& placed : layout.controls) move_window(control(placed.id), placed.box);
    for (const int id : {CONTROL_SETTINGS, CONTROL_CONNECT, CONTROL_UNBIND})
        SetWindowPos(control(id), HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    for (std::size_t i = 0; i < layout.columns.size(); ++i)
        ListView_SetColumnWidth(control(CONTROL_BOARD), static_cast<int>(i), layout.columns[i]);
    InvalidateRect(window, nullptr, TRUE);
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
            return set_status(round, "History comes with the next version.", false);
        case CONTROL_VAULT:
            return set_status(round, "Vault comes with the next version.", false);
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
        case WM_DRAWITEM:
            draw_painted_button(shell, *reinterpret_cast<const DRAWITEMSTRUCT*>(second));
            return TRUE;
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
        case WM_CTLCOLOREDIT:
        case WM_CTLCOLORLISTBOX:
            return panel_colours(shell.theme, reinterpret_cast<HDC>(first));
        case WM_CTLCOLORSTATIC:
            return on_static_colours(reinterpret_cast<HDC>(first), reinterpret_cast<HWND>(second));
        case WM_APP_UPDATE:
            on_update_result(static_cast<int>(first) - 1);
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
    return DefWindowProcW(window, number, first, second);
}

}  // namespace

HWND create_main_window(Shell& shell) {
    HBRUSH background = reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(COLOR_WINDOW + 1));
    if (!register_class(shell, MAIN_CLASS, record_procedure<MainRecord>, background)) return nullptr;
    const WindowPlan plan{L"Bursaria", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, 1040, 900};
    return create_record_window(shell, MAIN_CLASS, plan, nullptr, std::make_unique<MainRecord>(shell));
}
