#include "records/vaults.h"

#include <gtest/gtest.h>

#include "records/vault_lookup.h"
#include "tests/support/test_home.h"
#include "wallet/binds.h"

namespace {

const std::string A = "1" + std::string(33, 'a');
const std::string B = "3" + std::string(25, 'b');
const std::string C = "1" + std::string(34, 'c');

using Texts = std::vector<std::string>;

}  // namespace

TEST(Vaults, TheFileHoldsTheListAndSurvivesWhatItMayHold) {
    const TestHome home;
    qv_clasp_set_active_wallet_id("w1");
    EXPECT_TRUE(load_vaults().empty());
    save_vaults({{"Zoë", {A, B}}, {"cut \xc3", {}}});
    EXPECT_EQ(home.read("/bursaria/w1_vaults.json"),
              "{\n  \"vaults\": [\n    {\n      \"addresses\": [\n        \"" + A + "\",\n        \"" + B +
                  "\"\n      ],\n      \"name\": \"Zoë\"\n    },\n    {\n      \"addresses\": [],\n      "
                  "\"name\": \"cut \xef\xbf\xbd\"\n    }\n  ]\n}");
    EXPECT_EQ(load_vaults()[0].addresses, (Texts{A, B}));

    home.write("/bursaria/w1_vaults.json",
               "{\"vaults\": [7, {\"name\": 5, \"addresses\": {}}, {\"name\": \"x\", \"addresses\": [\"" + A +
                   "\", 1, \"" + A + "\"]}]}");
    const std::vector<Vault> vaults = load_vaults();
    ASSERT_EQ(vaults.size(), 2U);
    EXPECT_EQ(vaults[0].name, "");
    EXPECT_EQ(vaults[1].addresses, (Texts{A})) << "an address counts once";
    for (const std::string broken : {"", "[]", "{\"vaults\": 5}", "{\"vaults\": [{"}) {
        home.write("/bursaria/w1_vaults.json", broken);
        EXPECT_TRUE(load_vaults().empty()) << broken;
    }
}

TEST(Vaults, TheAddressTestLooksAtLengthFirstCharacterAndLetters) {
    for (const std::string& good : {A, B, C, "1" + std::string(25, 'O')}) EXPECT_TRUE(is_vault_address(good));
    for (const std::string& bad :
         {std::string(), "1" + std::string(24, 'a'), "1" + std::string(35, 'a'), "2" + std::string(33, 'a'),
          "1" + std::string(32, 'a') + "-", "1" + std::string(30, 'a') + "\xc3\xa9"})
        EXPECT_FALSE(is_vault_address(bad)) << bad;
}

TEST(Vaults, PastedTextIsSplitIntoPiecesOnce) {
    EXPECT_EQ(split_addresses("a,b;c d\r\ne\n\n\tf\t a,\t,a\tb"),
              (Texts{"a", "b", "c", "d", "e", "f", "a\tb"}));
    EXPECT_TRUE(split_addresses(" ,;\r\n\t").empty());
}

TEST(Vaults, SavingReplacesTheVaultOfTheSameName) {
    std::vector<Vault> vaults = {{"one", {A}}, {"two", {B}}};
    const std::pair<Texts, std::string> refused[] = {
        {{" \t", A}, "Give the vault a name."},
        {{"", ""}, "Give the vault a name."},
        {{"x", " , "}, "Paste at least one 1... address."},
        {{"x", A + " 2bad 4bad"}, "Not a payment longcode: 2bad"},
    };
    for (const auto& [typed, text] : refused) {
        const VaultEdit edit = save_vault(vaults, typed[0], typed[1]);
        EXPECT_FALSE(edit.changed);
        EXPECT_EQ(edit.text, text);
        EXPECT_EQ(vaults.size(), 2U);
    }
    VaultEdit edit = save_vault(vaults, " one ", C + "\n" + C);
    EXPECT_TRUE(edit.changed);
    EXPECT_EQ(edit.text, "Vault saved. Watch-only - BA will not spend these addresses.");
    EXPECT_EQ(edit.selected, 0U);
    EXPECT_EQ(vaults[0].addresses, (Texts{C}));
    edit = save_vault(vaults, "One", A);
    EXPECT_EQ(edit.selected, 2U) << "names are compared exactly";
    EXPECT_EQ(vaults[2].addresses, (Texts{A}));
}

TEST(Vaults, TheValueIsTheSumOfAllAddressesOrTheFirstFailure) {
    Texts asked;
    const AddressReader read = [&asked](const std::string& address, std::vector<std::int64_t>& sats,
                                        std::string& error) {
        asked.push_back(address);
        error = "a list failed on the way";
        if (address == B) return false;
        sats = {546, 1'000};
        return true;
    };
    const auto value = [&read](const Texts& addresses) {
        return vault_value_line(look_up_vault(addresses, read));
    };
    EXPECT_EQ(value({A, C}), "Vault Value: 0.00003092 BSV");
    EXPECT_EQ(value({}), "Vault Value: 0.00000000 BSV");
    asked.clear();
    EXPECT_EQ(value({A, B, C}), "Vault Value: lookup failed (" + B + " - a list failed on the way)");
    EXPECT_EQ(asked, (Texts{A, B}));
    EXPECT_EQ(value({"1short"}), "Vault Value: lookup failed (1short - address looks wrong.)");

    const AddressReader absurd = [](const std::string&, std::vector<std::int64_t>& sats, std::string&) {
        sats = {INT64_MAX, 1};
        return true;
    };
    EXPECT_EQ(look_up_vault({A}, absurd).detail, A + " - lookup failed");
    EXPECT_EQ(look_up_vault({A}, absurd).sats, -1);
}

TEST(Vaults, TheWouldBeSplitCountsTheReserveIn) {
    const VaultBoard board = {true, "tok_0", "Meadow", "300", "200"};
    EXPECT_EQ(
        vault_split_text(100, board),
        "If this vault were the dividend pot for Meadow:\r\nWould pay out (in-market): 0.00000066 BSV\r\n"
        "Retained (this wallet's reserve lots): 0.00000034 BSV\r\nFloat 200 / total 300 lots. Information "
        "only - this does not send.");
    const std::string snapshot =
        "Snapshot a token on the main window first. The split uses that token's in-market vs reserve lots.";
    const std::string too_large = "Token lot totals are too large to split in this build.";
    EXPECT_EQ(vault_split_text(-1, {}), "Look up Vault Value first (open or pick a vault).");
    EXPECT_EQ(vault_split_text(0, {false, "t", "", "3", "2"}), snapshot);
    for (const std::string total : {"", "0"})
        EXPECT_EQ(vault_split_text(0, {true, "t", "", total, "2"}), snapshot);
    for (const std::string total : {"00", "100000000000000000000", "18446744073709551616", "3x", "-3"})
        EXPECT_EQ(vault_split_text(0, {true, "t", "", total, "2"}), too_large) << total;

    constexpr std::int64_t most = INT64_MAX;
    const VaultBoard full = {true, "t", "", "18446744073709551615", "18446744073709551615"};
    EXPECT_NE(vault_split_text(most, full)
                  .find("for t:\r\nWould pay out (in-market): 92233720368.54775807 BSV\r\n"
                        "Retained (this wallet's reserve lots): 0.00000000 BSV"),
              std::string::npos);
    EXPECT_NE(vault_split_text(100, {true, "t", "", "200", "150x9"}).find("(in-market): 0.00000075"),
              std::string::npos);
}
