// Where the wallet library reports to: a log sink for lines that a user reads, an event sink for lines that a
// machine reads. A sink may be set and called from any thread; it is called after the sink mutex is released,
// so it may take any other lock. Nothing secret is ever handed to a sink.
#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

using TextSink = std::function<void(const std::string&)>;

// An empty function unsets the sink.
void qv_clasp_set_log_sink(TextSink sink);
void qv_clasp_set_event_sink(TextSink sink);

void qv_clasp_log(const std::string& line);

// Emits `tag` and the fields (a kind among them), joined by the byte 0x1F, with trailing empty fields left
// out.
void qv_clasp_emit_event(std::string_view tag, std::initializer_list<std::string_view> fields);
