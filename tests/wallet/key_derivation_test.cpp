#include "wallet/key_derivation.h"

#include <gtest/gtest.h>

#include <sstream>

#include "base/hex.h"
#include "tests/support/test_home.h"

namespace {

// The 78 bytes of an extended key's Base58 text, without its checksum.
Bytes extended_key_bytes(const std::string& text) {
    static const std::string DIGITS = "123456789ABCDEFGHJKLMNPQRSTUVWXYZabcdefghijkmnopqrstuvwxyz";
    Bytes number(82);
    for (const char c : text) {
        auto carry = static_cast<std::uint32_t>(DIGITS.find(c));
        for (auto byte = number.rbegin(); byte != number.rend(); ++byte) {
            carry += *byte * 58U;
            *byte = static_cast<std::uint8_t>(carry & 0xFF);
            carry >>= 8;
        }
    }
    number.resize(78);
    return number;
}

QvClaspExtKey extended_key(const std::string& xprv) {
    const Bytes bytes = extended_key_bytes(xprv);
    QvClaspExtKey key;
    std::copy(bytes.begin() + 13, bytes.begin() + 45, key.chain_code.data());
    std::copy(bytes.begin() + 46, bytes.end(), key.key.data());
    return key;
}

// The elements of "m/44'/0/7".
std::vector<std::uint32_t> elements_of(const std::string& path) {
    std::vector<std::uint32_t> elements;
    std::istringstream pieces(path);
    for (std::string piece; std::getline(pieces, piece, '/');) {
        if (piece == "m") continue;
        const bool hardened = piece.find_first_of("'hH") != std::string::npos;
        elements.push_back(static_cast<std::uint32_t>(std::stoul(piece)) | (hardened ? HARDENED : 0U));
    }
    return elements;
}

std::string hex(const SecretBytes<32>& bytes) {
    return qv_clasp_hex_encode(bytes.data(), bytes.size());
}

std::string words_joined(const std::string& words, const std::string& separator) {
    std::string joined;
    for (const char c : words) joined += c == ' ' ? separator : std::string(1, c);
    return joined;
}

const std::string ABOUT =
    "abandon abandon abandon abandon abandon abandon abandon abandon abandon abandon abandon about";

}  // namespace

TEST(Mnemonic, IsValidWhereTheReferenceSaysSo) {
    const Json cases = test_data("bip39_validity.json")["cases"];
    for (const Json& row : cases) {
        EXPECT_EQ(mnemonic_words_valid(json_text(row, "mnemonic")), json_bool(row, "valid")) << row;
    }
}

TEST(Mnemonic, SeparatesWordsByBlanksAndTabsOnly) {
    struct Row {
        const char* what;
        std::string words;
        bool valid;
    };
    for (const Row& row :
         {Row{"two blanks", words_joined(ABOUT, "  "), true}, Row{"tabs", words_joined(ABOUT, "\t"), true},
          Row{"blanks around it", " \t" + ABOUT + "  ", true},
          Row{"a line break", words_joined(ABOUT, "\n"), false},
          Row{"a line break at the end", ABOUT + "\n", false},
          Row{"capitals", "Abandon ABANDON " + ABOUT.substr(16), true},
          Row{"commas", words_joined(ABOUT, ","), false}, Row{"thirteen words", ABOUT + " abandon", false},
          Row{"a cut word", ABOUT.substr(0, ABOUT.size() - 1), false}, Row{"nothing", "", false},
          Row{"blanks only", "   ", false}, Row{"a very long word", ABOUT + std::string(100000, 'a'), false},
          Row{"a zero byte", std::string(1, '\0') + ABOUT, false}}) {
        EXPECT_EQ(mnemonic_words_valid(row.words), row.valid) << row.what;
    }
}

TEST(KeyDerivation, GivesThePublishedKeysOnThisSystemsPaths) {
    const Json vectors = test_data("bip39_bip44_keys.json")["vectors"];
    for (const Json& row : vectors) {
        SecretBytes<64> seed;
        QvClaspExtKey master;
        ASSERT_TRUE(mnemonic_words_valid(json_text(row, "mnemonic")));
        ASSERT_TRUE(seed_from_mnemonic(json_text(row, "mnemonic"), seed));
        EXPECT_EQ(qv_clasp_hex_encode(seed.data(), 64), json_text(row, "seed"));
        ASSERT_TRUE(master_from_seed(seed, master));
        EXPECT_EQ(hex(master.key), hex(extended_key(json_text(row, "masterXprv")).key));
        for (const Json& expected : row["keys"]) {
            QvClaspExtKey key;
            PublicKey pub{};
            SecretText priv_hex;
            ASSERT_TRUE(ckd_priv_path(master, elements_of(json_text(expected, "path")), key));
            ASSERT_TRUE(public_key_of(key, pub));
            private_key_hex(key.key, priv_hex);
            EXPECT_EQ(priv_hex.view(), json_text(expected, "privateKey"));
            EXPECT_EQ(qv_clasp_hex_encode(pub), json_text(expected, "publicKey"));
        }
    }
}

TEST(KeyDerivation, FollowsThePublishedChains) {
    const Json vectors = test_data("bip32_official.json")["vectors"];
    for (const Json& vector : vectors) {
        const QvClaspExtKey master = extended_key(json_text(vector["chain"][0], "xprv"));
        for (const Json& link : vector["chain"]) {
            QvClaspExtKey key;
            ASSERT_TRUE(ckd_priv_path(master, elements_of(json_text(link, "path")), key));
            const QvClaspExtKey expected = extended_key(json_text(link, "xprv"));
            EXPECT_EQ(hex(key.key), hex(expected.key)) << link;
            EXPECT_EQ(hex(key.chain_code), hex(expected.chain_code)) << link;
        }
    }
    const Json more_vectors = test_data("bip32_bitcoinjs.json")["vectors"];
    for (const Json& vector : more_vectors) {
        const QvClaspExtKey master = extended_key(json_text(vector["master"], "base58Priv"));
        for (const Json& child : vector["children"]) {
            QvClaspExtKey key;
            ASSERT_TRUE(ckd_priv_path(master, elements_of(json_text(child, "path")), key));
            EXPECT_EQ(hex(key.key), json_text(child, "privKey")) << child;
            EXPECT_EQ(hex(key.chain_code), json_text(child, "chainCode")) << child;
        }
    }
}

TEST(KeyDerivation, FailsWithNothingLeftForAParentThatIsNoKey) {
    QvClaspExtKey nothing;
    for (const std::uint32_t element : {0U, HARDENED}) {
        QvClaspExtKey child;
        child.key.data()[5] = 9;
        EXPECT_FALSE(qv_clasp_ckd_priv(nothing, element, child)) << element;
        EXPECT_EQ(hex(child.key), std::string(64, '0'));
    }
}
