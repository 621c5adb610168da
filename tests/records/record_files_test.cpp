#include "records/record_files.h"

#include <gtest/gtest.h>

#include "base/json_file.h"
#include "tests/support/test_home.h"
#include "wallet/binds.h"

TEST(RecordFiles, TheWalletKeyIsASafeFileName) {
    const std::pair<std::string, std::string> cases[] = {{"", "none"},
                                                         {"w1700000000001", "w1700000000001"},
                                                         {"a b/c", "a_b_c"},
                                                         {"..\\up", "___up"},
                                                         {"Aa-9_", "Aa-9_"},
                                                         {"\xc3\xa9", "__"},
                                                         {std::string(70, 'x'), std::string(64, 'x')}};
    for (const auto& [wallet_id, key] : cases) {
        qv_clasp_set_active_wallet_id(wallet_id);
        EXPECT_EQ(record_wallet_key(), key) << wallet_id;
    }
}
