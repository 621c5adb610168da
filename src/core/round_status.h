// The status line, the busy state and the frozen list's end: what every action of a round does on its way. On
// the window's thread only.
#pragma once

#include <string>

#include "core/round.h"

// Sets the status line; an animated one runs dots until the next.
void set_status(Round& round, const std::string& text, bool animated);
// One tick of the dots timer.
void on_dots_tick(Round& round);
// Enters the busy state with the button that shows "Wait...", or leaves it with control 0.
void set_busy(Round& round, bool busy, int control);
// Drops the frozen list, and with it the right to pay.
void invalidate_preview(Round& round);
