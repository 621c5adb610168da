#include "sandbox/keys.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <map>
#include <stdexcept>

#include "base/hex.h"
#include "sandbox/byte_io.h"
#include "sandbox/sighash.h"
#include "tests/support/test_home.h"

namespace {

using namespace sandbox;

// By value: the rows outlive the document that they stand in.
Json rows_of(const std::string& file, const char* key) {
    const Json document = test_data(file);
    EXPECT_FALSE(json_member(document, key).empty()) << file;
    return json_member(document, key);
}
std::string hex(const Bytes& bytes) {
    return qv_clasp_hex_encode(bytes);
}
std::string hex(const Hash256& hash) {
    return qv_clasp_hex_encode(hash);
}
Bytes unhex(const std::string& text) {
    return qv_clasp_hex_decode(text);
}

Bytes unbase64(const std::string& text) {
    Bytes bytes(text.size() / 4 * 3);
    const int size = EVP_DecodeBlock(bytes.data(), reinterpret_cast<const unsigned char*>(text.data()),
                                     static_cast<int>(text.size()));
    const auto padding = static_cast<std::size_t>(std::count(text.begin(), text.end(), '='));
    bytes.resize(size < 0 ? 0 : static_cast<std::size_t>(size) - padding);
    return bytes;
}

// 32 bytes of a published order minus those of s.
Bytes order_minus(const Bytes& s) {
    const Bytes order = unhex("fffffffffffffffffffffffffffffffebaaedce6af48a03bbfd25e8cd0364141");
    Bytes difference(32);
    int borrow = 0;
    for (std::size_t i = 32; i-- > 0;) {
        int digit = order[i] - s[i] - borrow;
        borrow = digit < 0 ? 1 : 0;
        if (digit < 0) digit += 256;
        difference[i] = static_cast<std::uint8_t>(digit);
    }
    return difference;
}

TEST(SandboxKeys, WordsAndKeysAgreeWithVectorsOfOtherLibraries) {
    const Json vectors = rows_of("bip39_bip44_keys.json", "vectors");
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
    for (const Json& row : rows_of("base58_mutations.json", "cases")) {
        Hash160 hash{};
        const std::string text = json_text(row, "text");
        EXPECT_EQ(hash160_of_address(text, hash), json_bool(row, "valid")) << row["what"] << " " << text;
        if (!json_bool(row, "valid")) continue;
        EXPECT_EQ(address_of(hash), text);
        ++good;
    }
    EXPECT_GT(good, 0U);
}

TEST(SandboxKeys, DigestsOfMessagesAgreeWithTheVectors) {
    for (const Json& row : rows_of("bsm_magic_hash.json", "rows")) {
        EXPECT_EQ(hex(message_digest(json_text(row, "message"))), json_text(row, "magicHash"));
    }
}

TEST(SandboxKeys, TheKeyOfASignedMessageIsRecoveredForCompressedKeysOnly) {
    std::size_t recovered = 0;
    for (const Json& row : rows_of("bsm_signed_messages.json", "rows")) {
        const Bytes signature = unbase64(json_text(row, "signature"));
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

TEST(SandboxKeys, SignaturesAreDeterministicAndEqualThoseOfAnotherLibrary) {
    for (const Json& vector : rows_of("sighash_p2pkh_computed.json", "vectors")) {
        const Bytes digest_bytes = unhex(json_text(vector, "digest"));
        Hash256 digest{};
        std::copy(digest_bytes.begin(), digest_bytes.end(), digest.begin());
        const Json& input = vector["inputs"][static_cast<std::size_t>(json_int(vector, "inputIndex"))];
        const KeyPair key = key_from_priv(unhex(json_text(input, "privateKey")));
        const Bytes der = sign_der(key, digest);
        EXPECT_EQ(hex(der), json_text(vector, "signatureDerLowS"));
        EXPECT_TRUE(verify_der(key.pub, digest, der));
    }
}

// One signature, and the ways in which the same numbers must not be written.
TEST(SandboxKeys, OnlyTheStrictLowFormOfASignatureIsGood) {
    const KeyPair key = key_from_priv(Bytes(32, 7));
    const Hash256 digest = sha256d({1, 2, 3});
    const Bytes rs = sign_compact(key, digest);
    const Bytes r(rs.begin(), rs.begin() + 32);
    const Bytes s(rs.begin() + 32, rs.end());
    const auto der_of = [](const Bytes& first, const Bytes& second) {
        Bytes der{0x30, static_cast<std::uint8_t>(first.size() + second.size() + 4)};
        for (const Bytes* number : {&first, &second}) {
            der.push_back(0x02);
            der.push_back(static_cast<std::uint8_t>(number->size()));
            put_bytes(der, *number);
        }
        return der;
    };
    const auto positive = [](Bytes number) {
        if ((number[0] & 0x80) != 0) number.insert(number.begin(), 0);
        return number;
    };
    const Bytes good = der_of(positive(r), positive(s));
    ASSERT_EQ(good, sign_der(key, digest));
    ASSERT_TRUE(verify_der(key.pub, digest, good));
    EXPECT_TRUE(verify_compact(key.pub, digest, rs));

    const Bytes high = order_minus(s);
    Bytes padded_s = positive(s);
    padded_s.insert(padded_s.begin(), 0);
    Bytes trailing = good;
    trailing.push_back(0);
    Bytes wrong_tag = good;
    wrong_tag[2] = 0x03;
    Bytes negative = r;
    negative[0] |= 0x80;
    const std::vector<std::pair<const char*, Bytes>> bad{
        {"high s", der_of(positive(r), positive(high))},
        {"padded s", der_of(positive(r), padded_s)},
        {"a byte too many", trailing},
        {"a byte too few", Bytes(good.begin(), good.end() - 1)},
        {"a wrong tag", wrong_tag},
        {"a negative r", der_of(negative, positive(s))},
        {"an empty s", der_of(positive(r), {})},
        {"nothing", {}},
    };
    for (const auto& [name, der] : bad) EXPECT_FALSE(verify_der(key.pub, digest, der)) << name;

    Bytes high_compact = r;
    put_bytes(high_compact, high);
    EXPECT_FALSE(verify_compact(key.pub, digest, high_compact));
    EXPECT_FALSE(verify_compact(key.pub, sha256d({1}), rs));
    EXPECT_FALSE(verify_compact(key_from_priv(Bytes(32, 8)).pub, digest, rs));
    EXPECT_FALSE(verify_compact(Bytes(33, 0), digest, rs));
}

TEST(SandboxSighash, AgreesWithComputedVectors) {
    for (const Json& vector : rows_of("sighash_p2pkh_computed.json", "vectors")) {
        Transaction tx;
        ASSERT_TRUE(parse_transaction(unhex(json_text(vector, "unsignedTx")), tx));
        EXPECT_EQ(serialize_transaction(tx), tx.raw);
        const auto input = static_cast<std::size_t>(json_int(vector, "inputIndex"));
        const Json& spent = vector["inputs"][input];
        EXPECT_EQ(hex(signature_hash(tx, sighash_parts(tx), input, unhex(json_text(spent, "lockingScript")),
                                     json_int(spent, "satoshis"))),
                  json_text(vector, "digest"));
    }
}

TEST(SandboxSighash, AgreesWithTheNodesOwnTable) {
    constexpr std::uint32_t ANYONE_CAN_PAY = 0x80;
    std::size_t rows = 0;
    for (const Json& row : rows_of("sighash_bitcoin_sv.json", "rows")) {
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

// A transfer from the chain itself: it spends a plain output and one whose envelope stands before its owner,
// with signatures (of a type that commits to no other input) over the whole of the two scripts.
TEST(SandboxSighash, SignaturesFromTheChainHold) {
    std::map<std::string, Transaction> transactions;
    for (const Json& row : rows_of("ordinals_raw_transactions.json", "transactions")) {
        Transaction tx;
        ASSERT_TRUE(parse_transaction(unhex(json_text(row, "rawTx")), tx));
        EXPECT_EQ(tx.txid, json_text(row, "txid"));
        EXPECT_EQ(serialize_transaction(tx), tx.raw);
        transactions[tx.txid] = tx;
    }
    std::size_t checked = 0;
    for (const auto& [txid, tx] : transactions) {
        for (std::size_t i = 0; i < tx.inputs.size(); ++i) {
            const auto source = transactions.find(tx.inputs[i].txid);
            if (source == transactions.end()) continue;
            std::size_t at = 0;
            ScriptOp signature;
            ScriptOp pub;
            if (!read_op(tx.inputs[i].script_sig, at, signature) ||
                !read_op(tx.inputs[i].script_sig, at, pub))
                continue;
            if (signature.data.empty() || signature.data.back() != 0xc1) continue;
            const TxOutput& spent = source->second.outputs[tx.inputs[i].vout];
            signature.data.pop_back();
            const SighashParts parts{{}, {}, sighash_parts(tx).outputs};
            const Hash256 digest = signature_hash(tx, parts, i, spent.script, spent.sats, 0xc1);
            EXPECT_TRUE(verify_der(pub.data, digest, signature.data)) << txid << " " << i;
            ++checked;
        }
    }
    EXPECT_GE(checked, 2U);
}

}  // namespace
