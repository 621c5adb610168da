#include "wallet/ecdsa.h"

#include <gtest/gtest.h>

#include "base/hex.h"
#include "sandbox/keys.h"
#include "tests/support/test_home.h"
#include "wallet/hashes.h"

namespace {

const std::string ORDER = "fffffffffffffffffffffffffffffffebaaedce6af48a03bbfd25e8cd0364141";
const std::string BELOW_ORDER = "fffffffffffffffffffffffffffffffebaaedce6af48a03bbfd25e8cd0364140";
const std::string ZERO(64, '0');
const std::string KEY_42 = "000000000000000000000000000000000000000000000000000000000000002a";

// From 65536 bytes on the published form has a longer length field, which this system does not write.
constexpr std::size_t LONGEST_PUBLISHED_FORM = 0xFFFF;

std::string digest_hex(const std::string& message) {
    return qv_clasp_hex_encode(bitcoin_message_digest(message));
}

std::string bytes_as_text(const std::string& hex) {
    const Bytes bytes = qv_clasp_hex_decode(hex);
    return {bytes.begin(), bytes.end()};
}

}  // namespace

TEST(SignedMessageDigest, IsThePublishedOne) {
    const Json rows = test_data("bsm_magic_hash.json")["rows"];
    for (const Json& row : rows) {
        const std::string message = json_text(row, "message");
        if (message.size() > LONGEST_PUBLISHED_FORM) continue;
        EXPECT_EQ(digest_hex(message), json_text(row, "magicHash")) << message.size() << " bytes";
    }
    const Json vectors = test_data("bsm_conformance.json")["vectors"];
    for (const Json& row : vectors) {
        const std::string message = bytes_as_text(json_text(row["input"], "message_hex"));
        const std::string expected =
            json_text(row["expected"], "magic_hash_hex", json_text(row["input"], "magic_hash_hex"));
        if (expected.empty()) continue;
        EXPECT_EQ(digest_hex(message), expected) << json_text(row, "id");
    }
}

TEST(PublicKey, IsRefusedForWhatIsNoKey) {
    for (const std::string& bad : {std::string(), ZERO, ORDER, std::string(64, 'f'), KEY_42.substr(1),
                                   KEY_42 + "0", KEY_42.substr(2), std::string(64, 'g')}) {
        std::string pub = "old";
        Bytes der{1};
        std::array<std::uint8_t, 64> rs{};
        rs.fill(1);
        EXPECT_FALSE(qv_clasp_pub_from_priv(bad, pub)) << bad;
        EXPECT_EQ(pub, "");
        EXPECT_FALSE(qv_clasp_ecdsa_sign(bad, Hash256{}, der)) << bad;
        EXPECT_TRUE(der.empty());
        EXPECT_FALSE(qv_clasp_ecdsa_sign_compact(bad, Hash256{}, rs)) << bad;
        EXPECT_EQ(rs, (std::array<std::uint8_t, 64>{}));
    }
}

TEST(Signature, IsLowInSAndHoldsForAnotherLibrary) {
    // A third to a half of raw signatures has a high s, and one in 128 a short r or s: enough of both in 300.
    for (std::uint32_t round = 0; round < 300; ++round) {
        const Hash256 seed =
            sha256(Bytes{1, static_cast<std::uint8_t>(round), static_cast<std::uint8_t>(round >> 8)});
        const Hash256 digest = sha256(seed.data(), seed.size());
        const std::string priv = qv_clasp_hex_encode(seed);
        const sandbox::KeyPair key = sandbox::key_from_priv(Bytes(seed.begin(), seed.end()));
        Bytes der;
        ASSERT_TRUE(qv_clasp_ecdsa_sign(priv, digest, der));
        ASSERT_TRUE(sandbox::verify_der(key.pub, digest, der)) << qv_clasp_hex_encode(der);
        std::array<std::uint8_t, 64> rs{};
        ASSERT_TRUE(qv_clasp_ecdsa_sign_compact(priv, digest, rs));
        ASSERT_TRUE(sandbox::verify_compact(key.pub, digest, Bytes(rs.begin(), rs.end())));
    }
}

TEST(KeySum, IsModuloTheOrderAndNeverZero) {
    const auto bytes_of = [](const std::string& hex) {
        SecretBytes<32> bytes;
        EXPECT_TRUE(qv_clasp_hex_decode_into(hex, bytes.data(), bytes.size()));
        return bytes;
    };
    const SecretBytes<32> key = bytes_of(KEY_42);
    struct Row {
        std::string what, number, sum;
    };
    const std::string minus_42 = "fffffffffffffffffffffffffffffffebaaedce6af48a03bbfd25e8cd0364117";
    const std::string minus_41 = "fffffffffffffffffffffffffffffffebaaedce6af48a03bbfd25e8cd0364118";
    for (const Row& row :
         {Row{"zero", ZERO, KEY_42}, Row{"one below the order", BELOW_ORDER, std::string(62, '0') + "29"},
          Row{"around to one", minus_41, std::string(63, '0') + "1"}, Row{"around to zero", minus_42, ""},
          Row{"the order", ORDER, ""}, Row{"above the order", std::string(64, 'f'), ""}}) {
        SecretBytes<32> sum = key;
        EXPECT_EQ(add_to_private_key(key, bytes_of(row.number).data(), sum), !row.sum.empty()) << row.what;
        EXPECT_EQ(qv_clasp_hex_encode(sum.data(), 32), row.sum.empty() ? ZERO : row.sum) << row.what;
    }
}
