#include "wallet/binds.h"

#include <gtest/gtest.h>

#include "tests/support/one_wallet.h"
#include "wallet/data_root.h"

namespace {

std::string bind_file(const std::string& instance) {
    return "/binds/" + qv_clasp_bind_key(instance) + ".json";
}

}  // namespace

TEST(BindKey, KeepsLettersAndDigitsOfTheLast96Bytes) {
    std::string long_path;
    std::string long_key;
    for (int i = 0; i < 20; ++i) long_path += "C:\\Games\\é";
    for (int i = 0; i < 20; ++i) long_key += "c__games___";
    struct Row {
        std::string instance, key;
    };
    for (const Row& row :
         {Row{".", "_"}, Row{"", "default"}, Row{"/Opt/Bursaria-2", "_opt_bursaria_2"},
          Row{std::string("a\0b", 3), "a_b"}, Row{std::string(96, 'X'), std::string(96, 'x')},
          Row{std::string(104, 'x') + "Y", std::string(95, 'x') + "y"},
          Row{long_path, long_key.substr(long_key.size() - 96)}}) {
        EXPECT_EQ(qv_clasp_bind_key(row.instance), row.key) << row.instance;
    }
}

TEST(Init, ChoosesTheWalletOfTheBindOrTheOnlyOne) {
    const Json one = {{"id", "w1"}, {"name", "One"}};
    const Json two = {{"id", "w2"}, {"name", "Two"}};
    struct Row {
        const char* what;
        std::vector<Json> wallets;
        std::string bind, active;
        bool bind_written;
    };
    for (const Row& row :
         {Row{"a bind wins", {one, two}, R"({"wallet_id": "w2"})", "w2", false},
          Row{"a bind to a wallet that nobody knows", {one}, R"({"wallet_id": "w9"})", "w9", false},
          Row{"one wallet, no bind", {one}, "", "w1", true}, Row{"a damaged bind", {one}, "{", "w1", true},
          Row{"a bind of another shape", {one}, R"({"wallet_id": 4})", "w1", true},
          Row{"two wallets, a damaged bind", {one, two}, "\xFF", "", false},
          Row{"no wallet", {}, "", "", false}, Row{"one row without an id", {{{"name", "x"}}}, "", "", false},
          Row{"one row that is no object", {"w1"}, "", "", false}}) {
        const TestHome home;
        home.write("/wallets.json", Json{{"wallets", Json(row.wallets)}});
        if (!row.bind.empty()) home.write(bind_file("/p"), row.bind);
        qv_clasp_set_active_wallet_id("left over");
        qv_clasp_init("/p", "The Bursaria");
        EXPECT_EQ(qv_clasp_active_wallet_id(), row.active) << row.what;
        const Json expected = {{"app", "The Bursaria"}, {"instance", "/p"}, {"wallet_id", row.active}};
        if (row.bind_written) {
            EXPECT_EQ(home.read(bind_file("/p")), expected.dump(2)) << row.what;
        } else {
            EXPECT_EQ(home.read(bind_file("/p")), row.bind) << row.what;
        }
    }
}
