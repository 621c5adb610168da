#include "sandbox/keys.h"

#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/ripemd.h>
#include <openssl/sha.h>
#include <secp256k1.h>
#include <secp256k1_recovery.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <stdexcept>

#include "sandbox/byte_io.h"

namespace sandbox {

namespace {

constexpr const char* WORDS[] = {
#include "bip39_english.inc"
};
constexpr std::string_view BASE58 = "123456789ABCDEFGHJKLMNPQRSTUVWXYZabcdefghijkmnopqrstuvwxyz";
constexpr std::uint32_t HARDENED = 0x80000000U;

using Digest512 = std::array<std::uint8_t, 64>;

const secp256k1_context* curve() {
    static const secp256k1_context* context =
        secp256k1_context_create(SECP256K1_CONTEXT_SIGN | SECP256K1_CONTEXT_VERIFY);
    return context;
}

Digest512 hmac_sha512(const Bytes& key, const Bytes& data) {
    Digest512 digest{};
    unsigned int size = 0;
    HMAC(EVP_sha512(), key.data(), static_cast<int>(key.size()), data.data(), data.size(), digest.data(),
         &size);
    return digest;
}

Bytes pub_of(const Bytes& priv) {
    secp256k1_pubkey point;
    if (priv.size() != 32 || secp256k1_ec_pubkey_create(curve(), &point, priv.data()) != 1) {
        throw std::invalid_argument("no private key of the curve");
    }
    Bytes pub(33);
    std::size_t size = pub.size();
    secp256k1_ec_pubkey_serialize(curve(), pub.data(), &size, &point, SECP256K1_EC_COMPRESSED);
    return pub;
}

struct ExtendedKey {
    Bytes priv;
    Bytes chain_code;
};

ExtendedKey split_digest(const Digest512& digest) {
    return {Bytes(digest.begin(), digest.begin() + 32), Bytes(digest.begin() + 32, digest.end())};
}

ExtendedKey master_key(const std::string& mnemonic) {
    static constexpr unsigned char SALT[] = {'m', 'n', 'e', 'm', 'o', 'n', 'i', 'c'};
    static constexpr std::string_view HMAC_KEY = "Bitcoin seed";
    Bytes seed(64);
    PKCS5_PBKDF2_HMAC(mnemonic.data(), static_cast<int>(mnemonic.size()), SALT, sizeof SALT, 2048,
                      EVP_sha512(), static_cast<int>(seed.size()), seed.data());
    return split_digest(hmac_sha512(Bytes(HMAC_KEY.begin(), HMAC_KEY.end()), seed));
}

ExtendedKey child_key(const ExtendedKey& parent, std::uint32_t element) {
    Bytes data;
    if (element >= HARDENED) {
        data.push_back(0);
        put_bytes(data, parent.priv);
    } else {
        data = pub_of(parent.priv);
    }
    for (int shift = 24; shift >= 0; shift -= 8) data.push_back(static_cast<std::uint8_t>(element >> shift));
    ExtendedKey tweak = split_digest(hmac_sha512(parent.chain_code, data));
    ExtendedKey child{parent.priv, tweak.chain_code};
    if (secp256k1_ec_seckey_tweak_add(curve(), child.priv.data(), tweak.priv.data()) != 1) {
        throw std::runtime_error("a derivation left the curve");
    }
    return child;
}

// The elements of "m/44'/236'/1'/0/0".
std::vector<std::uint32_t> path_elements(const std::string& path) {
    if (!path.starts_with("m")) throw std::invalid_argument("a path begins with m");
    std::vector<std::uint32_t> elements;
    std::size_t at = 1;
    while (at < path.size()) {
        if (path[at++] != '/' || at >= path.size() ||
            std::isdigit(static_cast<unsigned char>(path[at])) == 0) {
            throw std::invalid_argument("a path is m, slashes and numbers: " + path);
        }
        std::size_t digits = 0;
        auto element = static_cast<std::uint32_t>(std::stoul(path.substr(at), &digits));
        at += digits;
        if (at < path.size() && path[at] == '\'') {
            element |= HARDENED;
            ++at;
        }
        elements.push_back(element);
    }
    return elements;
}

bool verify_signature(const Bytes& pub, const Hash256& digest, const secp256k1_ecdsa_signature& signature) {
    secp256k1_pubkey point;
    return secp256k1_ec_pubkey_parse(curve(), &point, pub.data(), pub.size()) == 1 &&
           secp256k1_ecdsa_verify(curve(), &signature, digest.data(), &point) == 1;
}

std::string base58_text(const Bytes& payload) {
    std::vector<int> digits;
    for (const std::uint8_t byte : payload) {
        int carry = byte;
        for (int& digit : digits) {
            carry += digit * 256;
            digit = carry % 58;
            carry /= 58;
        }
        for (; carry > 0; carry /= 58) digits.push_back(carry % 58);
    }
    std::string text;
    for (std::size_t i = 0; i < payload.size() && payload[i] == 0; ++i) text += BASE58[0];
    for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit) {
        text += BASE58[static_cast<std::size_t>(*digit)];
    }
    return text;
}

bool base58_bytes(std::string_view text, Bytes& payload) {
    std::vector<int> bytes;
    for (const char c : text) {
        const std::size_t place = BASE58.find(c);
        if (place == std::string_view::npos) return false;
        int carry = static_cast<int>(place);
        for (int& byte : bytes) {
            carry += byte * 58;
            byte = carry % 256;
            carry /= 256;
        }
        for (; carry > 0; carry /= 256) bytes.push_back(carry % 256);
    }
    payload.clear();
    for (std::size_t i = 0; i < text.size() && text[i] == BASE58[0]; ++i) payload.push_back(0);
    for (auto byte = bytes.rbegin(); byte != bytes.rend(); ++byte) {
        payload.push_back(static_cast<std::uint8_t>(*byte));
    }
    return true;
}

// One INTEGER of a strict DER signature, of which `at` is the tag: positive, not longer than it must be.
bool strict_integer(const Bytes& der, std::size_t& at) {
    if (at + 2 > der.size() || der[at] != 0x02) return false;
    const std::size_t size = der[at + 1];
    const std::size_t begin = at + 2;
    if (size == 0 || begin + size > der.size() || (der[begin] & 0x80) != 0) return false;
    if (size > 1 && der[begin] == 0 && (der[begin + 1] & 0x80) == 0) return false;
    at = begin + size;
    return true;
}

}  // namespace

Hash256 sha256d(const Bytes& bytes) {
    Hash256 once{};
    Hash256 twice{};
    SHA256(bytes.data(), bytes.size(), once.data());
    SHA256(once.data(), once.size(), twice.data());
    return twice;
}

Hash160 hash160_of(const Bytes& bytes) {
    Hash256 inner{};
    Hash160 outer{};
    SHA256(bytes.data(), bytes.size(), inner.data());
    RIPEMD160(inner.data(), inner.size(), outer.data());
    return outer;
}

std::string address_of(const Hash160& hash160) {
    Bytes payload{0};
    payload.insert(payload.end(), hash160.begin(), hash160.end());
    const Hash256 check = sha256d(payload);
    payload.insert(payload.end(), check.begin(), check.begin() + 4);
    return base58_text(payload);
}

bool hash160_of_address(std::string_view address, Hash160& out) {
    Bytes payload;
    if (address.size() > 35 || !base58_bytes(address, payload)) return false;
    if (payload.size() != 25 || payload[0] != 0) return false;
    const Hash256 check = sha256d(Bytes(payload.begin(), payload.begin() + 21));
    if (!std::equal(payload.begin() + 21, payload.end(), check.begin())) return false;
    std::copy(payload.begin() + 1, payload.begin() + 21, out.begin());
    return true;
}

Bytes p2pkh_script(const Hash160& hash160) {
    Bytes script{0x76, 0xa9, 0x14};
    script.insert(script.end(), hash160.begin(), hash160.end());
    script.push_back(0x88);
    script.push_back(0xac);
    return script;
}

std::string mnemonic_from_entropy(const std::array<std::uint8_t, 16>& entropy) {
    Hash256 digest{};
    SHA256(entropy.data(), entropy.size(), digest.data());
    const auto bit = [&](std::size_t i) -> unsigned {
        const std::uint8_t byte = i < 128 ? entropy[i / 8] : digest[0];
        return (byte >> (7 - i % 8)) & 1U;
    };
    std::string mnemonic;
    for (std::size_t word = 0; word < 12; ++word) {
        std::size_t value = 0;
        for (std::size_t i = 0; i < 11; ++i) value = value * 2 + bit(word * 11 + i);
        if (word > 0) mnemonic += ' ';
        mnemonic += WORDS[value];
    }
    return mnemonic;
}

KeyPair derive(const std::string& mnemonic, const std::string& path) {
    ExtendedKey key = master_key(mnemonic);
    for (const std::uint32_t element : path_elements(path)) key = child_key(key, element);
    return key_from_priv(key.priv);
}

KeyPair key_from_priv(const Bytes& priv) {
    KeyPair key;
    key.priv = priv;
    key.pub = pub_of(priv);
    key.hash160 = hash160_of(key.pub);
    key.address = address_of(key.hash160);
    return key;
}

Bytes sign_der(const KeyPair& key, const Hash256& digest) {
    secp256k1_ecdsa_signature signature;
    if (secp256k1_ecdsa_sign(curve(), &signature, digest.data(), key.priv.data(), nullptr, nullptr) != 1) {
        throw std::runtime_error("a signature could not be made");
    }
    Bytes der(72);
    std::size_t size = der.size();
    secp256k1_ecdsa_signature_serialize_der(curve(), der.data(), &size, &signature);
    der.resize(size);
    return der;
}

bool is_strict_der(const Bytes& der) {
    if (der.size() < 8 || der.size() > 72 || der[0] != 0x30 || der[1] != der.size() - 2) return false;
    std::size_t at = 2;
    return strict_integer(der, at) && strict_integer(der, at) && at == der.size();
}

bool has_low_s(const Bytes& der) {
    secp256k1_ecdsa_signature signature;
    return secp256k1_ecdsa_signature_parse_der(curve(), &signature, der.data(), der.size()) == 1 &&
           secp256k1_ecdsa_signature_normalize(curve(), nullptr, &signature) == 0;
}

bool is_public_key(const Bytes& pub) {
    secp256k1_pubkey point;
    return secp256k1_ec_pubkey_parse(curve(), &point, pub.data(), pub.size()) == 1;
}

bool verify_der(const Bytes& pub, const Hash256& digest, const Bytes& der) {
    secp256k1_ecdsa_signature signature;
    return is_strict_der(der) && has_low_s(der) &&
           secp256k1_ecdsa_signature_parse_der(curve(), &signature, der.data(), der.size()) == 1 &&
           verify_signature(pub, digest, signature);
}

bool verify_compact(const Bytes& pub, const Hash256& digest, const Bytes& rs64) {
    secp256k1_ecdsa_signature signature;
    return rs64.size() == 64 &&
           secp256k1_ecdsa_signature_parse_compact(curve(), &signature, rs64.data()) == 1 &&
           verify_signature(pub, digest, signature);
}

Bytes sign_compact(const KeyPair& key, const Hash256& digest) {
    secp256k1_ecdsa_signature signature;
    if (secp256k1_ecdsa_sign(curve(), &signature, digest.data(), key.priv.data(), nullptr, nullptr) != 1) {
        throw std::runtime_error("a signature could not be made");
    }
    Bytes rs64(64);
    secp256k1_ecdsa_signature_serialize_compact(curve(), rs64.data(), &signature);
    return rs64;
}

Bytes recover_pub(const Hash256& digest, const Bytes& signature65) {
    if (signature65.size() != 65 || signature65[0] < 31 || signature65[0] > 34) return {};
    secp256k1_ecdsa_recoverable_signature signature;
    secp256k1_pubkey point;
    if (secp256k1_ecdsa_recoverable_signature_parse_compact(curve(), &signature, signature65.data() + 1,
                                                            signature65[0] - 31) != 1 ||
        secp256k1_ecdsa_recover(curve(), &point, &signature, digest.data()) != 1) {
        return {};
    }
    Bytes pub(33);
    std::size_t size = pub.size();
    secp256k1_ec_pubkey_serialize(curve(), pub.data(), &size, &point, SECP256K1_EC_COMPRESSED);
    return pub;
}

Hash256 message_digest(std::string_view text) {
    static constexpr std::string_view MAGIC = "Bitcoin Signed Message:\n";
    Bytes preimage;
    put_compact(preimage, MAGIC.size());
    preimage.insert(preimage.end(), MAGIC.begin(), MAGIC.end());
    put_compact(preimage, text.size());
    preimage.insert(preimage.end(), text.begin(), text.end());
    return sha256d(preimage);
}

}  // namespace sandbox
