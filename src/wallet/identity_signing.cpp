// The bodies of session_keys.h that load the wallet first, and so stand above the document.
#include <openssl/evp.h>

#include "wallet/ecdsa.h"
#include "wallet/hashes.h"
#include "wallet/session_keys.h"
#include "wallet/wallet_document.h"
#include "wallet/wallet_session.h"

namespace {

constexpr QvClaspKeyPath BN_PATH{{HARDENED | 44U, HARDENED | 236U, HARDENED | 102U, 0, 0}};
constexpr std::size_t PRIV_HEX_SIZE = 64;
constexpr std::size_t PUB_HEX_SIZE = 66;

bool load_hd_wallet(std::string& error_out) {
    if (qv_clasp_load() && qv_clasp_session().hd) return true;
    error_out = "Clasp HD wallet not connected";
    return false;
}

std::string base64(const std::array<std::uint8_t, 64>& bytes) {
    // 64 bytes make 88 characters; the encoder adds a zero byte.
    std::array<std::uint8_t, 89> text{};
    const int size = EVP_EncodeBlock(text.data(), bytes.data(), static_cast<int>(bytes.size()));
    return std::string(text.begin(), text.begin() + size);
}

}  // namespace

bool qv_clasp_sign_identity(std::string_view text, std::string& pubkey_hex_out, std::string& signature_out,
                            std::string& error_out) {
    pubkey_hex_out.clear();
    signature_out.clear();
    error_out.clear();
    const WalletLock lock = qv_clasp_lock_wallet();
    if (!load_hd_wallet(error_out)) return false;

    SecretText priv_hex;
    std::string pub_hex;
    std::string address;
    if (!qv_clasp_derive_identity(priv_hex, pub_hex, address) || priv_hex.size() != PRIV_HEX_SIZE) {
        error_out = "could not derive Clasp identity key";
        return false;
    }
    std::array<std::uint8_t, 64> rs{};
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    // A signature over the plain digest of the text is the second best; it is tried before giving up.
    if (!qv_clasp_ecdsa_sign_compact(priv_hex.view(), bitcoin_message_digest(text), rs) &&
        !qv_clasp_ecdsa_sign_compact(priv_hex.view(), sha256(bytes, text.size()), rs)) {
        error_out = "Clasp identity sign failed";
        return false;
    }
    pubkey_hex_out = pub_hex;
    signature_out = base64(rs);
    return true;
}

bool qv_clasp_bn_key(std::string& bn_pub_out, SecretText& bn_priv_out, std::string& bn_address_out,
                     std::string& error_out) {
    bn_pub_out.clear();
    bn_priv_out.wipe();
    bn_address_out.clear();
    error_out.clear();
    const WalletLock lock = qv_clasp_lock_wallet();
    if (!load_hd_wallet(error_out)) return false;
    if (qv_clasp_derive(BN_PATH, bn_priv_out, bn_pub_out, bn_address_out) &&
        bn_priv_out.size() == PRIV_HEX_SIZE && bn_pub_out.size() == PUB_HEX_SIZE && !bn_address_out.empty()) {
        return true;
    }
    bn_priv_out.wipe();
    bn_pub_out.clear();
    bn_address_out.clear();
    error_out = "could not derive the BN key";
    return false;
}
