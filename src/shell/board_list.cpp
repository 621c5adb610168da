#include "shell/board_list.h"

#include <array>

#include "core/round_controller.h"
#include "core/round_status.h"
#include "shell/list_columns.h"
#include "shell/shell_controls.h"

namespace {

constexpr std::array<ListColumn, 5> COLUMNS = {
    {{L"Holder", 240}, {L"Lots", 90}, {L"Pay to", 280}, {L"Role", 90}, {L"Received", 110}}};

HWND board_of(const Shell& shell) {
    return GetDlgItem(shell.main.load(), CONTROL_BOARD);
}

int selected_row(HWND list) {
    return ListView_GetNextItem(list, -1, LVNI_SELECTED);
}

void copy_selected_row(Shell& shell) {
    HWND list = board_of(shell);
    const int row = selected_row(list);
    if (row < 0) return;
    std::wstring line = list_cell(list, row, 0);
    for (std::size_t column = 1; column < COLUMNS.size(); ++column)
        line += L"\t" + list_cell(list, row, static_cast<int>(column));
    copy_text(shell.main.load(), line);
    set_status(shell.round, "Copied row.", false);
}

void copy_cell(Shell& shell, const NMITEMACTIVATE& click) {
    if (click.iItem < 0) return;
    copy_text(shell.main.load(), list_cell(board_of(shell), click.iItem, click.iSubItem));
    set_status(shell.round, "Copied cell. Ctrl+C copies the whole row.", false);
}

void show_menu(Shell& shell, const NMITEMACTIVATE& click) {
    RoundState& state = shell.round.state;
    state.selected_row = click.iItem >= 0 ? click.iItem : selected_row(board_of(shell));
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

bool is_copy_key(const NMLVKEYDOWN& key) {
    return key.wVKey == 'C' && (GetKeyState(VK_CONTROL) & 0x8000) != 0;
}

}  // namespace

HWND create_board_list(const Shell& shell, HWND parent) {
    return create_report_list(shell, parent, CONTROL_BOARD, {16, 250, 724, 200}, COLUMNS.data(),
                              COLUMNS.size());
}

LRESULT on_board_notify(Shell& shell, LPARAM notification) {
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
            ListView_SetItemState(board_of(shell), row, LVIS_SELECTED | LVIS_FOCUSED,
                                  LVIS_SELECTED | LVIS_FOCUSED);
            copy_selected_row(shell);
            return true;
        case COMMAND_NOTE:
            set_status(shell.round, "Note comes with the next version.", false);
            return true;
        default:
            return false;
    }
}
