// A report list in the look of the program, with the header drawn by hand.
#pragma once

#include "shell/shell.h"

struct ListColumn {
    const wchar_t* title;
    int width;
};

HWND create_report_list(const Shell& shell, HWND parent, int id, const Box& box, const ListColumn* columns,
                        std::size_t count);
void set_list_cell(HWND list, int row, int column, std::string_view utf8);
std::wstring list_cell(HWND list, int row, int column);
