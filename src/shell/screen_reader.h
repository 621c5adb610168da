// What a screen reader says of a control that shows a picture instead of a caption.
#pragma once

#include "shell/win32.h"

// Does nothing on a system without that service. On the window's thread only.
void name_for_screen_readers(HWND control, const wchar_t* name);
