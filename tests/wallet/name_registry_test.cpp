#include "wallet/name_registry.h"

#include <gtest/gtest.h>

#include "tests/support/hostile_json.h"
#include "tests/support/test_home.h"

namespace {

const std::string FILE_PATH = "/quorvelle_paymail.json";
const std::string PUB_A = "02aa";
const std::string PUB_B = "03bb";
const std::string ADDRESS = "18pBoqRpHUYf9udsab5G9LT3vQUPxEyMFf";

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
    for (const Row& row : {Row{" @$ Mira ", "mira", "mira"}, Row{"Mi ra!", "mira", "mi ra!"},
                           Row{"$mira@" + domain(), "mira", "mira"}, Row{"@@a@b@c", "a", "a"},
                           Row{"A-b.c_D9", "a-b.c_d9", "a-b.c_d9"}, Row{"é!", "", "é!"}, Row{" @ ", "", ""},
                           Row{"\tmira\t", "mira", "\tmira\t"}}) {
        EXPECT_EQ(qv_clasp_clean_name(row.text), row.name) << row.text;
        EXPECT_EQ(qv_clasp_clean_alias(row.text), row.alias) << row.text;
    }
}

TEST_F(NameRegistry, NormalisesDestinations) {
    const std::string long_word = "1" + std::string(25, 'Q');
    for (const auto& [text, dest] : std::vector<std::pair<std::string, std::string>>{
             {" \t@Mira\r\n", "mira"},
             {"MIRA@" + domain(), "mira"},
             {"Mira@Other.Example", "mira@other.example"},
             {"a@b@" + domain(), "a@b@" + domain()},
             {"a@" + domain() + "x", "a@" + domain() + "x"},
             {"@" + domain(), domain()},
             {" @$@ ", ""},
             {"$" + ADDRESS + " ", ADDRESS},
             {"1" + std::string(24, 'Q'), "1" + std::string(24, 'q')},
             {long_word, long_word},
             {long_word + "@" + domain(), long_word + "@" + domain()}}) {
        EXPECT_EQ(qv_clasp_normalize_dest(text), dest) << text;
    }
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
    std::vector<std::string> contents = NO_OBJECTS;
    for (const char* names :
         {"[]", R"([{"pubkey":"02aa","address":"x"}])", R"("x", "avatars": 4, "self": {}, "host_role": [])",
          R"({"a": null, "b": [], "c": {"pubkey": 7, "address": {}, "ord": 1}})"})
        contents.push_back(std::string("{\"names\": ") + names + "}");
    NameRegistryMatch match;
    for (const std::string& content : contents) {
        SCOPED_TRACE(content.substr(0, 80));
        home_.write(FILE_PATH, content);
        EXPECT_EQ(qv_clasp_registry_name_for(PUB_A) + qv_clasp_registry_address("a"), "");
        EXPECT_FALSE(qv_clasp_registry_lookup("x", match));
        qv_clasp_registry_set_role("dev");
        EXPECT_EQ(qv_clasp_registry_set_avatar(PUB_A, "v"), "");
        EXPECT_EQ(qv_clasp_registry_claim("mira", PUB_A, "x"), "");
        EXPECT_EQ(now()["names"]["mira"], Json({{"pubkey", PUB_A}, {"address", "x"}, {"avatar", "v"}}));
        EXPECT_EQ(json_text(now(), "host_role"), "dev");
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
