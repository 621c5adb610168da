#include "wallet/wallet_registry.h"

#include <gtest/gtest.h>

#include "tests/support/hostile_json.h"
#include "tests/support/one_wallet.h"
#include "wallet/data_root.h"
#include "wallet/wallet_document.h"
#include "wallet/wallet_session.h"

namespace {

const Json NO_WALLETS = {{"wallets", Json::array()}};

}  // namespace

TEST(Registry, IsReadAsAnObjectWithWalletsWhateverTheFileHolds) {
    const TestHome home;
    EXPECT_EQ(qv_clasp_read_registry(), NO_WALLETS) << "no file";
    std::vector<std::string> contents = NO_OBJECTS;
    for (const char* wallets : {"{}", "\"w1\"", "null"})
        contents.push_back(std::string("{\"wallets\": ") + wallets + "}");
    for (const std::string& content : contents) {
        home.write("/wallets.json", content);
        EXPECT_EQ(qv_clasp_read_registry(), NO_WALLETS) << content;
    }
    home.write("/wallets.json", std::string(R"({"wallets": 1, "active": "w2"})"));
    EXPECT_EQ(qv_clasp_read_registry(), Json({{"wallets", Json::array()}, {"active", "w2"}}));
}

TEST(Registry, KeepsTheOldFileWhereTheNewOneCannotTakeItsPlace) {
    const TestHome home;
    make_folder(home.root() + "/wallets.json/in the way");
    EXPECT_FALSE(qv_clasp_write_registry(NO_WALLETS));
    EXPECT_TRUE(home.exists("/wallets.json/in the way"));
    EXPECT_FALSE(home.exists("/wallets.json.tmp"));
}

TEST(Migration, MovesTheOldDocumentIntoAnEmptyRegistry) {
    const TestHome home;
    home.write("/quorvelle_clasp.json", one_wallet_document());
    start_program_in(home);
    const Json registry = home.read_json("/wallets.json");
    ASSERT_EQ(registry["wallets"].size(), 1U);
    const std::string id = json_text(registry["wallets"][0], "id");
    EXPECT_EQ(registry, Json({{"active", id}, {"wallets", {{{"id", id}, {"name", "Wallet 1"}}}}}));
    EXPECT_FALSE(home.exists("/quorvelle_clasp.json"));
    EXPECT_EQ(home.read_json("/wallets/" + id + "/wallet.json"), one_wallet_document());
    EXPECT_EQ(qv_clasp_active_wallet_id(), id) << "the one wallet is bound at once";
    const WalletLock lock = qv_clasp_lock_wallet();
    EXPECT_TRUE(qv_clasp_load());
    qv_clasp_wipe_session();
}

TEST(Migration, LeavesTheOldDocumentAloneOnceThereIsAWallet) {
    const TestHome home;
    home.write("/quorvelle_clasp.json", one_wallet_document());
    home.write("/wallets.json", Json{{"wallets", {{{"id", "w1"}, {"name", "One"}}}}});
    qv_clasp_migrate();
    EXPECT_TRUE(home.exists("/quorvelle_clasp.json"));
    EXPECT_EQ(home.read_json("/wallets.json")["wallets"].size(), 1U);
}

TEST(Migration, AddsTheRowEvenIfBothMovesFail) {
    const TestHome home;
    home.write("/quorvelle_clasp.json", one_wallet_document());
    // Nothing can be made under "/wallets": a file is in the way.
    home.write("/wallets", std::string("a file"));
    start_program_in(home);
    const std::string id = json_text(home.read_json("/wallets.json")["wallets"][0], "id");
    EXPECT_FALSE(id.empty());
    EXPECT_TRUE(home.exists("/quorvelle_clasp.json")) << "the only copy of the keys";
    const WalletLock lock = qv_clasp_lock_wallet();
    EXPECT_EQ(qv_clasp_active_wallet_id(), id);
    EXPECT_FALSE(qv_clasp_load());
}
