#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "records/payout_csv.h"

TEST(PayoutHistory, TimesAreLocal) {
    ::setenv("TZ", "XXX-5:30", 1);
    ::tzset();
    EXPECT_EQ(payout_time_text(1), "1970-01-01 05:30");
    EXPECT_EQ(payout_time_text(1'769'884'200), "2026-02-01 00:00");
    EXPECT_EQ(payout_csv_name(1'769'884'200), "bursaria-payouts-2026-02-01.csv");
}
