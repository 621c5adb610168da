#include "shell/preview_window.h"

#include <algorithm>
#include <array>

#include "base/amounts.h"
#include "base/settings.h"
#include "shell/list_columns.h"
#include "shell/painted_button.h"
#include "shell/window_class.h"
#include "shell/window_layouts.h"

namespace {

enum PreviewControl : int {
    PREVIEW_LIST = 1601,
    PREVIEW_CLOSE = 1602,
    PREVIEW_COPY = 1603,
    PREVIEW_NOTE = 1604,
    PREVIEW_HEADING = 1605,
};
constexpr const wchar_t* CLASS_NAME = L"QuorvelleBursariaPreview";
constexpr std::array<ListColumn, 3> COLUMNS = {{{L"Holder", 280}, {L"Lots", 90}, {L"Pays", 160}}};

struct Card {
    Box box;
    std::wstring label;
    std::wstring value;
    std::wstring sub;
};

struct PreviewRecord {
    Shell& shell;
    std::wstring text;
    std::vector<Card> cards;
    HWND list = nullptr;
    HWND window = nullptr;

    explicit PreviewRecord(Shell& of) : shell(of) {}
    ~PreviewRecord() {
        if (shell.preview == window) shell.preview = nullptr;
    }
    PreviewRecord(const PreviewRecord&) = delete;
    PreviewRecord& operator=(const PreviewRecord&) = delete;

    LRESULT on_message(UINT number, WPARAM first, LPARAM second);
    void on_create();
    void on_size();
    void on_command(int id);
    void on_paint();
    LRESULT on_notify(const NMHDR& header);
};

std::vector<Card> cards_of(const RoundState& state) {
    const auto heads = std::count_if(state.preview.begin(), state.preview.end(),
                                     [](const PreviewRow& row) { return !row.skip; });
    const auto card = [](std::string_view label, std::string_view value, std::string_view sub) {
        return Card{{}, wide_text(label), wide_text(value), wide_text(sub)};
    };
    return {
        card("Pot", format_bsv(state.frozen_pot) + " BSV", "What you typed"),
        card("In-market lots", state.board.in_market_lots, "Before excludes"),
        card("Payable lots", payable_lots(state), "The split"),
        card("Payable", std::to_string(heads), "Heads that get BSV"),
        card("Skips", std::to_string(state.frozen_skips), "Stay in Clasp"),
        card("Remainder", format_bsv(state.frozen_remainder) + " BSV", "Stays in Clasp"),
        card("Miner fee", std::to_string(state.frozen_fee_estimate) + " sats", "On top of the pot"),
        card("App fee", format_bsv(APP_FEE_SATS) + " BSV", settings().fee_handle),
    };
}

HWND add_static(const PreviewRecord& record, int id, const wchar_t* text, HFONT font) {
    HWND made =
        CreateWindowExW(0, WC_STATICW, text, WS_CHILD | WS_VISIBLE, 0, 0, 0, 0, record.window,
                        reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), record.shell.instance, nullptr);
    SendMessageW(made, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
    return made;
}

void PreviewRecord::on_create() {
    apply_dark_frame(window, shell.theme.palette());
    add_static(*this, PREVIEW_NOTE, L"This list stays frozen until you Snapshot again.",
               shell.theme.small_font.get());
    add_static(*this, PREVIEW_HEADING, L"The split", shell.theme.body_font.get());
    list = create_report_list(shell, window, PREVIEW_LIST, {}, COLUMNS.data(), COLUMNS.size());
    int line = 0;
    for (const PreviewRow& row : shell.round.state.preview) {
        set_list_cell(list, line, 0, row.name);
        set_list_cell(list, line, 1, row.lots);
        set_list_cell(list, line, 2, row.skip ? "skip" : format_bsv(row.sats) + " BSV");
        ++line;
    }
    create_painted_button(shell, window, PREVIEW_COPY, "Copy", {});
    create_painted_button(shell, window, PREVIEW_CLOSE, "Close", {});
    on_size();
}

void PreviewRecord::on_size() {
    const SIZE size = client_size(window);
    PreviewLayout layout;
    if (!layout_preview_window(size.cx, size.cy, layout)) return;
    if (cards.size() >= layout.cards.size())
        for (std::size_t i = 0; i < layout.cards.size(); ++i) cards[i].box = layout.cards[i];
    move_window(GetDlgItem(window, PREVIEW_NOTE), layout.frozen_note);
    move_window(GetDlgItem(window, PREVIEW_HEADING), layout.heading);
    move_window(list, layout.list);
    move_window(GetDlgItem(window, PREVIEW_COPY), layout.copy);
    move_window(GetDlgItem(window, PREVIEW_CLOSE), layout.close);
    for (std::size_t i = 0; i < layout.columns.size(); ++i)
        ListView_SetColumnWidth(list, static_cast<int>(i), layout.columns[i]);
    InvalidateRect(window, nullptr, TRUE);
}

void PreviewRecord::on_command(int id) {
    if (id == PREVIEW_COPY) copy_text(window, text);
    if (id == PREVIEW_CLOSE || id == IDCANCEL) DestroyWindow(window);
}

void PreviewRecord::on_paint() {
    PAINTSTRUCT paint{};
    HDC dc = BeginPaint(window, &paint);
    const Palette& palette = shell.theme.palette();
    const Theme& theme = shell.theme;
    constexpr UINT ONE_LINE = DT_LEFT | DT_TOP | DT_SINGLELINE | DT_END_ELLIPSIS;
    for (const Card& card : cards) {
        if (card.box.empty()) continue;
        const RECT area = rect_of(card.box);
        draw_soft_card(dc, area, soft_card_fill(theme.index), palette.border);
        const LONG left = area.left + 12;
        const LONG right = area.right - 10;
        draw_text(dc, card.label, {left, area.top + 8, right, area.bottom}, theme.small_font.get(),
                  palette.muted, ONE_LINE);
        draw_text(dc, card.value, {left, area.top + 26, right, area.bottom}, theme.body_font.get(),
                  palette.text, ONE_LINE);
        draw_text(dc, card.sub, {left, area.top + 50, right, area.bottom - 8}, theme.small_font.get(),
                  palette.muted, ONE_LINE);
    }
    EndPaint(window, &paint);
}

LRESULT PreviewRecord::on_notify(const NMHDR& header) {
    // The list holds the focus, and the message loop offers this window no dialog keys.
    if (header.code == LVN_KEYDOWN && reinterpret_cast<const NMLVKEYDOWN&>(header).wVKey == VK_ESCAPE)
        PostMessageW(window, WM_CLOSE, 0, 0);
    return 0;
}

LRESULT PreviewRecord::on_message(UINT number, WPARAM first, LPARAM second) {
    switch (number) {
        case WM_CREATE:
            on_create();
            return 0;
        case WM_SIZE:
            on_size();
            return 0;
        case WM_GETMINMAXINFO:
            hold_smallest_size(second, 640, 480);
            return 0;
        case WM_COMMAND:
            if (HIWORD(first) == BN_CLICKED) on_command(LOWORD(first));
            return 0;
        case WM_KEYDOWN:
            if (first == VK_ESCAPE) DestroyWindow(window);
            return 0;
        case WM_NOTIFY:
            return on_notify(*reinterpret_cast<const NMHDR*>(second));
        case WM_PAINT:
            on_paint();
            return 0;
        case WM_DRAWITEM:
            draw_painted_button(shell, *reinterpret_cast<const DRAWITEMSTRUCT*>(second));
            return TRUE;
        case WM_CTLCOLORSTATIC:
            return static_colours(reinterpret_cast<HDC>(first), shell.theme.palette().muted,
                                  shell.theme.window_brush.get());
        case WM_ERASEBKGND:
            return erase_with(window, first, shell.theme.window_brush.get());
        default:
            return DefWindowProcW(window, number, first, second);
    }
}

}  // namespace

void open_preview_window(Shell& shell, const std::string& text) {
    if (shell.preview != nullptr) DestroyWindow(shell.preview);
    if (!register_class(shell, CLASS_NAME, record_procedure<PreviewRecord>, nullptr)) return;
    auto record = std::make_unique<PreviewRecord>(shell);
    record->text = with_edit_line_ends(text);
    record->cards = cards_of(shell.round.state);
    const WindowPlan plan{L"Preview", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, 760, 560};
    shell.preview = create_record_window(shell, CLASS_NAME, plan, shell.main.load(), std::move(record));
    ShowWindow(shell.preview, SW_SHOW);
}
