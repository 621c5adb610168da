#include "sandbox/keys.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <stdexcept>

#include "base/hex.h"
#include "sandbox/byte_io.h"
#include "sandbox/service_reply.h"
#include "sandbox/sighash.h"
#include "tests/support/test_home.h"

namespace {

using namespace sandbox;

std::string hex(const Bytes& bytes) {
    return qv_clasp_hex_encode(bytes);
}
std::string hex(const Hash256& hash) {
    return qv_clasp_hex_encode(hash);
}
Bytes unhex(const std::string& text) {
    return qv_clasp_hex_decode(text);
}

TEST(SandboxKeys, WordsAndKeysAgreeWithVectorsOfOtherLibraries) {
    const Json vectors = test_rows("bip39_bip44_keys.json", "vectors");
    std::size_t keys = 0;
    for (const Json& vector : vectors) {
        const Bytes entropy = unhex(json_text(vector, "entropy"));
        std::array<std::uint8_t, 16> sixteen{};
        ASSERT_EQ(entropy.size(), sixteen.size());
        std::copy(entropy.begin(), entropy.end(), sixteen.begin());
        const std::string mnemonic = mnemonic_from_entropy(sixteen);
        EXPECT_EQ(mnemonic, json_text(vector, "mnemonic"));
        for (const Json& row : vector["keys"]) {
            const KeyPair key = derive(mnemonic, json_text(row, "path"));
            EXPECT_EQ(hex(key.priv), json_text(row, "privateKey")) << row["path"];
            EXPECT_EQ(hex(key.pub), json_text(row, "publicKey")) << row["path"];
            EXPECT_EQ(key.address, json_text(row, "address")) << row["path"];
            ++keys;
        }
    }
    EXPECT_GT(keys, 20U);
}

TEST(SandboxKeys, PathsAndKeysThatCannotBeAreRefusedLoudly) {
    for (const char* path : {"", "44'/236'", "m/", "m//1", "m/x", "m/1''"}) {
        EXPECT_THROW(derive("abandon", path), std::invalid_argument) << path;
    }
    EXPECT_THROW(key_from_priv(Bytes(32, 0)), std::invalid_argument);
    EXPECT_THROW(key_from_priv(Bytes(31, 1)), std::invalid_argument);
}

TEST(SandboxKeys, AddressesDecodeOrNotAsElsewhere) {
    std::size_t good = 0;
    for (const Json& row : test_rows("base58_mutations.json", "cases")) {
        Hash160 hash{};
        const std::string text = json_text(row, "text");
        EXPECT_EQ(hash160_of_address(text, hash), json_bool(row, "valid")) << row["what"] << " " << text;
        if (!json_bool(row, "valid")) continue;
        EXPECT_EQ(address_of(hash), text);
        ++good;
    }
    EXPECT_GT(good, 0U);
}

TEST(SandboxKeys, TheKeyOfASignedMessageIsRecoveredForCompressedKeysOnly) {
    std::size_t recovered = 0;
    for (const Json& row : test_rows("bsm_signed_messages.json", "rows")) {
        const Bytes signature = from_base64(json_text(row, "signature"));
        const Bytes pub = recover_pub(message_digest(json_text(row, "message")), signature);
        const bool compressed = signature.size() == 65 && signature[0] >= 31 && signature[0] <= 34;
        if (!compressed) {
            EXPECT_TRUE(pub.empty()) << row["signature"];
        } else if (row.contains("recoveredPublicKey")) {
            EXPECT_EQ(hex(pub), json_text(row, "recoveredPublicKey"));
            ++recovered;
        }
    }
    EXPECT_GT(recovered, 5U);
}

// One signature, and the ways in which the same numbers must not be written.
TEST(SandboxKeys, OnlyTheStrictFormOfASignatureIsGood) {
    const KeyPair key = key_from_priv(Bytes(32, 7));
    const Hash256 digest = sha256d({1, 2, 3});
    const Bytes good = sign_der(key, digest);
    ASSERT_TRUE(verify_der(key.pub, digest, good));
    const auto changed = [&](const std::function<void(Bytes&)>& change) {
        Bytes der = good;
        change(der);
        return der;
    };
    const std::size_t s_at = 4U + good[3];  // the tag of s
    const std::vector<std::pair<const char*, Bytes>> bad{
        {"a byte too many", changed([](Bytes& der) { der.push_back(0); })},
        {"a byte too few", changed([](Bytes& der) { der.pop_back(); })},
        {"a wrong tag", changed([](Bytes& der) { der[2] = 0x03; })},
        {"a negative r", changed([](Bytes& der) { der[4] |= 0x80; })},
        {"padded s", changed([&](Bytes& der) {
             der.insert(der.begin() + static_cast<std::ptrdiff_t>(s_at) + 2, 0);
             ++der[s_at + 1];
             ++der[1];
         })},
        {"an empty s", changed([&](Bytes& der) {
             der.resize(s_at + 2);
             der[s_at + 1] = 0;
             der[1] = static_cast<std::uint8_t>(der.size() - 2);
         })},
        {"nothing", {}},
    };
    for (const auto& [name, der] : bad) EXPECT_FALSE(verify_der(key.pub, digest, der)) << name;

    const Bytes rs = sign_compact(key, digest);
    EXPECT_TRUE(verify_compact(key.pub, digest, rs));
    EXPECT_FALSE(verify_compact(key.pub, sha256d({1}), rs));
    EXPECT_FALSE(verify_compact(key_from_priv(Bytes(32, 8)).pub, digest, rs));
}

TEST(SandboxSighash, HashesAndSignaturesEqualThoseOfAnotherLibrary) {
    for (const Json& vector : test_rows("sighash_p2pkh_computed.json", "vectors")) {
        Transaction tx;
        ASSERT_TRUE(parse_transaction(unhex(json_text(vector, "unsignedTx")), tx));
        EXPECT_EQ(serialize_transaction(tx), tx.raw);
        const auto index = static_cast<std::size_t>(json_int(vector, "inputIndex"));
        const Json& input = vector["inputs"][index];
        const Hash256 digest =
            signature_hash(tx, sighash_parts(tx), index, unhex(json_text(input, "lockingScript")),
                           json_int(input, "satoshis"));
        EXPECT_EQ(hex(digest), json_text(vector, "digest"));
        const KeyPair key = key_from_priv(unhex(json_text(input, "privateKey")));
        const Bytes der = sign_der(key, digest);
        EXPECT_EQ(hex(der), json_text(vector, "signatureDerLowS"));
        EXPECT_TRUE(verify_der(key.pub, digest, der));
    }
}

TEST(SandboxSighash, AgreesWithTheNodesOwnTable) {
    constexpr std::uint32_t ANYONE_CAN_PAY = 0x80;
    std::size_t rows = 0;
    for (const Json& row : test_rows("sighash_bitcoin_sv.json", "rows")) {
        const auto type = static_cast<std::uint32_t>(json_int(row, "hashType"));
        const bool signs_all = (type & 0x1f) != 2 && (type & 0x1f) != 3 && (type & ANYONE_CAN_PAY) == 0;
        if (!signs_all) continue;
        Transaction tx;
        ASSERT_TRUE(parse_transaction(unhex(json_text(row, "tx")), tx));
        EXPECT_EQ(serialize_transaction(tx), tx.raw);
        const Hash256 hash =
            signature_hash(tx, sighash_parts(tx), static_cast<std::size_t>(json_int(row, "inputIndex")),
                           unhex(json_text(row, "script")), 0, type);
        EXPECT_EQ(txid_text(hash), json_text(row, "expectedRegular"));
        ++rows;
    }
    EXPECT_EQ(rows, 60U);
}

}  // namespace
