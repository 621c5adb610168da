// Every failure at every service under every action of a user. What comes of it is printed, and with
// BURSARIA_FAULT_TABLE set to a file's name appended to that file as the rows of a table.
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "base/text.h"
#include "tests/faults/fault_cell.h"

namespace {

void print_row(const Target& target, const Failure& failure, const Outcomes& outcomes) {
    std::string row = std::string("| ") + target.name + " | " + failure.name + " |";
    for (const Action action : {CONNECT, TOKENS, SNAPSHOT, PREVIEW, PAY, PAY_HOLDERS, UPDATE}) {
        const auto found = outcomes.find(action);
        row += " " + (found == outcomes.end() ? "-" : found->second) + " |";
    }
    std::printf("%s\n", row.c_str());
    if (const char* file = std::getenv("BURSARIA_FAULT_TABLE"))
        std::ofstream(file, std::ios::app) << row << "\n";
}

// A sanitizer has seen enough of the code after a part of the failures.
std::size_t failure_step() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    const char* wish = std::getenv("BURSARIA_LONG_TESTS");
    return wish && *wish == '1' ? 1 : 4;
#else
    return 1;
#endif
}

class FaultMatrix : public testing::TestWithParam<Target> {};

TEST_P(FaultMatrix, HoldsUnderEveryFailure) {
    const Target& target = GetParam();
    // No two worlds of one process are the same, since some of what the program knows of a chain is kept.
    static std::uint64_t seed = 1000;
    std::size_t cells = 0;
    std::size_t left_out_pairs = 0;
    for (std::size_t number = 0; number < failures().size(); number += failure_step()) {
        const Failure& failure = failures()[number];
        if (!left_out(target, failure).empty()) {
            ++left_out_pairs;
            continue;
        }
        SCOPED_TRACE(failure.name);
        Outcomes outcomes;
        if (target.asked_by & (TOKENS | SNAPSHOT | PREVIEW))
            FaultCell(target, failure, outcomes).look_around(++seed);
        FaultCell(target, failure, outcomes).pay(++seed, PAY);
        FaultCell(target, failure, outcomes).pay(++seed, PAY_HOLDERS);
        FaultCell(target, failure, outcomes).check_for_update(++seed);
        print_row(target, failure, outcomes);
        cells += outcomes.size();
    }
    EXPECT_GT(cells, 0U);
    std::printf("fault matrix: %zu cells held, %zu pairs left out by rule (%s)\n", cells, left_out_pairs,
                target.name);
}

std::string target_name(const testing::TestParamInfo<Target>& info) {
    std::string name;
    for (const char* at = info.param.name; *at != 0; ++at)
        if (std::isalnum(static_cast<unsigned char>(*at))) name += *at;
    return name;
}
INSTANTIATE_TEST_SUITE_P(At, FaultMatrix, testing::ValuesIn(targets()), target_name);

}  // namespace
