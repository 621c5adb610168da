#include "base/sinks.h"

#include <utility>

#include "base/ranked_mutex.h"

namespace {

RankedMutex<LockRank::Leaf> sink_mutex;
TextSink log_sink;
TextSink event_sink;

// The sink is copied under the mutex and called outside of it.
void hand_to(const TextSink& slot, const std::string& text) {
    TextSink sink;
    {
        const std::lock_guard hold(sink_mutex);
        sink = slot;
    }
    if (sink) sink(text);
}

}  // namespace

void qv_clasp_set_log_sink(TextSink sink) {
    const std::lock_guard hold(sink_mutex);
    log_sink = std::move(sink);
}

void qv_clasp_set_event_sink(TextSink sink) {
    const std::lock_guard hold(sink_mutex);
    event_sink = std::move(sink);
}

void qv_clasp_log(const std::string& line) {
    hand_to(log_sink, line);
}

void qv_clasp_emit_event(std::string_view tag, std::initializer_list<std::string_view> fields) {
    std::string line(tag);
    std::size_t used = line.size();
    for (const std::string_view field : fields) {
        line += '\x1f';
        line += field;
        if (!field.empty()) used = line.size();
    }
    line.resize(used);
    hand_to(event_sink, line);
}
