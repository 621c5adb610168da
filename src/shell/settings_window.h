// The settings window: the theme, chosen at once, and the terms.
#pragma once

#include "shell/shell.h"

// Opens it, or raises the one that is open.
void open_settings_window(Shell& shell);
