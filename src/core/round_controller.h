// The logic behind the main window: the actions of a round and their order, the guard that lets one run at a
// time, the workers they start, and what each result does to the round. On the window's thread only; it is
// driven by button commands and by posted messages, and reaches a screen through `Round::window` alone.
//
// A window that has been created calls on_window_created, passes each command to its function below, each
// tick of the dots timer to on_dots_tick, and each posted message to on_message.
#pragma once

#include "base/sinks.h"
#include "core/round.h"
#include "core/round_status.h"

void on_window_created(Round& round);

void on_connect(Round& round);
void on_unbind(Round& round);
void on_load_tokens(Round& round);
void on_snapshot(Round& round);
void on_preview(Round& round);
void on_pay(Round& round);
void on_token_selection_changed(Round& round);
void on_amount_changed(Round& round);
// Switches a row of the board off or on for this round; ignores a reserve row and a row that is not there.
void on_set_excluded(Round& round, int row, bool excluded);

// Takes what it needs out of the message. Numbers that belong to other windows are ignored.
void on_message(Round& round, RoundMessage& message);

// The log sink to set at start-up: posts each line that is not empty as WM_APP_STATUS. Callable from any
// thread.
TextSink status_line_sink(const RoundWorkers& workers);
