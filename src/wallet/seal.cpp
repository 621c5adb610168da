#include "wallet/seal.h"

#include <openssl/evp.h>
#include <openssl/rand.h>

#include <algorithm>
#include <limits>
#include <memory>

#include "base/hex.h"
#include "wallet/document_file.h"
#include "wallet/document_path.h"
#include "wallet/wallet_session.h"

namespace {

constexpr std::string_view MAGIC = "QV-LOCK1";
constexpr std::string_view KDF = "pbkdf2-sha256";
constexpr std::int64_t DEFAULT_ITER = 210000;
constexpr std::int64_t LEAST_ITER = 10000;
constexpr std::int64_t MOST_ITER = 5000000;
constexpr std::size_t SALT_SIZE = 16;
constexpr std::size_t IV_SIZE = 12;
constexpr std::size_t TAG_SIZE = 16;
// The cipher counts in int.
constexpr std::size_t LONGEST_TEXT = static_cast<std::size_t>(std::numeric_limits<int>::max()) - TAG_SIZE;

struct FreeContext {
    void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }  // clears the key
};
using Cipher = std::unique_ptr<EVP_CIPHER_CTX, FreeContext>;

enum class Direction { Decrypt = 0, Encrypt = 1 };

// AES-256-GCM with the session's key and the nonce; null on failure.
Cipher start_cipher(Direction direction, const Bytes& iv) {
    Cipher cipher(EVP_CIPHER_CTX_new());
    const int encrypt = static_cast<int>(direction);
    const std::uint8_t* key = qv_clasp_session().seal_key.data();
    if (!cipher ||
        EVP_CipherInit_ex(cipher.get(), EVP_aes_256_gcm(), nullptr, nullptr, nullptr, encrypt) != 1 ||
        EVP_CIPHER_CTX_ctrl(cipher.get(), EVP_CTRL_GCM_SET_IVLEN, static_cast<int>(iv.size()), nullptr) !=
            1 ||
        EVP_CipherInit_ex(cipher.get(), nullptr, nullptr, key, iv.data(), encrypt) != 1) {
        return nullptr;
    }
    return cipher;
}

// Decrypts into `plain`, which has room for the text and a tag; true only if the tag is right.
bool decrypt_into(EVP_CIPHER_CTX* cipher, const Bytes& tag, const Bytes& ct, SecretBuffer& plain) {
    Bytes expected_tag = tag;
    int count = 0;
    int rest = 0;
    return EVP_DecryptUpdate(cipher, plain.data(), &count, ct.data(), static_cast<int>(ct.size())) == 1 &&
           EVP_CIPHER_CTX_ctrl(cipher, EVP_CTRL_GCM_SET_TAG, static_cast<int>(TAG_SIZE),
                               expected_tag.data()) == 1 &&
           EVP_DecryptFinal_ex(cipher, plain.data() + count, &rest) == 1 &&
           static_cast<std::size_t>(count + rest) == ct.size();
}

bool encrypt_into(EVP_CIPHER_CTX* cipher, std::string_view plain, Bytes& tag, Bytes& ct) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(plain.data());
    int count = 0;
    int rest = 0;
    return EVP_EncryptUpdate(cipher, ct.data(), &count, bytes, static_cast<int>(plain.size())) == 1 &&
           EVP_EncryptFinal_ex(cipher, ct.data() + count, &rest) == 1 &&
           static_cast<std::size_t>(count + rest) == plain.size() &&
           EVP_CIPHER_CTX_ctrl(cipher, EVP_CTRL_GCM_GET_TAG, static_cast<int>(TAG_SIZE), tag.data()) == 1;
}

bool read_iter(const Json& envelope, std::int64_t& iter_out) {
    iter_out = DEFAULT_ITER;
    if (!envelope.contains("iter")) return true;
    iter_out = json_int(envelope, "iter", 0);
    return iter_out >= LEAST_ITER && iter_out <= MOST_ITER;
}

}  // namespace

bool is_seal_envelope(const Json& root) {
    return json_text(root, "lock") == MAGIC;
}

bool qv_clasp_is_locked() {
    const std::string path = qv_clasp_document_path();
    if (file_exists(path + ".seal")) return true;
    WalletDocument document;
    return read_wallet_document(path, document) && is_seal_envelope(document.root);
}

bool qv_clasp_seal_parse(const Json& json, std::int64_t& iter_out, Bytes& salt_out, Bytes& iv_out,
                         Bytes& tag_out, Bytes& ct_out) {
    if (!is_seal_envelope(json) || !read_iter(json, iter_out)) return false;
    salt_out = qv_clasp_hex_decode(json_text(json, "salt"));
    iv_out = qv_clasp_hex_decode(json_text(json, "iv"));
    tag_out = qv_clasp_hex_decode(json_text(json, "tag"));
    ct_out = qv_clasp_hex_decode(json_text(json, "ct"));
    return salt_out.size() == SALT_SIZE && iv_out.size() == IV_SIZE && tag_out.size() == TAG_SIZE &&
           !ct_out.empty();
}

bool qv_clasp_seal_decrypt(const Bytes& iv, const Bytes& tag, const Bytes& ct, SecretText& plain_out) {
    plain_out.wipe();
    if (iv.size() != IV_SIZE || tag.size() != TAG_SIZE) return false;
    if (ct.empty() || ct.size() > LONGEST_TEXT) return false;
    SecretBuffer plain(ct.size() + TAG_SIZE);
    const Cipher cipher = start_cipher(Direction::Decrypt, iv);
    if (!cipher || !decrypt_into(cipher.get(), tag, ct, plain)) return false;
    plain_out.assign({reinterpret_cast<const char*>(plain.data()), ct.size()});
    return true;
}

bool qv_clasp_seal_encrypt(std::string_view plain, Bytes& iv_out, Bytes& tag_out, Bytes& ct_out) {
    iv_out.assign(IV_SIZE, 0);
    tag_out.clear();
    ct_out.clear();
    // No reader takes an envelope of nothing.
    if (plain.empty() || plain.size() > LONGEST_TEXT) return false;
    if (RAND_bytes(iv_out.data(), static_cast<int>(iv_out.size())) != 1) return false;
    Bytes tag(TAG_SIZE);
    Bytes ct(plain.size());
    const Cipher cipher = start_cipher(Direction::Encrypt, iv_out);
    if (!cipher || !encrypt_into(cipher.get(), plain, tag, ct)) return false;
    tag_out.swap(tag);
    ct_out.swap(ct);
    return true;
}

std::string qv_clasp_seal_format(const Bytes& iv, const Bytes& tag, const Bytes& ct) {
    const Json envelope = {{"lock", MAGIC},
                           {"kdf", KDF},
                           {"iter", DEFAULT_ITER},
                           {"salt", qv_clasp_hex_encode(qv_clasp_session().seal_salt)},
                           {"iv", qv_clasp_hex_encode(iv)},
                           {"tag", qv_clasp_hex_encode(tag)},
                           {"ct", qv_clasp_hex_encode(ct)}};
    return dump_json(envelope, 2);
}

bool qv_clasp_seal_write(std::string_view plain) {
    if (!qv_clasp_session().unlocked) return false;
    Bytes iv;
    Bytes tag;
    Bytes ct;
    return qv_clasp_seal_encrypt(plain, iv, tag, ct) &&
           write_text_file(qv_clasp_document_path() + ".seal", qv_clasp_seal_format(iv, tag, ct));
}
