#include "wallet/address.h"

#include <gtest/gtest.h>

#include "base/hex.h"
#include "sandbox/keys.h"
#include "tests/support/test_home.h"

namespace {

Hash160 hash_of(const std::string& hex) {
    Hash160 hash{};
    EXPECT_TRUE(qv_clasp_hex_decode_into(hex, hash.data(), hash.size()));
    return hash;
}

}  // namespace

TEST(Address, ReadsAndWritesThePublishedOnesAndNoOtherKind) {
    const Json vectors = test_data("base58.json");
    Hash160 hash{};
    for (const Json& row : vectors["p2pkhMainnet"]) {
        const std::string text = json_text(row, "text");
        const Hash160 expected = hash_of(json_text(row, "hash160"));
        EXPECT_TRUE(qv_clasp_address_to_hash160(text, hash)) << text;
        EXPECT_EQ(hash, expected) << text;
        EXPECT_EQ(qv_clasp_address_from_hash160(expected), text);
    }
    for (const char* kind : {"wifMainnet", "otherKinds"})
        for (const Json& row : vectors[kind])
            EXPECT_FALSE(qv_clasp_address_to_hash160(json_text(row, "text"), hash)) << row;
    for (const Json& text : vectors["invalid"])
        EXPECT_FALSE(qv_clasp_address_to_hash160(text.get<std::string>(), hash)) << text;
}

TEST(Address, NoticesEveryDamageToAnAddress) {
    const Json cases = test_data("base58_mutations.json")["cases"];
    for (const Json& row : cases) {
        Hash160 hash{};
        EXPECT_EQ(qv_clasp_address_to_hash160(json_text(row, "text"), hash), json_bool(row, "valid")) << row;
    }
}

TEST(PayToPublicKeyHash, IsRecognisedInExactlyItsOneForm) {
    const Hash160 hash = hash_of("65a16059864a2fdbc7c99a4723a8395bc6f188eb");
    const Bytes script = qv_clasp_p2pkh_script(hash);
    EXPECT_EQ(qv_clasp_hex_encode(script), "76a91465a16059864a2fdbc7c99a4723a8395bc6f188eb88ac");
    Hash160 found{};
    EXPECT_TRUE(p2pkh_script_hash(script, found));
    EXPECT_EQ(found, hash);
    for (const std::size_t at : {0U, 1U, 2U, 23U, 24U}) {
        Bytes other = script;
        other[at] ^= 1;
        EXPECT_FALSE(p2pkh_script_hash(other, found)) << at;
    }
    Bytes longer = script;
    longer.push_back(0x61);
    EXPECT_FALSE(p2pkh_script_hash(longer, found));
    EXPECT_FALSE(p2pkh_script_hash(Bytes(script.begin(), script.end() - 1), found));
    EXPECT_FALSE(p2pkh_script_hash({}, found));
}
