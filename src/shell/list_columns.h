// A report list in the look of the program, with the header drawn by hand. It holds no text: it asks its
// parent for a cell when it shows one, so that any number of rows costs the same.
#pragma once

#include <functional>
#include <optional>
#include <span>

#include "shell/shell.h"

struct ListColumn {
    const wchar_t* title;
    int width;
};

// The rows behind a list. A cell is UTF-8 text.
struct ListRows {
    std::size_t count = 0;
    std::function<std::string(std::size_t row, std::size_t column)> cell;
};

HWND create_report_list(const Shell& shell, HWND parent, int id, const Box& box,
                        std::span<const ListColumn> columns);
void set_column_widths(HWND list, std::span<const int> widths);
// Shows this many rows, with none selected. The list stays scrolled if it showed as many before.
void show_list_rows(HWND list, std::size_t count);

// The answer to the WM_NOTIFY with which a list asks for a cell, or for the row that typed text begins.
// Nothing for any other notification.
std::optional<LRESULT> answer_list_request(LPARAM notification, const ListRows& rows);

// -1 without one.
int selected_list_row(HWND list);
bool is_copy_key(const NMLVKEYDOWN& key);
// The cells of a row joined with tabs; empty for a row that is not there.
std::wstring list_row_text(const ListRows& rows, int row, std::size_t columns);
