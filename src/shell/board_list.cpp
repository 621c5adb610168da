#include "shell/board_list.h"

#include <array>
#include <iterator>

#include "core/round_controller.h"
#include "core/round_status.h"
#include "shell/list_columns.h"
#include "shell/note_window.h"
#include "shell/shell_controls.h"

namespace {

constexpr std::array<ListColumn, 5> COLUMNS = {
    {{L"Holder", 240}, {L"Lots", 90}, {L"Pay to", 280}, {L"Role", 90}, {L"Received", 110}}};

HWND board_of(const Shell& shell) {
    return GetDlgItem(shell.main.load(), CONTROL_BOARD);
}

const std::string& board_cell(const BoardLine& line, std::size_t column) {
    const std::string* const cells[] = {&line.holder, &line.lots, &line.pay_to, &line.role, &line.received};
    static const std::string NOTHING;
    return column < std::size(cells) ? *cells[column] : NOTHING;
}

ListRows rows_of(const Shell& shell) {
    return {shell.board_lines.size(), [&lines = shell.board_lines](std::size_t row, std::size_t column) {
                return board_cell(lines[row], column);
            }};
}

void copy_selected_row(Shell& shell) {
    const int row = selected_list_row(board_of(shell));
    if (row < 0) return;
    copy_text(shell.main.load(), list_row_text(rows_of(shell), row, COLUMNS.size()));
    set_status(shell.round, "Copied row.", false);
}

void copy_cell(Shell& shell, const NMITEMACTIVATE& click) {
    constexpr std::size_t MOST_CHARACTERS = 511;
    if (click.iItem < 0 || static_cast<std::size_t>(click.iItem) >= shell.board_lines.size()) return;
    const BoardLine& line = shell.board_lines[static_cast<std::size_t>(click.iItem)];
    const std::wstring text = wide_text(board_cell(line, static_cast<std::size_t>(click.iSubItem)));
    copy_text(shell.main.load(), text.substr(0, MOST_CHARACTERS));
    set_status(shell.round, "Copied cell. Ctrl+C copies the whole row.", false);
}

void show_menu(Shell& shell, const NMITEMACTIVATE& click) {
    RoundState& state = shell.round.state;
    state.selected_row = click.iItem >= 0 ? click.iItem : selected_list_row(board_of(shell));
    if (state.selected_row < 0 || static_cast<std::size_t>(state.selected_row) >= state.board.rows.size())
        return;
    const auto row = static_cast<std::size_t>(state.selected_row);
    HMENU menu = CreatePopupMenu();
    if (!state.board.rows[row].reserve) {
        const bool excluded = is_excluded(state, row);
        AppendMenuW(menu, MF_STRING, excluded ? COMMAND_INCLUDE : COMMAND_EXCLUDE,
                    excluded ? L"Include" : L"Exclude");
    }
    AppendMenuW(menu, MF_STRING, COMMAND_NOTE, L"Note");
    AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    AppendMenuW(menu, MF_STRING, COMMAND_COPY_ROW, L"Copy row");
    POINT cursor{};
    GetCursorPos(&cursor);
    TrackPopupMenu(menu, TPM_LEFTALIGN | TPM_RIGHTBUTTON, cursor.x, cursor.y, 0, shell.main.load(), nullptr);
    DestroyMenu(menu);
}

LRESULT draw_row(const Shell& shell, NMLVCUSTOMDRAW& draw) {
    if (draw.nmcd.dwDrawStage == CDDS_PREPAINT) return CDRF_NOTIFYITEMDRAW;
    if (draw.nmcd.dwDrawStage != CDDS_ITEMPREPAINT) return CDRF_DODEFAULT;
    const RoundState& state = shell.round.state;
    const auto row = static_cast<std::size_t>(draw.nmcd.dwItemSpec);
    const bool excluded = row < state.board.rows.size() && is_excluded(state, row);
    const Palette& palette = shell.theme.palette();
    draw.clrText = color_ref(excluded ? EXCLUDED_TEXT : palette.text);
    draw.clrTextBk = color_ref(excluded ? EXCLUDED_ROW : palette.panel_bg);
    return CDRF_NEWFONT;
}

}  // namespace

HWND create_board_list(const Shell& shell, HWND parent) {
    return create_report_list(shell, parent, CONTROL_BOARD, {16, 250, 724, 200}, COLUMNS);
}

void fill_board_list(Shell& shell, const std::vector<BoardLine>& lines) {
    shell.board_lines = lines;
    if (HWND list = board_of(shell)) show_list_rows(list, lines.size());
}

LRESULT on_board_notify(Shell& shell, LPARAM notification) {
    if (const auto answer = answer_list_request(notification, rows_of(shell))) return *answer;
    switch (reinterpret_cast<const NMHDR*>(notification)->code) {
        case NM_CUSTOMDRAW:
            return draw_row(shell, *reinterpret_cast<NMLVCUSTOMDRAW*>(notification));
        case NM_DBLCLK:
            copy_cell(shell, *reinterpret_cast<const NMITEMACTIVATE*>(notification));
            return 0;
        case NM_RCLICK:
            show_menu(shell, *reinterpret_cast<const NMITEMACTIVATE*>(notification));
            return 1;
        case LVN_KEYDOWN:
            if (is_copy_key(*reinterpret_cast<const NMLVKEYDOWN*>(notification))) copy_selected_row(shell);
            return 0;
        default:
            return 0;
    }
}

bool on_board_command(Shell& shell, int id) {
    const int row = shell.round.state.selected_row;
    switch (id) {
        case COMMAND_EXCLUDE:
        case COMMAND_INCLUDE:
            on_set_excluded(shell.round, row, id == COMMAND_EXCLUDE);
            return true;
        case COMMAND_COPY_ROW:
            // A new board came while the menu was open.
            if (row < 0) return true;
            ListView_SetItemState(board_of(shell), row, LVIS_SELECTED | LVIS_FOCUSED,
                                  LVIS_SELECTED | LVIS_FOCUSED);
            copy_selected_row(shell);
            return true;
        case COMMAND_NOTE:
            open_note_window(shell, row);
            return true;
        default:
            return false;
    }
}
