#include "shell/preview_window.h"

#include <algorithm>
#include <array>

#include "base/amounts.h"
#include "base/settings.h"
#include "shell/child_controls.h"
#include "shell/list_columns.h"
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

struct PreviewRecord : WindowRecord {
    std::wstring text;
    std::vector<Card> cards;
    std::vector<PreviewRow> rows;  // as they were when the window opened
    HWND list = nullptr;

    explicit PreviewRecord(Shell& of)
        : WindowRecord(of, of.preview), cards(cards_of(of.round.state)), rows(of.round.state.preview) {}

    LRESULT on_message(UINT number, WPARAM first, LPARAM second);
    void on_create();
    void on_size();
    void on_command(int id);
    void on_paint();
    LRESULT on_notify(LPARAM notification);
};

std::string preview_cell(const PreviewRow& row, std::size_t column) {
    if (column == 0) return row.name;
    if (column == 1) return row.lots;
    return row.skip ? "skip" : format_bsv(row.sats) + " BSV";
}

void PreviewRecord::on_create() {
    apply_dark_frame(window, shell.theme.palette());
    create_child(shell, window,
                 {PREVIEW_NOTE, ChildKind::SmallLabel, "This list stays frozen until you Snapshot again."});
    create_child(shell, window, {PREVIEW_HEADING, ChildKind::Label, "The split"});
    list = create_report_list(shell, window, PREVIEW_LIST, {}, COLUMNS);
    show_list_rows(list, rows.size());
    create_child(shell, window, {PREVIEW_COPY, ChildKind::Button, "Copy"});
    create_child(shell, window, {PREVIEW_CLOSE, ChildKind::Button, "Close"});
    on_size();
}

void PreviewRecord::on_size() {
    const SIZE size = client_size(window);
    PreviewLayout layout;
    if (!layout_preview_window(size.cx, size.cy, layout)) return;
    if (cards.size() >= layout.cards.size())
        for (std::size_t i = 0; i < layout.cards.size(); ++i) cards[i].box = layout.cards[i];
    const PlacedControl places[] = {{PREVIEW_NOTE, layout.frozen_note},
                                    {PREVIEW_HEADING, layout.heading},
                                    {PREVIEW_LIST, layout.list},
                                    {PREVIEW_COPY, layout.copy},
                                    {PREVIEW_CLOSE, layout.close}};
    place_children(window, places);
    set_column_widths(list, layout.columns);
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

LRESULT PreviewRecord::on_notify(LPARAM notification) {
    const ListRows shown{
        rows.size(), [this](std::size_t row, std::size_t column) { return preview_cell(rows[row], column); }};
    if (const auto answer = answer_list_request(notification, shown)) return *answer;
    // The list holds the focus, and the message loop offers this window no dialog keys.
    const auto& header = *reinterpret_cast<const NMHDR*>(notification);
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
            return on_notify(second);
        case WM_PAINT:
            on_paint();
            return 0;
        default:
            break;
    }
    if (const auto answer = answer_look_message(shell, window, number, first, second)) return *answer;
    return DefWindowProcW(window, number, first, second);
}

}  // namespace

void open_preview_window(Shell& shell, const std::string& text) {
    if (shell.preview != nullptr) DestroyWindow(shell.preview);
    auto record = std::make_unique<PreviewRecord>(shell);
    record->text = with_edit_line_ends(text);
    const WindowPlan plan{L"Preview", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, 760, 560};
    HWND window = fill_slot(shell, shell.preview, CLASS_NAME, plan, std::move(record));
    if (window != nullptr) ShowWindow(window, SW_SHOW);
}
