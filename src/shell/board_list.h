// The board list of the main window: its events, its menu and the colours of its rows.
#pragma once

#include "shell/shell.h"

HWND create_board_list(const Shell& shell, HWND parent);
void fill_board_list(Shell& shell, const std::vector<BoardLine>& lines);
// The answer to WM_NOTIFY from the list.
LRESULT on_board_notify(Shell& shell, LPARAM notification);
// A command of the list's menu; false if it is none.
bool on_board_command(Shell& shell, int id);
