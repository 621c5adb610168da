#include "shell/history_window.h"

#include <array>

#include "base/amounts.h"
#include "base/clock.h"
#include "core/round_status.h"
#include "records/payout_ledger.h"
#include "shell/child_controls.h"
#include "shell/history_chart.h"
#include "shell/history_export.h"
#include "shell/list_columns.h"
#include "shell/message_window.h"
#include "shell/window_class.h"
#include "shell/window_layouts.h"

namespace {

enum HistoryControl : int {
    HISTORY_TOKEN = 1101,
    HISTORY_RANGE = 1102,
    HISTORY_STYLE = 1103,
    HISTORY_LIST = 1104,
    HISTORY_CHART = 1105,
    HISTORY_CLOSE = 1106,
    HISTORY_PAYOUTS = 1108,
    HISTORY_TOKEN_LABEL = 1109,
    HISTORY_RANGE_LABEL = 1110,
    HISTORY_STYLE_LABEL = 1111,
    HISTORY_FEES = 1112,
    HISTORY_EXPORT = 1113,
};
constexpr const wchar_t* CLASS_NAME = L"QuorvelleBursariaHistory";
constexpr std::array<ListColumn, 5> COLUMNS = {
    {{L"When", 140}, {L"Who", 180}, {L"Amount", 130}, {L"Pay to", 180}, {L"Tx", 140}}};
constexpr ChildPlan FILTERS_AND_BUTTONS[] = {
    {HISTORY_TOKEN_LABEL, ChildKind::SmallLabel, "Token"}, {HISTORY_TOKEN, ChildKind::Drop},
    {HISTORY_RANGE_LABEL, ChildKind::SmallLabel, "Range"}, {HISTORY_RANGE, ChildKind::Drop},
    {HISTORY_STYLE_LABEL, ChildKind::SmallLabel, "Chart"}, {HISTORY_STYLE, ChildKind::Drop},
    {HISTORY_EXPORT, ChildKind::Button, "Export"},         {HISTORY_CLOSE, ChildKind::Button, "Close"},
};
constexpr ChildPlan BELOW_THE_LIST[] = {
    {HISTORY_PAYOUTS, ChildKind::SmallLabel, "Payouts: 0", SS_ENDELLIPSIS},
    {HISTORY_FEES, ChildKind::SmallLabel, "Total fees paid: 0.00000000 BSV", SS_ENDELLIPSIS},
};
constexpr int BRIGHT_LABELS[] = {HISTORY_PAYOUTS, HISTORY_FEES};

struct HistoryRecord : WindowRecord {
    std::vector<PayoutRow> all_rows;
    std::vector<TokenChoice> tokens;
    HistoryView view;
    PayoutChart chart;

    explicit HistoryRecord(Shell& of) : WindowRecord(of, of.history) {}

    LRESULT on_message(UINT number, WPARAM first, LPARAM second);
    void on_create();
    void on_size();
    void on_command(int id, int event);
    LRESULT on_notify(LPARAM notification);
    void on_double_click(const NMITEMACTIVATE& click);

    ListRows rows() const;
    int selected(int id) const { return ComboBox_GetCurSel(control(id)); }
    bool copy_selected_row();
    void load();
    void fill_token_filter();
    void refresh();
};

std::string history_cell(const PayoutRow& row, std::size_t column) {
    switch (column) {
        case 0:
            return payout_time_text(row.unix);
        case 1:
            return payout_who(row);
        case 2:
            return format_bsv(row.sats) + " BSV";
        case 3:
            return row.dest;
        default:
            return short_txid(row.txid);
    }
}

ListRows HistoryRecord::rows() const {
    return {view.rows.size(), [&shown = view.rows](std::size_t row, std::size_t column) {
                return history_cell(shown[row], column);
            }};
}

void HistoryRecord::on_create() {
    apply_dark_frame(window, shell.theme.palette());
    create_children(shell, window, FILTERS_AND_BUTTONS);
    create_report_list(shell, window, HISTORY_LIST, {}, COLUMNS);
    create_children(shell, window, BELOW_THE_LIST);
    create_payout_chart(shell, window, HISTORY_CHART, chart);
    for (const HistoryRange& range : HISTORY_RANGES)
        ComboBox_AddString(control(HISTORY_RANGE), wide_text(range.label).c_str());
    ComboBox_SetCurSel(control(HISTORY_RANGE), static_cast<int>(ALL_TIME));
    ComboBox_AddString(control(HISTORY_STYLE), L"Line graph");
    ComboBox_AddString(control(HISTORY_STYLE), L"Bar chart");
    ComboBox_SetCurSel(control(HISTORY_STYLE), 0);
    on_size();
    load();
}

void HistoryRecord::load() {
    all_rows = load_payouts(token_names(shell.round.state));
    fill_token_filter();
    refresh();
}

// The chosen token stays chosen, wherever it stands now.
void HistoryRecord::fill_token_filter() {
    HWND box = control(HISTORY_TOKEN);
    const int before = selected(HISTORY_TOKEN);
    const std::string chosen = before > 0 ? tokens[static_cast<std::size_t>(before) - 1].token_id : "";
    tokens = history_tokens(all_rows, token_names(shell.round.state));
    ComboBox_ResetContent(box);
    ComboBox_AddString(box, L"All tokens");
    int place = 0;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        ComboBox_AddString(box, wide_text(tokens[i].label).c_str());
        if (tokens[i].token_id == chosen) place = static_cast<int>(i) + 1;
    }
    ComboBox_SetCurSel(box, place);
}

void HistoryRecord::refresh() {
    const auto token = static_cast<std::size_t>(std::max(selected(HISTORY_TOKEN), 0));
    const auto range = static_cast<std::size_t>(std::max(selected(HISTORY_RANGE), 0));
    view = history_view(all_rows, token == 0 ? "" : tokens[token - 1].token_id, HISTORY_RANGES[range],
                        unix_seconds());
    chart.bars = selected(HISTORY_STYLE) == 1;
    chart.buckets = view.buckets;
    chart.axis_labels = view.axis_labels;
    show_list_rows(control(HISTORY_LIST), view.rows.size());
    set_window_text(control(HISTORY_PAYOUTS), payouts_line(view));
    set_window_text(control(HISTORY_FEES), fees_line(fees_total()));
    InvalidateRect(control(HISTORY_CHART), nullptr, FALSE);
}

void HistoryRecord::on_size() {
    const SIZE size = client_size(window);
    const HistoryLayout layout = layout_history_window(size.cx, size.cy);
    const PlacedControl places[] = {
        {HISTORY_TOKEN_LABEL, layout.filter_labels[0]},
        {HISTORY_TOKEN, layout.filters[0]},
        {HISTORY_RANGE_LABEL, layout.filter_labels[1]},
        {HISTORY_RANGE, layout.filters[1]},
        {HISTORY_STYLE_LABEL, layout.filter_labels[2]},
        {HISTORY_STYLE, layout.filters[2]},
        {HISTORY_EXPORT, layout.export_button},
        {HISTORY_CLOSE, layout.close},
        {HISTORY_LIST, layout.list},
        {HISTORY_PAYOUTS, layout.payouts_line},
        {HISTORY_FEES, layout.fees_line},
        {HISTORY_CHART, layout.chart},
    };
    place_children(window, places);
    set_column_widths(control(HISTORY_LIST), layout.columns);
}

void HistoryRecord::on_command(int id, int event) {
    switch (id) {
        case HISTORY_TOKEN:
        case HISTORY_RANGE:
        case HISTORY_STYLE:
            if (event == CBN_SELCHANGE) refresh();
            return;
        case HISTORY_EXPORT:
            if (event == BN_CLICKED) export_payouts(shell, window, view.rows);
            return;
        case HISTORY_CLOSE:
        case IDCANCEL:
            if (event == BN_CLICKED) DestroyWindow(window);
            return;
        case IDOK:
            press_focused_button(window);
            return;
        default:
            return;
    }
}

bool HistoryRecord::copy_selected_row() {
    const int row = selected_list_row(control(HISTORY_LIST));
    if (row < 0) return false;
    copy_text(window, list_row_text(rows(), row, COLUMNS.size()));
    return true;
}

void HistoryRecord::on_double_click(const NMITEMACTIVATE& click) {
    if (click.iItem < 0 || static_cast<std::size_t>(click.iItem) >= view.rows.size()) return;
    if (GetKeyState(VK_CONTROL) < 0) copy_selected_row();
    open_tx_page(view.rows[static_cast<std::size_t>(click.iItem)].txid);
}

LRESULT HistoryRecord::on_notify(LPARAM notification) {
    if (const auto answer = answer_list_request(notification, rows())) return *answer;
    const auto& header = *reinterpret_cast<const NMHDR*>(notification);
    if (header.idFrom != HISTORY_LIST) return 0;
    switch (header.code) {
        case NM_DBLCLK:
            on_double_click(*reinterpret_cast<const NMITEMACTIVATE*>(notification));
            return 0;
        case NM_RCLICK:
            if (copy_selected_row()) set_status(shell.round, "Copied row.", false);
            return 1;
        case LVN_KEYDOWN:
            if (is_copy_key(*reinterpret_cast<const NMLVKEYDOWN*>(notification))) copy_selected_row();
            return 0;
        default:
            return 0;
    }
}

LRESULT HistoryRecord::on_message(UINT number, WPARAM first, LPARAM second) {
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
            on_command(LOWORD(first), HIWORD(first));
            return 0;
        case WM_NOTIFY:
            return on_notify(second);
        default:
            break;
    }
    if (const auto answer = answer_look_message(shell, window, number, first, second, BRIGHT_LABELS))
        return *answer;
    return DefWindowProcW(window, number, first, second);
}

}  // namespace

void open_history_window(Shell& shell) {
    const WindowPlan plan{L"Payout history", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, 760, 620};
    if (shell.history == nullptr)
        fill_slot(shell, shell.history, CLASS_NAME, plan, std::make_unique<HistoryRecord>(shell));
    if (shell.history != nullptr) raise_window(shell.history);
}

void reload_history(Shell& shell) {
    if (shell.history == nullptr) return;
    reinterpret_cast<HistoryRecord*>(GetWindowLongPtrW(shell.history, GWLP_USERDATA))->load();
}
