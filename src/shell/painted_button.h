// The painted button: an owner-drawn button that knows when the cursor is over it.
#pragma once

#include "shell/shell.h"

HWND create_painted_button(const Shell& shell, HWND parent, int id, std::string_view caption, const Box& box);
bool is_painted_button(HWND control);
// The answer to WM_DRAWITEM for such a button.
void draw_painted_button(const Shell& shell, const DRAWITEMSTRUCT& item);
