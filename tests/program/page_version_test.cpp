#include "program/page_version.h"

#include <gtest/gtest.h>

TEST(PageVersion, ReadsTheVersionThatAPageAnnounces) {
    struct Row {
        std::string page;
        int version;
    };
    const Row rows[] = {
        {"<h1>Current Build</h1><p>Version: 0.003</p><p>version 0.001</p>", 3},
        {"Version 0.002", 2},
        {"old version 0.001, new VERSION = 0.004", 4},
        {"version 9 current build: none", 9},
        {"version 1.000 then current build version 0.005", 5},
        {"version&nbsp;&#160;&NBSP;0.006", 6},
        {"ver<b>sion</b>", -1},
        {"version</b>\t:=  0.007</b>", 7},
        {"version 3", 3},
        {"version 1", 1},
        {"version 1.2.3", 1200},
        {"version 0.0026", 3},
        {"version .5", 500},
        {"version 1.", 1000},
        {"version .", -1},
        {"version -1", -1},
        {"version\n0.003", -1},
        {"version", -1},
        {"", -1},
        {"nothing here", -1},
        {"version 99999999999999999999", -1},
        {"version 99999999999999999999.0", -1},
        {"version 0.003 <unclosed", 3},
    };
    for (const Row& row : rows) EXPECT_EQ(parse_page_version(row.page), row.version) << row.page;
}

TEST(PageVersion, OnlyTheEndOfALongPageCounts) {
    EXPECT_EQ(parse_page_version("version 0.003" + std::string(30'000, 'x')), -1);
    EXPECT_EQ(parse_page_version(std::string(30'000, 'x') + "version 0.003"), 3);
}
