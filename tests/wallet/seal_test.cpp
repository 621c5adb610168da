#include "wallet/seal.h"

#include <gtest/gtest.h>

#include "base/hex.h"
#include "tests/support/one_wallet.h"
#include "wallet/wallet_document.h"

namespace {

struct Envelope {
    std::int64_t iter = 0;
    Bytes salt, iv, tag, ct;
    bool parse(const Json& json) { return qv_clasp_seal_parse(json, iter, salt, iv, tag, ct); }
};

void use_key(const std::string& key_hex) {
    ASSERT_TRUE(qv_clasp_hex_decode_into(key_hex, qv_clasp_session().seal_key.data(), 32));
}

const std::string SOME_KEY(64, '5');

Json some_envelope() {
    return test_data("seal_vectors.json")["vectors"][0]["envelope"];
}

}  // namespace

TEST(SealEnvelope, OpensWhatAnotherImplementationSealed) {
    const WalletLock lock = qv_clasp_lock_wallet();
    const Json vectors = test_data("seal_vectors.json")["vectors"];
    for (const Json& row : vectors) {
        Envelope envelope;
        SecretText plain;
        use_key(json_text(row, "key"));
        ASSERT_TRUE(envelope.parse(row["envelope"])) << row["name"];
        EXPECT_EQ(envelope.iter, json_int(row["envelope"], "iter"));
        ASSERT_TRUE(qv_clasp_seal_decrypt(envelope.iv, envelope.tag, envelope.ct, plain)) << row["name"];
        EXPECT_EQ(plain.view(), json_text(row, "plain"));
    }
}

TEST(SealEnvelope, GivesNothingOfADamagedOne) {
    const WalletLock lock = qv_clasp_lock_wallet();
    const Json vectors = test_data("seal_vectors.json")["vectors"];
    use_key(json_text(vectors[0], "key"));
    Envelope good;
    ASSERT_TRUE(good.parse(vectors[0]["envelope"]));
    const auto refused = [](const Envelope& envelope) {
        SecretText plain("left over");
        const bool opened = qv_clasp_seal_decrypt(envelope.iv, envelope.tag, envelope.ct, plain);
        return !opened && plain.empty();
    };
    for (std::size_t at = 0; at < good.ct.size(); ++at) {
        Envelope envelope = good;
        envelope.ct[at] ^= 0x10;
        ASSERT_TRUE(refused(envelope)) << "byte " << at;
    }
    for (std::size_t at = 0; at < 16; ++at) {
        Envelope envelope = good;
        envelope.tag[at] ^= 1;
        ASSERT_TRUE(refused(envelope)) << "tag byte " << at;
    }
    for (Bytes Envelope::*part : {&Envelope::iv, &Envelope::tag, &Envelope::ct}) {
        Envelope shorter = good;
        (shorter.*part).pop_back();
        EXPECT_TRUE(refused(shorter));
    }
    use_key(SOME_KEY);
    EXPECT_TRUE(refused(good)) << "another key";
}

TEST(SealEnvelope, IsParsedByItsLimits) {
    struct Row {
        const char *what, *key;
        Json value;  // null: the key is taken away
        bool accepted;
    };
    const std::string hex32(32, 'A');
    for (const Row& row :
         {Row{"the default of iter", "iter", nullptr, true}, Row{"iter", "iter", 9999, false},
          Row{"iter", "iter", 10000, true}, Row{"iter", "iter", 5000000, true},
          Row{"iter", "iter", 5000001, false}, Row{"iter as text", "iter", "210000", false},
          Row{"a huge iter", "iter", 18446744073709551615ULL, false}, Row{"no salt", "salt", nullptr, false},
          Row{"salt in capitals", "salt", hex32, true}, Row{"short salt", "salt", hex32.substr(2), false},
          Row{"iv of 11", "iv", hex32.substr(10), false}, Row{"iv of 13", "iv", hex32.substr(6), false},
          Row{"tag of 15", "tag", hex32.substr(2), false}, Row{"tag as number", "tag", 7, false},
          Row{"empty ct", "ct", "", false}, Row{"odd ct", "ct", "abc", false},
          Row{"other lock", "lock", "QV-LOCK2", false}, Row{"no lock", "lock", nullptr, false}}) {
        Json json = some_envelope();
        if (row.value.is_null())
            json.erase(row.key);
        else
            json[row.key] = row.value;
        Envelope envelope;
        EXPECT_EQ(envelope.parse(json), row.accepted) << row.what << " " << row.value;
    }
    Envelope envelope;
    for (const Json& root : {Json(), Json::array(), Json("QV-LOCK1"), Json(1)})
        EXPECT_FALSE(envelope.parse(root));
}

TEST(Lock, IsSeenInTheDocumentOrBesideIt) {
    struct Row {
        const char* what;
        std::string document;
        bool seal_file, locked;
    };
    const std::string plain = one_wallet_document().dump();
    for (const Row& row :
         {Row{"a plain document", plain, false, false}, Row{"an empty seal beside it", plain, true, true},
          Row{"a seal alone", "", true, true}, Row{"nothing", "", false, false},
          Row{"an envelope", some_envelope().dump(), false, true},
          Row{"the magic alone", R"({"lock":"QV-LOCK1"})", false, true},
          Row{"another magic", R"({"lock":"QV-LOCK2"})", false, false},
          Row{"a lock of another type", R"({"lock":1})", false, false},
          Row{"the magic as a list", R"(["lock","QV-LOCK1"])", false, false},
          Row{"half an envelope", R"({"lock":"QV-LOCK1")", false, false}}) {
        const TestHome home;
        start_program_in(home);
        qv_clasp_set_active_wallet_id(ONE_WALLET_ID);
        if (!row.document.empty()) home.write(ONE_WALLET_PATH, row.document);
        if (row.seal_file) home.write(ONE_WALLET_PATH + ".seal", std::string());
        const WalletLock lock = qv_clasp_lock_wallet();
        EXPECT_EQ(qv_clasp_is_locked(), row.locked) << row.what;
        EXPECT_EQ(qv_clasp_load(), row.document == plain) << row.what;
        qv_clasp_wipe_session();
    }
}

TEST(SealedWallet, IsNotWrittenOverByASessionFromBefore) {
    for (const bool beside : {false, true}) {
        const TestHome home;
        bind_one_wallet(home, one_wallet_document());
        const WalletLock lock = qv_clasp_lock_wallet();
        ASSERT_TRUE(qv_clasp_load());
        const std::string sealed = some_envelope().dump();
        home.write(ONE_WALLET_PATH + (beside ? ".seal" : ""), sealed);
        if (beside) remove_file(home.root() + ONE_WALLET_PATH);
        EXPECT_FALSE(qv_clasp_save());
        EXPECT_EQ(home.read(ONE_WALLET_PATH), beside ? "" : sealed);
        qv_clasp_wipe_session();
    }
}

TEST(SealedWallet, OpensAndSavesWithAnUnlockedSession) {
    const TestHome home;
    const Json vector = test_data("seal_vectors.json")["vectors"][0];
    bind_one_wallet(home, vector["envelope"]);
    const WalletLock lock = qv_clasp_lock_wallet();
    EXPECT_FALSE(qv_clasp_seal_write("text")) << "not unlocked";
    qv_clasp_session().paymail = "as before";
    EXPECT_FALSE(qv_clasp_load());
    EXPECT_EQ(qv_clasp_session().paymail, "as before") << "a locked wallet leaves the session alone";

    qv_clasp_session().seal_gate = true;
    use_key(json_text(vector, "key"));
    EXPECT_FALSE(qv_clasp_load()) << "not unlocked";
    qv_clasp_session().unlocked = true;
    use_key(SOME_KEY);
    EXPECT_FALSE(qv_clasp_load()) << "a wrong key";
    use_key(json_text(vector, "key"));
    ASSERT_TRUE(qv_clasp_load());
    EXPECT_EQ(qv_clasp_session().address, receive_address(0));
    EXPECT_EQ(qv_clasp_session().paymail, "mira");

    qv_clasp_session().paymail = "mira2";
    ASSERT_TRUE(qv_clasp_save());
    Envelope envelope;
    SecretText plain;
    ASSERT_TRUE(envelope.parse(home.read_json(ONE_WALLET_PATH + ".seal")));
    ASSERT_TRUE(qv_clasp_seal_decrypt(envelope.iv, envelope.tag, envelope.ct, plain));
    EXPECT_EQ(plain.view(), home.read(ONE_WALLET_PATH)) << "the seal holds what the document holds";

    remove_file(home.root() + ONE_WALLET_PATH + ".seal");
    make_folder(home.root() + ONE_WALLET_PATH + ".seal");
    EXPECT_FALSE(qv_clasp_save()) << "a seal that cannot be written fails the save";
}
