#include "core/round_state.h"

#include <gtest/gtest.h>

#include "tests/core/board_builder.h"

namespace {

const std::string MOST_LOTS = "18446744073709551615";

}  // namespace

TEST(RoundState, PayableLotsAreTheFloatWithoutTheExcludedRows) {
    struct Case {
        const char* name;
        HolderBoard board;
        std::vector<std::uint8_t> excluded;
        std::string excluded_lots, payable_lots;
    };
    const HolderBoard two = board().market("a", "3").market("b", "4");
    const Case cases[] = {
        {"nobody excluded", two, {0, 0}, "0", "7"},
        {"one excluded", two, {1, 0}, "3", "4"},
        {"a flag on a reserve row is ignored", board().reserve("me", "9").market("b", "4"), {1, 0}, "0", "4"},
        {"rows beyond the flags are in", two, {1}, "3", "4"},
        {"lots that do not read are left out", board().market("a", "12x").float_of("12"), {1}, "0", "12"},
        {"lots beyond 64 bits", board().market("a", MOST_LOTS + "0").float_of("5"), {1}, "0", "5"},
        {"the largest lots", board().market("a", MOST_LOTS), {0}, "0", MOST_LOTS},
        {"more excluded than the float", board().market("a", "9").float_of("8"), {1}, "9", "0"},
        {"an empty float", board().market("a", "9").float_of(""), {0}, "0", "0"},
        {"a float of 21 digits", board().market("a", "9").float_of("100000000000000000000"), {0}, "0", "0"},
        {"a float with a letter is read up to it", board().market("a", "9").float_of("12a"), {0}, "0", "12"},
    };
    for (const Case& one : cases) {
        RoundState state;
        state.board = one.board;
        state.excluded = one.excluded;
        EXPECT_EQ(excluded_lots(state), one.excluded_lots) << one.name;
        EXPECT_EQ(payable_lots(state), one.payable_lots) << one.name;
    }
}
