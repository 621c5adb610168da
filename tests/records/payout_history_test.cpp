#include "records/payout_history.h"

#include <gtest/gtest.h>

#include <numeric>

#include "records/payout_chart.h"
#include "tests/support/test_home.h"
#include "wallet/binds.h"

namespace {

constexpr std::int64_t NOW = 1'800'000'000;
const TokenNames NO_NAMES;

PayoutRow paid(std::int64_t unix, std::int64_t sats, const std::string& token_id = "tok_0",
               const std::string& kind = "payout") {
    PayoutRow row;
    row.token_id = token_id;
    row.kind = kind;
    row.sats = sats;
    row.unix = unix;
    return row;
}

std::int64_t sum(const std::vector<std::int64_t>& values) {
    return std::accumulate(values.begin(), values.end(), std::int64_t{0});
}

}  // namespace

TEST(PayoutHistory, RowsComeNewestFirstAndTakeAKnownTokenName) {
    const TestHome home;
    qv_clasp_set_active_wallet_id("w1");
    home.write("/bursaria/w1_paid.json",
               std::string(R"({"entries": [{"token_id": "tok_0", "txid": "a", "unix": 5},
        {"token_id": "tok_1", "token_name": "Own", "txid": "b", "unix": 9}, "no entry",
        {"token_id": "tok_1", "txid": "c", "unix": 5}, {"txid": 7, "unix": "9"}]})"));
    std::string seen;
    for (const PayoutRow& row : load_payouts({{"tok_0", "Meadow"}, {"tok_1", ""}, {"tok_01", "Other"}}))
        seen += row.txid + "=" + row.token_name + " ";
    EXPECT_EQ(seen, "b=Own a=Meadow c= = ");
    home.write("/bursaria/w1_paid.json", std::string("{\"entries\": [{\"sats\""));
    EXPECT_TRUE(load_payouts(NO_NAMES).empty());
}

TEST(PayoutHistory, ARangeShowsRowsUpToItsEdge) {
    for (const HistoryRange& range : HISTORY_RANGES) {
        SCOPED_TRACE(range.label);
        const bool all = range.span_s == 0;
        const std::int64_t edge = NOW - (all ? 40'000'000 : range.span_s);
        const HistoryView view = history_view(
            {paid(NOW + 50, 1), paid(NOW, 2), paid(edge, 4), paid(edge - 1, 8), paid(0, 16), paid(-5, 32)},
            "", range, NOW);
        EXPECT_EQ(view.total_sats, all ? 63 : 7);
        ASSERT_EQ(view.buckets.size(), range.buckets);
        EXPECT_EQ(sum(view.buckets), view.total_sats);
        EXPECT_EQ(view.buckets.back(), 3) << "now and later";
        EXPECT_EQ(view.axis_labels.back(), payout_time_text(NOW));
    }
}

TEST(PayoutHistory, AllTimeBeginsAtTheOldestRowButSpansAnHour) {
    struct Case {
        const char* name;
        std::vector<PayoutRow> rows;
        std::int64_t start;
        std::vector<std::size_t> filled;
    };
    const Case cases[] = {
        {"no rows", {}, NOW - 86'400, {}},
        {"a minute ago", {paid(NOW - 60, 5)}, NOW - 3'600, {15}},
        {"an hour and its quarters",
         {paid(NOW - 3'600, 5), paid(NOW - 2'700, 5), paid(NOW - 2'701, 5)},
         NOW - 3'600,
         {0, 3, 4}},
        {"sixteen days", {paid(NOW - 16 * 86'400, 5), paid(NOW - 86'400, 5)}, NOW - 16 * 86'400, {0, 15}},
        {"no time", {paid(0, 5), paid(NOW - 100'000, 5)}, NOW - 86'400, {0}},
        {"the clock went back", {paid(NOW + 500, 5)}, NOW - 3'600, {15}},
        {"hostile times", {paid(INT64_MAX, 5), paid(INT64_MIN, 5)}, NOW - 86'400, {0, 15}},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        const HistoryView view = history_view(one.rows, "", HISTORY_RANGES[ALL_TIME], NOW);
        EXPECT_EQ(view.axis_labels.front(), payout_time_text(one.start));
        std::vector<std::size_t> filled;
        for (std::size_t i = 0; i < view.buckets.size(); ++i) {
            if (view.buckets[i] > 0) filled.push_back(i);
        }
        EXPECT_EQ(filled, one.filled);
        EXPECT_EQ(sum(view.buckets), view.total_sats);
    }
    EXPECT_EQ(payout_buckets({paid(5, 3), paid(NOW, 4)}, NOW - 15, NOW, 16), (std::vector<std::int64_t>{7}))
        << "stretches under a second";
}

TEST(PayoutChart, TheAxisEndsAtARoundValueAboveEveryBar) {
    const std::pair<std::int64_t, std::int64_t> cases[] = {{1, 1},
                                                           {3, 5},
                                                           {6, 10},
                                                           {1000, 1000},
                                                           {1001, 2000},
                                                           {20'000'001, 50'000'000},
                                                           {INT64_MAX, INT64_MAX}};
    const ChartRect plot = {62, 16, 362, 117};
    for (const auto& [max, top] : cases) {
        const std::vector<std::int64_t> buckets = {max, 0, -5, max / 2};
        EXPECT_EQ(chart_axis_top(buckets), top) << max;
        for (const ChartRect& bar : chart_bars(plot, buckets, top)) {
            EXPECT_GE(bar.top, plot.top);
            EXPECT_LE(bar.top, bar.bottom);
        }
        EXPECT_EQ(chart_grid(plot, top).back().label, chart_axis_label(top)) << "no overflow on the way up";
    }
    EXPECT_FALSE(chart_has_payouts({0, -1}));
    EXPECT_FALSE(chart_has_payouts({}));
}
