#include "wallet/key_derivation.h"

#include <openssl/evp.h>

#include <algorithm>
#include <limits>
#include <string>

#include "base/text.h"
#include "wallet/ecdsa.h"
#include "wallet/hashes.h"

namespace {

constexpr std::size_t WORD_COUNT = 12;
constexpr std::size_t LONGEST_WORD = 8;
constexpr std::size_t ENTROPY_SIZE = 16;
constexpr int SEED_ROUNDS = 2048;
constexpr std::string_view SEED_SALT = "mnemonic";
constexpr std::string_view MASTER_KEY = "Bitcoin seed";

constexpr std::array<std::string_view, 2048> WORDS = {
#include "bip39_english.inc"
};
static_assert(std::is_sorted(WORDS.begin(), WORDS.end()), "the look-up halves the list");

// The place of a word in the list; false for any other word.
bool word_value(std::string_view word, std::uint32_t& value) {
    const auto found = std::lower_bound(WORDS.begin(), WORDS.end(), word);
    if (found == WORDS.end() || *found != word) return false;
    value = static_cast<std::uint32_t>(found - WORDS.begin());
    return true;
}

// The 11-bit values of the words, most significant bit first.
class WordPacker {
 public:
    bool add(std::string_view word) {
        std::uint32_t value = 0;
        if (count_ == WORD_COUNT || !word_value(word, value)) return false;
        for (std::size_t bit = 0; bit < 11; ++bit) {
            const std::size_t at = count_ * 11 + bit;
            const std::uint32_t set = (value >> (10 - bit)) & 1U;
            packed_.data()[at / 8] |= static_cast<std::uint8_t>(set << (7 - at % 8));
        }
        ++count_;
        return true;
    }

    // All words are there, and the four bits after the entropy are those of its digest.
    bool checksum_holds() const {
        if (count_ != WORD_COUNT) return false;
        Hash256 digest = sha256(packed_.data(), ENTROPY_SIZE);
        const bool holds = (digest[0] >> 4) == (packed_.data()[ENTROPY_SIZE] >> 4);
        cleanse_memory(digest.data(), digest.size());
        return holds;
    }

 private:
    SecretBytes<ENTROPY_SIZE + 1> packed_;
    std::size_t count_ = 0;
};

bool is_word_break(char c) {
    return c == ' ' || c == '\t';
}

// One word in lower case.
bool add_lower_case(WordPacker& packer, std::string_view word) {
    if (word.size() > LONGEST_WORD) return false;
    SecretText lower;
    char* letters = lower.resize(word.size());
    std::transform(word.begin(), word.end(), letters, [](char c) { return ascii_lower(c); });
    return packer.add(lower.view());
}

// What is hashed in one step: the parent's key, in the form that the element asks for, and the element.
void child_input(const QvClaspExtKey& parent, const PublicKey& parent_pub, std::uint32_t element,
                 SecretBytes<37>& input) {
    if (element >= HARDENED) {
        input.data()[0] = 0;
        std::copy_n(parent.key.data(), parent.key.size(), input.data() + 1);
    } else {
        std::copy(parent_pub.begin(), parent_pub.end(), input.data());
    }
    for (std::size_t i = 0; i < 4; ++i) {
        input.data()[33 + i] = static_cast<std::uint8_t>((element >> (24 - 8 * i)) & 0xFF);
    }
}

const std::uint8_t* as_bytes(std::string_view text) {
    return reinterpret_cast<const std::uint8_t*>(text.data());
}

}  // namespace

bool mnemonic_words_valid(std::string_view mnemonic) {
    WordPacker packer;
    while (!mnemonic.empty()) {
        if (is_word_break(mnemonic.front())) {
            mnemonic.remove_prefix(1);
            continue;
        }
        const auto end = std::find_if(mnemonic.begin(), mnemonic.end(), is_word_break);
        const auto length = static_cast<std::size_t>(end - mnemonic.begin());
        if (!add_lower_case(packer, mnemonic.substr(0, length))) return false;
        mnemonic.remove_prefix(length);
    }
    return packer.checksum_holds();
}

bool seed_from_mnemonic(std::string_view mnemonic, SecretBytes<64>& seed) {
    const bool made = mnemonic.size() <= static_cast<std::size_t>(std::numeric_limits<int>::max()) &&
                      PKCS5_PBKDF2_HMAC(mnemonic.data(), static_cast<int>(mnemonic.size()),
                                        as_bytes(SEED_SALT), static_cast<int>(SEED_SALT.size()), SEED_ROUNDS,
                                        EVP_sha512(), static_cast<int>(seed.size()), seed.data()) == 1;
    if (!made) seed.wipe();
    return made;
}

bool master_from_seed(const SecretBytes<64>& seed, QvClaspExtKey& master) {
    SecretBytes<64> digest;
    if (!hmac_sha512(as_bytes(MASTER_KEY), MASTER_KEY.size(), seed.data(), seed.size(), digest)) {
        master.wipe();
        return false;
    }
    std::copy_n(digest.data(), 32, master.key.data());
    std::copy_n(digest.data() + 32, 32, master.chain_code.data());
    return true;
}

bool public_key_of(const QvClaspExtKey& key, PublicKey& pub_out) {
    return compressed_public_key(key.key, pub_out);
}

bool ckd_priv_below(const QvClaspExtKey& parent, const PublicKey& parent_pub, std::uint32_t element,
                    QvClaspExtKey& child_out) {
    SecretBytes<37> input;
    SecretBytes<64> digest;
    QvClaspExtKey child;
    child_input(parent, parent_pub, element, input);
    if (!hmac_sha512(parent.chain_code.data(), parent.chain_code.size(), input.data(), input.size(),
                     digest) ||
        !add_to_private_key(parent.key, digest.data(), child.key)) {
        child_out.wipe();
        return false;
    }
    std::copy_n(digest.data() + 32, 32, child.chain_code.data());
    child_out = child;
    return true;
}

bool qv_clasp_ckd_priv(const QvClaspExtKey& parent, std::uint32_t element, QvClaspExtKey& child_out) {
    PublicKey parent_pub{};
    if (element < HARDENED && !public_key_of(parent, parent_pub)) {
        child_out.wipe();
        return false;
    }
    return ckd_priv_below(parent, parent_pub, element, child_out);
}

bool ckd_priv_path(const QvClaspExtKey& start, std::span<const std::uint32_t> elements,
                   QvClaspExtKey& end_out) {
    end_out = start;
    for (const std::uint32_t element : elements) {
        // Each step overwrites the key above it.
        if (!qv_clasp_ckd_priv(end_out, element, end_out)) return false;
    }
    return true;
}

void private_key_hex(const SecretBytes<32>& key, SecretText& hex_out) {
    static constexpr char DIGITS[] = "0123456789abcdef";
    char* text = hex_out.resize(2 * key.size());
    for (std::size_t i = 0; i < key.size(); ++i) {
        text[2 * i] = DIGITS[key.data()[i] >> 4];
        text[2 * i + 1] = DIGITS[key.data()[i] & 15U];
    }
}
