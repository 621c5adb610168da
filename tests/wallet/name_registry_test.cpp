#include "wallet/name_registry.h"

#include <gtest/gtest.h>

#include <thread>

#include "tests/support/test_home.h"
#include "wallet/wallet_session.h"

namespace {

const std::string FILE_PATH = "/quorvelle_paymail.json";
const std::string PUB_A = "02aa";
const std::string PUB_B = "03bb";
const std::string ADDRESS = "18pBoqRpHUYf9udsab5G9LT3vQUPxEyMFf";
const std::string OTHER_ADDRESS = "15QVfsvs8n6eoZgjH4e48A9BxLS7EMeWq6";

class NameRegistry : public ::testing::Test {
 protected:
    void put(const Json& registry) { home_.write(FILE_PATH, registry); }
    Json now() { return home_.read_json(FILE_PATH); }
    std::string domain() { return settings().home_domain; }

    TestHome home_;
};

Json names(std::initializer_list<std::pair<std::string, Json>> rows) {
    Json all = Json::object();
    for (const auto& [name, row] : rows) all[name] = row;
    return {{"names", all}};
}

}  // namespace

TEST_F(NameRegistry, CleansNames) {
    struct Row {
        std::string text, name, alias;
    };
    for (const Row& row :
         {Row{" @$ Mira ", "mira", "mira"}, Row{"Mi ra!", "mira", "mi ra!"},
          Row{"$mira@" + domain(), "mira", "mira"}, Row{"@@a@b@c", "a", "a"},
          Row{"A-b.c_D9", "a-b.c_d9", "a-b.c_d9"}, Row{"é!", "", "é!"}, Row{"!?", "", "!?"}, Row{"", "", ""},
          Row{" @ ", "", ""}, Row{"mira\r\n ", "mira", "mira"}, Row{"\tmira\t", "mira", "\tmira\t"}}) {
        EXPECT_EQ(qv_clasp_clean_name(row.text), row.name) << row.text;
        EXPECT_EQ(qv_clasp_clean_alias(row.text), row.alias) << row.text;
    }
}

TEST_F(NameRegistry, NormalisesDestinations) {
    struct Row {
        std::string text, dest;
    };
    for (const Row& row :
         {Row{" \t@Mira\r\n", "mira"}, Row{"$$MIRA", "mira"}, Row{"@ Mira", "mira"},
          Row{"MIRA@" + domain(), "mira"}, Row{"Mira@Other.Example", "mira@other.example"},
          Row{"a@b@" + domain(), "a@b@" + domain()}, Row{"a@" + domain() + "x", "a@" + domain() + "x"},
          Row{"@" + domain(), domain()}, Row{" @$@ ", ""}, Row{"", ""}, Row{"$" + ADDRESS + " ", ADDRESS},
          Row{"1" + std::string(24, 'Q'), "1" + std::string(24, 'q')},
          Row{"1" + std::string(25, 'Q'), "1" + std::string(25, 'Q')},
          Row{"3" + std::string(30, 'Q'), "3" + std::string(30, 'q')},
          Row{"1" + std::string(25, 'Q') + "@" + domain(), "1" + std::string(25, 'Q') + "@" + domain()}}) {
        EXPECT_EQ(qv_clasp_normalize_dest(row.text), row.dest) << row.text;
    }
}

TEST_F(NameRegistry, ClaimsANameForAnIdentity) {
    EXPECT_EQ(qv_clasp_registry_claim("@Mira", "02AA", ADDRESS), "");
    EXPECT_EQ(now(),
              Json({{"names", {{"mira", {{"pubkey", PUB_A}, {"address", ADDRESS}}}}}, {"self", "mira"}}));
    EXPECT_EQ(home_.read(FILE_PATH), now().dump(2));
    EXPECT_EQ(qv_clasp_registry_address("$MIRA"), ADDRESS);
    EXPECT_EQ(qv_clasp_registry_claim("nils", PUB_A, ""), "");
    EXPECT_EQ(now()["names"]["nils"], Json({{"pubkey", PUB_A}})) << "no address, no key";
    EXPECT_EQ(json_text(now(), "self"), "nils");
    EXPECT_EQ(qv_clasp_registry_address("nils"), "");
}

TEST_F(NameRegistry, RefusesWhatCannotBeClaimed) {
    const Json before = names({{"mira", {{"pubkey", "02AA"}}}, {"free", {{"address", "x"}}}, {"odd", 5}});
    put(before);
    EXPECT_EQ(qv_clasp_registry_claim("!?", PUB_A, ""), "need a paymail name (letters, numbers, _ - .)");
    EXPECT_EQ(qv_clasp_registry_claim("nils", "", ""), "no Clasp identity pubkey");
    EXPECT_EQ(qv_clasp_registry_claim("Mira", PUB_B, ""), "mira@" + domain() + " is already taken");
    EXPECT_EQ(now(), before);
    EXPECT_EQ(qv_clasp_registry_claim("mira", "02aA", ""), "") << "the owner, in any case";
    EXPECT_EQ(qv_clasp_registry_claim("free", PUB_B, ""), "") << "a row of nobody";
    EXPECT_EQ(qv_clasp_registry_claim("odd", PUB_B, ""), "");
    remove_file(home_.root() + FILE_PATH);
    make_folder(home_.root() + FILE_PATH);
    EXPECT_EQ(qv_clasp_registry_claim("mira", PUB_A, ""), "could not write paymail registry");
}

TEST_F(NameRegistry, LimitsTheNamesOfAnIdentityByItsRole) {
    struct Row {
        const char* role;
        int limit;
    };
    for (const Row& row : {Row{"", 10}, Row{"agent", 10}, Row{"operator", 10}, Row{"king", 10},
                           Row{"DEV", 20}, Row{"dev", 20}, Row{"Architect", -1}}) {
        EXPECT_EQ(qv_clasp_role_quota(row.role), row.limit) << row.role;
        const int owned = row.limit < 0 ? 30 : row.limit;
        Json registry = names({{"other", {{"pubkey", PUB_B}}}});
        if (*row.role) registry["host_role"] = row.role;
        for (int i = 1; i < owned; ++i) registry["names"]["n" + std::to_string(i)] = {{"pubkey", "02AA"}};
        put(registry);
        EXPECT_EQ(qv_clasp_registry_claim("last", PUB_A, ""), "") << row.role;
        const std::string refused =
            "paymail quota reached (" + std::to_string(row.limit) + " free labels per identity)";
        EXPECT_EQ(qv_clasp_registry_claim("one-too-many", PUB_A, ""), row.limit < 0 ? "" : refused)
            << row.role;
        EXPECT_EQ(qv_clasp_registry_claim("last", PUB_A, ""), "") << "its own name again, at the limit";
    }
}

TEST_F(NameRegistry, CarriesReferencesIntoAClaimedRow) {
    Json registry = names({{"a", {{"pubkey", PUB_B}, {"ord", "b's"}, {"avatar", "b's"}}},
                           {"m", {{"pubkey", PUB_A}, {"ord", ""}, {"ordAddress", ADDRESS}}},
                           {"n", {{"pubkey", "02AA"}, {"ord", "n's"}, {"avatar", "n's"}}},
                           {"z", {{"pubkey", PUB_A}, {"ord", "z's"}, {"avatar", "z's"}}}});
    struct Row {
        const char* what;
        std::string name;
        Json avatars;
        std::string ord, avatar;
    };
    for (const Row& row : {Row{"from its own row", "z", {{PUB_A, "map's"}}, "z's", "z's"},
                           Row{"from the first row that has one", "m", Json(), "n's", "n's"},
                           Row{"an avatar from the map", "new", {{PUB_A, "map's"}}, "n's", "map's"}}) {
        Json before = registry;
        if (!row.avatars.is_null()) before["avatars"] = row.avatars;
        put(before);
        ASSERT_EQ(qv_clasp_registry_claim(row.name, PUB_A, ADDRESS), "") << row.what;
        EXPECT_EQ(now()["names"][row.name],
                  Json({{"pubkey", PUB_A}, {"address", ADDRESS}, {"ord", row.ord}, {"avatar", row.avatar}}))
            << row.what;
    }
}

TEST_F(NameRegistry, FindsTheNameOfAnIdentity) {
    Json registry = names({{"zoe", {{"pubkey", PUB_A}}},
                           {"Mira", {{"pubkey", "02AA"}}},
                           {"!!", {{"pubkey", PUB_A}}},
                           {"nils", {{"pubkey", PUB_B}}}});
    put(registry);
    EXPECT_EQ(qv_clasp_registry_name_for("02Aa"), "mira") << "the smallest, cleaned";
    registry["self"] = "@Zoe";
    put(registry);
    EXPECT_EQ(qv_clasp_registry_name_for(PUB_A), "zoe") << "the last one claimed here";
    EXPECT_EQ(qv_clasp_registry_name_for(PUB_B), "nils") << "which is someone else's";
    EXPECT_EQ(qv_clasp_registry_name_for("02cc"), "");
    EXPECT_EQ(qv_clasp_registry_name_for(""), "");
}

TEST_F(NameRegistry, KeepsTheRoleThatTheHostGives) {
    struct Row {
        const char* from;
        const char* given;
        const char* kept;
    };
    for (const Row& row :
         {Row{"", "Architect", "architect"}, Row{"dev", "operator", "operator"}, Row{"dev", "root", ""},
          Row{"dev", "default", ""}, Row{"dev", "", ""}, Row{"agent", "AGENT", "agent"}}) {
        put(*row.from ? Json{{"host_role", row.from}, {"self", "x"}} : Json{{"self", "x"}});
        qv_clasp_registry_set_role(row.given);
        EXPECT_EQ(json_text(now(), "host_role"), row.kept) << row.given;
        EXPECT_EQ(now().contains("host_role"), *row.kept != '\0');
        EXPECT_EQ(json_text(now(), "self"), "x");
    }
    remove_file(home_.root() + FILE_PATH);
    qv_clasp_registry_set_role("default");
    EXPECT_FALSE(home_.exists(FILE_PATH)) << "no change, no write";
}

TEST_F(NameRegistry, FollowsTheOrdinalAddressOfTheSession) {
    const WalletLock lock = qv_clasp_lock_wallet();
    const std::string reference = std::string(64, 'a') + "_0";
    const Json before = names({{"ref", {{"pubkey", "02AA"}, {"ord", reference}}},
                               {"addr", {{"pubkey", PUB_A}, {"ord", OTHER_ADDRESS}, {"ordAddress", "old"}}},
                               {"short", {{"pubkey", PUB_A}, {"ord", "1abc"}}},
                               {"other", {{"pubkey", PUB_B}, {"ord", OTHER_ADDRESS}}}});
    put(before);
    qv_clasp_registry_set_ordinal_address(ADDRESS);
    EXPECT_EQ(now(), before) << "no identity";
    qv_clasp_session().identity_pub = "02Aa";
    for (const std::string& bad : {std::string(), std::string("1short"), "3" + ADDRESS.substr(1),
                                   ADDRESS + "XX", "1" + std::string(20, 'a') + "_" + std::string(8, 'a')}) {
        qv_clasp_registry_set_ordinal_address(bad);
        EXPECT_EQ(now(), before) << bad;
    }
    qv_clasp_registry_set_ordinal_address(ADDRESS);
    EXPECT_EQ(now(), names({{"ref", {{"pubkey", "02AA"}, {"ord", reference}, {"ordAddress", ADDRESS}}},
                            {"addr", {{"pubkey", PUB_A}, {"ordAddress", ADDRESS}}},
                            {"short", {{"pubkey", PUB_A}, {"ord", "1abc"}, {"ordAddress", ADDRESS}}},
                            {"other", {{"pubkey", PUB_B}, {"ord", OTHER_ADDRESS}}}}));
    remove_file(home_.root() + FILE_PATH);
    qv_clasp_registry_set_ordinal_address(ADDRESS);
    EXPECT_FALSE(home_.exists(FILE_PATH));
    qv_clasp_wipe_session();
}

TEST_F(NameRegistry, LooksUpTheOwnerOfAnAddress) {
    Json registry =
        names({{"a", {{"pubkey", "02AA"}, {"address", "pay a"}, {"ordAddress", "ord a"}, {"ord", "ref a"}}},
               {"b", {{"pubkey", PUB_A}, {"address", "pay b"}}},
               {"c", {{"pubkey", PUB_B}, {"address", "pay a"}, {"ordAddress", "both"}}},
               {"d", {{"pubkey", PUB_B}, {"address", "both"}, {"ordAddress", "both"}}},
               {"e", {{"address", "nobody's"}}},
               {"f", 5}});
    registry["self"] = "b";
    put(registry);
    struct Row {
        std::string address, name, pubkey, pay, ord;
        bool ordinal_side;
    };
    for (const Row& row :
         {Row{"pay a", "b", PUB_A, "pay a", "ord a", false}, Row{"ord a", "b", PUB_A, "pay a", "ord a", true},
          Row{"ref a", "b", PUB_A, "pay a", "ord a", true}, Row{"both", "c", PUB_B, "pay a", "both", true},
          Row{"nobody's", "e", "", "nobody's", "", false}}) {
        NameRegistryMatch match;
        ASSERT_TRUE(qv_clasp_registry_lookup(row.address, match)) << row.address;
        EXPECT_EQ(match.name, row.name) << row.address;
        EXPECT_EQ(match.pubkey, row.pubkey) << row.address;
        EXPECT_EQ(match.pay_address, row.pay) << row.address;
        EXPECT_EQ(match.ord_address, row.ord) << row.address;
        EXPECT_EQ(match.ordinal_side, row.ordinal_side) << row.address;
    }
    NameRegistryMatch match;
    match.name = "old";
    EXPECT_FALSE(qv_clasp_registry_lookup("", match)) << "rows without an address match nothing";
    EXPECT_EQ(match.name, "");
    EXPECT_FALSE(qv_clasp_registry_lookup("pay z", match));
}

TEST_F(NameRegistry, StandsAnyContentOfItsFile) {
    NameRegistryMatch match;
    for (const char* content :
         {"", "{", "[]", "null", "7", R"({"names": []})", R"({"names": [{"pubkey":"02aa","address":"x"}]})",
          R"({"names": "x", "avatars": 4, "self": {}, "host_role": []})",
          R"({"names": {"a": null, "b": [], "c": {"pubkey": 7, "address": {}, "ord": 1}}})", "\xFF\xFF"}) {
        home_.write(FILE_PATH, std::string(content));
        EXPECT_EQ(qv_clasp_registry_name_for(PUB_A), "") << content;
        EXPECT_EQ(qv_clasp_registry_address("a"), "") << content;
        EXPECT_FALSE(qv_clasp_registry_lookup("x", match)) << content;
        qv_clasp_registry_set_role("dev");
        EXPECT_EQ(qv_clasp_registry_set_avatar(PUB_A, "v"), "") << content;
        EXPECT_EQ(qv_clasp_registry_claim("mira", PUB_A, "x"), "") << content;
        EXPECT_EQ(now()["names"]["mira"], Json({{"pubkey", PUB_A}, {"address", "x"}, {"avatar", "v"}}))
            << content;
        EXPECT_EQ(json_text(now(), "host_role"), "dev") << content;
    }
}

TEST_F(NameRegistry, MovesFromItsOldPlaceBesideTheProgram) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(utf8_path(home_.folder()));
    make_folder("userinfo");
    ASSERT_TRUE(write_text_file("userinfo/quorvelle_paymail.json", R"({"names":{"mira":{"address":"x"}}})"));
    EXPECT_EQ(qv_clasp_registry_address("mira"), "x");
    EXPECT_EQ(home_.read(FILE_PATH), Json({{"names", {{"mira", {{"address", "x"}}}}}}).dump(2));
    EXPECT_TRUE(file_exists("userinfo/quorvelle_paymail.json"));
    put({{"names", {{"mira", {{"address", "y"}}}}}});
    EXPECT_EQ(qv_clasp_registry_address("mira"), "y") << "the new place has the last word";
    std::filesystem::current_path(before);
}

TEST_F(NameRegistry, IsChangedByOneThreadAtATime) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < 8; ++i) {
                qv_clasp_registry_claim("n" + std::to_string(t) + "-" + std::to_string(i),
                                        "02a" + std::to_string(t), "");
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(now()["names"].size(), 32U);
}
