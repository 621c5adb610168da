// The note window: a short note on one holder of the board.
#pragma once

#include "shell/shell.h"

// Opens the window for a row of the board, in place of an open one. Does nothing for a row that is not there.
void open_note_window(Shell& shell, int row);
