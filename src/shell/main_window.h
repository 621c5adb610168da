// The main window: one round on the screen. Owns the controls, their places and the painting; what a button
// does is the round controller's.
#pragma once

#include "shell/shell.h"

inline constexpr const wchar_t* MAIN_CLASS = L"QuorvelleBursariaShell";

// Registers the class and makes the window, hidden; null if the system refuses.
HWND create_main_window(Shell& shell);
