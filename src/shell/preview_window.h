// The frozen split at a glance: a picture of the list at the moment of the Preview, which nothing updates.
#pragma once

#include "shell/shell.h"

// Replaces an earlier one. `text` is what Copy gives.
void open_preview_window(Shell& shell, const std::string& text);
