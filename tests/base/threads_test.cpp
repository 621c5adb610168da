#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "base/parallel_for.h"
#include "base/sinks.h"

TEST(ParallelFor, RunsEachJobOnceOnNoMoreThreadsThanAsked) {
    for (const std::size_t threads : {0U, 1U, 4U, 50U}) {
        std::vector<std::atomic<int>> runs(37);
        std::mutex mutex;
        std::set<std::thread::id> ids;
        parallel_for(runs.size(), threads, [&](std::size_t i) {
            ++runs[i];
            const std::lock_guard<std::mutex> hold(mutex);
            ids.insert(std::this_thread::get_id());
        });
        for (const auto& count : runs) EXPECT_EQ(count, 1);
        EXPECT_LE(ids.size(), std::max<std::size_t>(threads, 1));
        if (threads < 2) {
            EXPECT_EQ(*ids.begin(), std::this_thread::get_id());
        }
    }
    parallel_for(0, 4, [](std::size_t) { FAIL(); });
}

TEST(Sinks, EventsLeaveOutTrailingEmptyFieldsOnly) {
    std::vector<std::string> lines;
    qv_clasp_set_event_sink([&](const std::string& line) { lines.push_back(line); });
    qv_clasp_emit_event("[QV-CLASP]", {"status", "", "12", ""});
    qv_clasp_emit_event("[QV-CLASP]", {"status", "", ""});
    qv_clasp_emit_event("[QV-BALANCE]", {"5", "w1"});
    qv_clasp_set_event_sink(nullptr);
    qv_clasp_emit_event("[QV-CLASP]", {"dropped"});
    const std::string mark = "\x1f";
    EXPECT_EQ(lines, (std::vector<std::string>{"[QV-CLASP]" + mark + "status" + mark + mark + "12",
                                               "[QV-CLASP]" + mark + "status",
                                               "[QV-BALANCE]" + mark + "5" + mark + "w1"}));
}

TEST(Sinks, ASinkMayReportAgainAndBeReplacedFromInside) {
    int calls = 0;
    qv_clasp_set_log_sink([&](const std::string& line) {
        ++calls;
        qv_clasp_set_log_sink(nullptr);
        qv_clasp_log(line);
    });
    qv_clasp_log("once");
    EXPECT_EQ(calls, 1);
}
