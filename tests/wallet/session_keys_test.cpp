#include "wallet/session_keys.h"

#include <gtest/gtest.h>

#include "base/hex.h"
#include "sandbox/service_reply.h"
#include "tests/support/one_wallet.h"
#include "wallet/wallet_document.h"
#include "wallet/wallet_session.h"

namespace {

struct Derived {
    SecretText priv;
    std::string pub, address;
};

// The key that the sandbox's own derivation finds on the path.
void expect_key(const Derived& key, const std::string& path) {
    const sandbox::KeyPair expected = one_wallet_key(path);
    EXPECT_EQ(key.priv.view(), qv_clasp_hex_encode(expected.priv)) << path;
    EXPECT_EQ(key.pub, qv_clasp_hex_encode(expected.pub)) << path;
    EXPECT_EQ(key.address, expected.address) << path;
}

Derived left_over() {
    return {SecretText("old"), "old", "old"};
}

Json document_with(const Json& recv, std::uint32_t show = 0) {
    Json document = one_wallet_document();
    document["recv"] = recv;
    document["show"] = show;
    return document;
}

// A mnemonic wallet, loaded, with the wallet mutex held.
class SessionKeys : public ::testing::Test {
 protected:
    void load(const Json& recv, std::uint32_t show = 0) {
        bind_one_wallet(home_, document_with(recv, show));
        ASSERT_TRUE(qv_clasp_load());
    }
    void TearDown() override { qv_clasp_wipe_session(); }

    TestHome home_;
    WalletLock lock_ = qv_clasp_lock_wallet();
};

bool finds(const std::string& address, const std::string& path) {
    Derived key = left_over();
    const bool found = qv_clasp_find_key(address, key.priv, key.pub);
    EXPECT_EQ(qv_clasp_owns_address(address), found) << address;
    if (!found) {
        EXPECT_TRUE(key.priv.empty() && key.pub.empty()) << address;
        return false;
    }
    key.address = address;
    expect_key(key, path);
    return true;
}

}  // namespace

TEST_F(SessionKeys, AreThoseOfTheirPaths) {
    load({0, 5, 0, 0, 0, 2}, 3);
    const QvClaspSession& session = qv_clasp_session();
    expect_key({session.priv, session.pub, session.address}, "1'/0/3");
    EXPECT_EQ(session.identity_address, one_wallet_key("100'/0/0").address);
    EXPECT_EQ(session.identity_pub, qv_clasp_hex_encode(one_wallet_key("100'/0/0").pub));
    for (std::uint32_t account = 0; account < 6; ++account) {
        for (const std::uint32_t index : {7U, 0U, 1U, HARDENED - 1}) {
            Derived key = left_over();
            const std::string path = std::to_string(account) + "'/0/" + std::to_string(index);
            ASSERT_TRUE(qv_clasp_derive_account(account, index, key.priv, key.pub, key.address));
            expect_key(key, path);
            EXPECT_EQ(qv_clasp_account_address(account, index), key.address);
        }
    }
    Derived key = left_over();
    ASSERT_TRUE(qv_clasp_derive_ordinal_change(4, key.priv, key.pub, key.address));
    expect_key(key, "5'/1/4");
    std::string error;
    ASSERT_TRUE(qv_clasp_bn_key(key.pub, key.priv, key.address, error));
    expect_key(key, "102'/0/0");
}

TEST_F(SessionKeys, AreFoundByAddressUpToEachCounterInclusive) {
    load({2, 5, 0, 1, 0, 3});
    struct Row {
        std::string path;
        bool found;
    };
    for (const Row& row :
         {Row{"5'/0/3", true}, Row{"5'/0/4", false}, Row{"0'/0/0", true}, Row{"0'/0/2", true},
          Row{"0'/0/3", false}, Row{"1'/0/5", true}, Row{"1'/0/6", false}, Row{"2'/0/0", true},
          Row{"2'/0/1", false}, Row{"3'/0/1", true}, Row{"4'/0/0", true}, Row{"5'/0/0", true},
          Row{"5'/1/0", false}, Row{"1'/1/0", false}, Row{"100'/0/0", true}, Row{"100'/0/1", false},
          Row{"102'/0/0", false}, Row{"6'/0/0", false}}) {
        EXPECT_EQ(finds(one_wallet_key(row.path).address, row.path), row.found) << row.path;
    }
    for (const std::string& bad :
         {std::string(), std::string("1"), receive_address(0) + " ", receive_address(0).substr(1)}) {
        EXPECT_FALSE(finds(bad, "")) << bad;
    }
}

TEST_F(SessionKeys, AreOwnedFurtherUpOnceTheCounterHasGrown) {
    load({0, 1, 0, 0, 0, 0});
    // A scan has derived what lies beyond the counter; that does not make it the wallet's own.
    for (std::uint32_t index = 2; index < 12; ++index) qv_clasp_account_address(RECEIVE_ACCOUNT, index);
    EXPECT_FALSE(finds(receive_address(7), ""));
    EXPECT_FALSE(finds(receive_address(20), ""));
    qv_clasp_session().recv[RECEIVE_ACCOUNT] = 20;
    EXPECT_TRUE(finds(receive_address(7), "1'/0/7"));
    EXPECT_TRUE(finds(receive_address(20), "1'/0/20"));
    qv_clasp_session().recv[RECEIVE_ACCOUNT] = 6;
    EXPECT_FALSE(finds(receive_address(7), "")) << "a counter that fell back";
    EXPECT_TRUE(finds(receive_address(6), "1'/0/6"));
}

TEST_F(SessionKeys, SignATextAsTheIdentity) {
    load({0, 0, 0, 0, 0, 0});
    const sandbox::KeyPair identity = one_wallet_key("100'/0/0");
    for (const std::size_t size : {0U, 1U, 252U, 253U, 70000U}) {
        const std::string text(size, 'x');
        std::string pub, signature, error = "old";
        ASSERT_TRUE(qv_clasp_sign_identity(text, pub, signature, error));
        EXPECT_EQ(error, "");
        EXPECT_EQ(pub, qv_clasp_hex_encode(identity.pub));
        const Bytes rs = sandbox::from_base64(signature);
        if (size <= 0xFFFF) {
            EXPECT_TRUE(sandbox::verify_compact(identity.pub, sandbox::message_digest(text), rs)) << size;
        }
    }
}

TEST_F(SessionKeys, SayWhyTheyDoNotSign) {
    const auto errors = [] {
        std::string pub = "old", signature = "old", address = "old", sign_error, bn_error;
        SecretText priv("old");
        EXPECT_FALSE(qv_clasp_sign_identity("text", pub, signature, sign_error));
        EXPECT_EQ(pub + signature, "");
        EXPECT_FALSE(qv_clasp_bn_key(pub, priv, address, bn_error));
        EXPECT_EQ(pub + address, "");
        EXPECT_TRUE(priv.empty());
        return sign_error + " / " + bn_error;
    };
    EXPECT_EQ(errors(), "Clasp HD wallet not connected / Clasp HD wallet not connected");
    bind_one_wallet(home_, {{"priv", std::string(64, '3')}});
    EXPECT_EQ(errors(), "Clasp HD wallet not connected / Clasp HD wallet not connected") << "a legacy wallet";
    qv_clasp_wipe_session();
    home_.write(ONE_WALLET_PATH, one_wallet_document());
    ASSERT_TRUE(qv_clasp_load());
    qv_clasp_session().mnemonic.wipe();
    qv_clasp_forget_master(qv_clasp_session());
    EXPECT_EQ(errors(), "could not derive Clasp identity key / could not derive the BN key");
}
