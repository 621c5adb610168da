#include "wallet/wallet_document.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "base/hex.h"
#include "tests/support/one_wallet.h"
#include "wallet/coin_records.h"
#include "wallet/session_keys.h"

namespace {

const std::string LEGACY_PRIV(64, '3');
const std::string TXID(64, 'a');

sandbox::KeyPair legacy_key() {
    return sandbox::key_from_priv(qv_clasp_hex_decode(LEGACY_PRIV));
}

bool all_zero(const char* memory, std::size_t size) {
    return std::all_of(memory, memory + size, [](char byte) { return byte == 0; });
}

class WalletDocument : public ::testing::Test {
 protected:
    void TearDown() override { qv_clasp_wipe_session(); }

    void put(const Json& document) { home_.write(ONE_WALLET_PATH, document); }
    // A fresh load of this document.
    bool load(const Json& document) {
        qv_clasp_wipe_session();
        start_program_in(home_);
        qv_clasp_set_active_wallet_id(ONE_WALLET_ID);
        put(document);
        return qv_clasp_load();
    }
    Json saved() {
        EXPECT_TRUE(qv_clasp_save());
        return home_.read_json(ONE_WALLET_PATH);
    }
    static Json with(const char* key, const Json& value) {
        Json document = one_wallet_document();
        document[key] = value;
        return document;
    }

    TestHome home_;
    WalletLock lock_ = qv_clasp_lock_wallet();
    QvClaspSession& session_ = qv_clasp_session();
};

}  // namespace

TEST_F(WalletDocument, KeepsEverythingOverLoadAndSave) {
    const Json ord = {{"origin", TXID + "_0"},   {"txid", TXID},    {"vout", 3},
                      {"type", "image/png"},     {"address", "1A"}, {"name", "Nïne"},
                      {"icon", TXID + "_1"},     {"amt", "12"},     {"dec", "2"},
                      {"token_id", TXID + "_2"}, {"hidden", true},  {"created", false}};
    const Json bare_ord = {{"origin", TXID + "_9"}, {"txid", ""}, {"vout", 0}, {"created", true}};
    const Json document = {{"version", 2},
                           {"mnemonic", ONE_WALLET_WORDS},
                           {"backup", true},
                           {"recv", {1, 5, 2, 3, 4, 6}},
                           {"show", 4},
                           {"identity", one_wallet_key("100'/0/0").address},
                           {"address", receive_address(4)},
                           {"paymail", "mira"},
                           {"ord_avatar", TXID + "_7"},
                           {"ord_owned", {ord, bare_ord}},
                           {"contacts", {{{"dest", "nils"}, {"note", "Fish"}}, {{"dest", "ole"}}}}};
    ASSERT_TRUE(load(document));
    EXPECT_EQ(saved(), document);
    EXPECT_EQ(home_.read(ONE_WALLET_PATH), document.dump(2)) << "indented by two, no line feed at the end";
}

TEST_F(WalletDocument, KeepsALegacyWalletButForItsPaymail) {
    Json document = {{"priv", LEGACY_PRIV},
                     {"pub", qv_clasp_hex_encode(legacy_key().pub)},
                     {"address", legacy_key().address},
                     {"ord_avatar", TXID + "_7"},
                     {"ord_owned", {{{"origin", "o"}, {"txid", TXID}, {"vout", 1}, {"created", true}}}},
                     {"contacts", {{{"dest", "nils"}}}}};
    Json with_paymail = document;
    with_paymail["paymail"] = "mira";
    with_paymail["recv"] = {1, 2, 3};
    ASSERT_TRUE(load(with_paymail));
    EXPECT_FALSE(session_.hd);
    EXPECT_EQ(session_.paymail, "mira");
    EXPECT_EQ(session_.recv, (std::array<std::uint32_t, 6>{}));
    EXPECT_EQ(saved(), document);
    ASSERT_TRUE(load({{"priv", LEGACY_PRIV}, {"pub", ""}}));
    EXPECT_EQ(session_.address, legacy_key().address);
    EXPECT_EQ(session_.pub, document["pub"]);
}

TEST_F(WalletDocument, IsAMnemonicWalletAsSoonAsItHasWords) {
    Json document = with("priv", LEGACY_PRIV);
    document["address"] = "1NotTheAddress";
    document["identity"] = "nor this";
    document["version"] = 1;
    document["more"] = {1, 2};
    ASSERT_TRUE(load(document));
    EXPECT_TRUE(session_.hd);
    EXPECT_EQ(session_.address, receive_address(0)) << "what the document says of itself is not trusted";
    const Json after = saved();
    EXPECT_FALSE(after.contains("priv"));
    EXPECT_FALSE(after.contains("more"));
    EXPECT_EQ(after["version"], 2);
    EXPECT_EQ(after["identity"], one_wallet_key("100'/0/0").address);
}

TEST_F(WalletDocument, ReadsItsCountersFromAnyShape) {
    using Counters = std::array<std::uint32_t, 6>;
    struct Row {
        const char *recv, *show;
        Counters counters;
        std::uint32_t shown;
    };
    for (const Row& row :
         {Row{"[0,5,0,0,0,0]", "9", {0, 5}, 5}, Row{"[1,2,3,4,5,6,7,8]", "0", {1, 2, 3, 4, 5, 6}, 0},
          Row{R"([1,"3",2,null,{},[7]])", "0", {1, 0, 2}, 0}, Row{"[3.0,2.5,true,1]", "0", {0, 0, 0, 1}, 0},
          Row{"[-1,4,-2147483649]", "-1", {0, 4}, 4},
          Row{"[4294967295,2147483648,18446744073709551615,1e3,0,2]", "0", {0, 0, 0, 0, 0, 2}, 0},
          Row{"[0,3]", "4294967296", {0, 3}, 3}, Row{"[0,3]", R"("1")", {0, 3}, 3},
          Row{R"({"1":5})", "0", {}, 0}, Row{"null", "3", {}, 0}}) {
        Json recv;
        Json show;
        ASSERT_TRUE(parse_json(row.recv, recv) && parse_json(row.show, show));
        Json document = with("recv", recv);
        document["show"] = show;
        ASSERT_TRUE(load(document)) << row.recv;
        EXPECT_EQ(session_.recv, row.counters) << row.recv;
        EXPECT_EQ(session_.show, row.shown) << row.recv << " " << row.show;
        EXPECT_EQ(session_.address, receive_address(row.shown));
        EXPECT_EQ(saved()["show"], row.shown);
    }
    Json document = one_wallet_document();
    document["recv"] = {0, 4};
    document.erase("show");
    document.erase("backup");
    ASSERT_TRUE(load(document));
    EXPECT_EQ(session_.show, 4U) << "the newest address, where the document names none";
    EXPECT_FALSE(session_.backup);
}

TEST_F(WalletDocument, LeavesOutRowsThatLeadNowhere) {
    Json document = with("ord_owned", {{{"txid", TXID}},
                                       4,
                                       {{"origin", 3}},
                                       {{"origin", "o1"}, {"vout", "2"}, {"hidden", "yes"}, {"created", 0}},
                                       {{"origin", "o2"}, {"vout", 4294967296}},
                                       {{"origin", "o3"}, {"vout", 18446744073709551615ULL}}});
    document["contacts"] = {{{"note", "x"}},
                            7,
                            {{"dest", " @ "}},
                            {{"dest", " $$NILS "}, {"note", "\t two words \r\n"}},
                            {{"dest", "ole"}, {"note", std::string(81, 'n')}}};
    ASSERT_TRUE(load(document));
    ASSERT_EQ(session_.ord_owned.size(), 3U);
    for (const LocalOrd& ord : session_.ord_owned) EXPECT_EQ(ord.vout, 0) << ord.origin;
    EXPECT_FALSE(session_.ord_owned[0].hidden);
    EXPECT_TRUE(session_.ord_owned[0].created);
    EXPECT_EQ(saved()["contacts"], Json({{{"dest", "nils"}, {"note", "two words"}},
                                         {{"dest", "ole"}, {"note", std::string(80, 'n')}}}));
    for (const char* key : {"ord_owned", "contacts"}) {
        ASSERT_TRUE(load(with(key, {{"origin", "o"}, {"dest", "d"}}))) << "an object, not a list";
        EXPECT_FALSE(saved().contains(key));
    }
}

TEST_F(WalletDocument, OfAnyOtherContentIsAFailedLoad) {
    const std::string words_with_bad_checksum =
        "abandon abandon abandon abandon abandon abandon abandon abandon abandon abandon abandon abandon";
    const auto priv = [](const Json& value) { return Json{{"priv", value}}.dump(); };
    for (const std::string& content :
         {std::string(), std::string("{}"), std::string("[]"), std::string("7"),
          std::string("{\"mnemonic\": 5}"), std::string("{\"mnemonic\": \"\"}"),
          one_wallet_document().dump().substr(0, 60), one_wallet_document(words_with_bad_checksum).dump(),
          priv(LEGACY_PRIV.substr(1)), priv(LEGACY_PRIV + "3"), priv(std::string(64, 'z')),
          priv(std::string(64, '0')), priv(std::string(64, 'f')), priv(3),
          Json{{"priv", LEGACY_PRIV}, {"pub", "02ab"}}.dump(), std::string("{\"priv\":\"\xFF\"}"),
          std::string(100000, '['), Json{{"lock", "QV-LOCK1"}}.dump()}) {
        qv_clasp_wipe_session();
        bind_one_wallet(home_, Json());
        home_.write(ONE_WALLET_PATH, content);
        EXPECT_FALSE(qv_clasp_load()) << content.substr(0, 200);
        EXPECT_TRUE(session_.priv.empty()) << content.substr(0, 200);
        EXPECT_EQ(session_.address, "");
        EXPECT_FALSE(qv_clasp_save()) << "nothing is written over a wallet that did not load";
        EXPECT_EQ(home_.read(ONE_WALLET_PATH), content);
    }
    remove_file(home_.root() + ONE_WALLET_PATH);
    EXPECT_FALSE(qv_clasp_load());
}

TEST_F(WalletDocument, WithoutASelectedWalletIsNeitherLoadedNorSaved) {
    home_.write("/quorvelle_clasp.json", one_wallet_document());
    EXPECT_FALSE(qv_clasp_load());
    session_.hd = true;
    session_.mnemonic.assign(ONE_WALLET_WORDS);
    EXPECT_FALSE(qv_clasp_save());
    EXPECT_EQ(home_.read_json("/quorvelle_clasp.json"), one_wallet_document());
}

TEST_F(WalletDocument, ReconcilesByTheRulesOfEachField) {
    Json before = with("recv", {3, 3, 3, 3, 3, 3});
    before["paymail"] = "mira";
    before["ord_avatar"] = "old avatar";
    before["show"] = 1;
    struct Row {
        const char* what;
        Json now;
        std::array<std::uint32_t, 6> recv;
        std::string paymail, avatar;
    };
    const std::array<std::uint32_t, 6> same{3, 3, 3, 3, 3, 3};
    for (const Row& row :
         {Row{"counters only grow",
              {{"recv", {1, 9, 3, 4, "8", -5, 77}}, {"show", 8}, {"ord_avatar", "new"}},
              {3, 9, 3, 4, 3, 3},
              "mira",
              "new"},
          Row{"nothing is said of them", Json::object(), same, "mira", ""},
          Row{"other types", {{"paymail", 5}, {"ord_avatar", 5}}, same, "mira", ""},
          Row{"an empty paymail is a text", {{"paymail", ""}}, same, "", ""},
          Row{"beyond all indexes", {{"recv", {4294967295U, 2147483648U, 1e300}}}, same, "mira", ""},
          Row{"a lock of any kind", {{"lock", nullptr}, {"recv", {9, 9}}}, same, "mira", "old avatar"},
          Row{"a list", {1, 2}, same, "mira", "old avatar"}}) {
        ASSERT_TRUE(load(before));
        put(row.now);
        qv_clasp_reconcile();
        EXPECT_EQ(session_.recv, row.recv) << row.what;
        EXPECT_EQ(session_.paymail, row.paymail) << row.what;
        EXPECT_EQ(session_.ord_avatar, row.avatar) << row.what;
        EXPECT_EQ(session_.show, 1U) << row.what;
        EXPECT_EQ(session_.address, receive_address(1)) << row.what;
    }
    ASSERT_TRUE(load(before));
    home_.write(ONE_WALLET_PATH, std::string("{\"recv\": [9"));
    qv_clasp_reconcile();
    EXPECT_EQ(session_.ord_avatar, "old avatar") << "half a file";
}

TEST_F(WalletDocument, IsSummedUpWithoutKeys) {
    const std::string domain = "@" + settings().home_domain;
    // "address, paymail, form", or nothing for a document that is no wallet.
    const auto summary = [] {
        std::string address = "old", paymail = "old";
        bool hd = true;
        const bool ok = qv_clasp_summary(address, paymail, hd);
        return ok ? address + " " + paymail + (hd ? " mnemonic" : " legacy") : address + paymail;
    };
    start_program_in(home_);
    qv_clasp_set_active_wallet_id(ONE_WALLET_ID);
    for (const auto& [document, expected] : std::vector<std::pair<Json, std::string>>{
             {{{"mnemonic", "x"}, {"address", "1A"}, {"paymail", "m"}}, "1A m" + domain + " mnemonic"},
             {{{"priv", "x"}, {"address", "1B"}}, "1B  legacy"},
             {{{"mnemonic", "x"}, {"address", 4}, {"paymail", {1}}}, "  mnemonic"},
             {{{"mnemonic", 1}, {"priv", 2}, {"address", "1A"}}, ""},
             {{{"lock", "QV-LOCK1"}, {"mnemonic", "w"}}, ""},
             {{"mnemonic", "words"}, ""}}) {
        put(document);
        EXPECT_EQ(summary(), expected) << document;
        EXPECT_TRUE(session_.address.empty()) << "the session is not touched";
    }
    ASSERT_TRUE(load(with("paymail", "mira")));
    put({{"mnemonic", "words"}, {"address", "1Other"}});
    EXPECT_EQ(summary(), receive_address(0) + " mira" + domain + " mnemonic") << "a loaded session speaks";
}

TEST_F(WalletDocument, LeavesNoSecretInMemoryAfterAWipe) {
    Json document = with("recv", {0, 2});
    document["paymail"] = "mira";
    document["ord_owned"] = {{{"origin", "o"}}};
    document["contacts"] = {{{"dest", "d"}}};
    ASSERT_TRUE(load(document));
    ASSERT_TRUE(qv_clasp_owns_address(receive_address(2)));
    const char* words = session_.mnemonic.view().data();
    const std::size_t words_size = session_.mnemonic.size();
    const char* priv = session_.priv.view().data();
    session_.cached_balance = session_.projected_balance = 5;
    session_.scan_position = 9;
    const std::uint64_t generation = qv_clasp_generation();

    qv_clasp_wipe_session();
    EXPECT_TRUE(all_zero(words, words_size) && all_zero(priv, 64));
    const auto zero_bytes = [](const auto& bytes) {
        return all_zero(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    };
    EXPECT_TRUE(zero_bytes(session_.seed));
    EXPECT_TRUE(zero_bytes(session_.master.key) && zero_bytes(session_.master.chain_code));
    for (const QvClaspChainKeys& chain : session_.key_cache.chains) {
        EXPECT_TRUE(zero_bytes(chain.node.key) && zero_bytes(chain.node.chain_code) && chain.keys.empty());
    }
    EXPECT_TRUE(session_.key_cache.places.empty());
    EXPECT_FALSE(session_.hd || session_.backup || session_.seed_known || session_.master_known);
    EXPECT_EQ(session_.pub + session_.address + session_.identity_pub + session_.paymail, "");
    EXPECT_TRUE(session_.ord_owned.empty() && session_.contacts.empty());
    EXPECT_EQ(session_.recv, (std::array<std::uint32_t, 6>{}));
    EXPECT_EQ(session_.scan_position, 0U);
    EXPECT_EQ(session_.cached_balance + session_.projected_balance, -2) << "unknown";
    EXPECT_EQ(qv_clasp_generation(), generation + 1);
}

TEST_F(WalletDocument, NamesPerWalletFilesByTheScopeKey) {
    struct Row {
        std::string wallet_id, identity, address, key;
    };
    for (const Row& row :
         {Row{"", "", "", "wallet"}, Row{"", "", "1Addr", "1Addr"}, Row{"", "1Ident", "1Addr", "1Ident"},
          Row{"w17", "1Ident", "1Addr", "w17"}, Row{"../é w.", "", "", "______w_"},
          Row{std::string(90, 'Q'), "", "", std::string(80, 'Q')}}) {
        qv_clasp_set_active_wallet_id(row.wallet_id);
        session_.identity_address = row.identity;
        session_.address = row.address;
        EXPECT_EQ(qv_clasp_scope_key(), row.key);
    }
    qv_clasp_set_active_wallet_id("");
}

TEST_F(WalletDocument, KnowsWhereTheOtherWalletsLie) {
    start_program_in(home_);
    for (const char* id : {"w1", "w2", "w3"}) add_wallet(home_, id, one_wallet_document());
    qv_clasp_set_active_wallet_id("w2");
    for (const char* name : {"/quorvelle_clasp.detached-b.json", "/quorvelle_clasp.json", "/parked/z.json",
                             "/parked/é.json", "/parked/a.txt", "/parked/folder.json/inner.json"}) {
        home_.write(name, std::string("{}"));
    }
    std::vector<std::string> expected;
    for (const char* path : {"/wallets/w1/wallet.json", "/wallets/w3/wallet.json",
                             "/quorvelle_clasp.detached-b.json", "/parked/z.json", "/parked/é.json"}) {
        expected.push_back(home_.root() + path);
    }
    EXPECT_EQ(qv_clasp_other_document_paths(), expected);
}
