#include "wallet/hashes.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/ripemd.h>
#include <openssl/sha.h>

#include <limits>

// In three calls: the one that does it all looks its algorithm up each time, which takes longer than to hash
// an address.
Hash256 sha256(const std::uint8_t* bytes, std::size_t count) {
    Hash256 digest{};
    SHA256_CTX context;
    const bool made = SHA256_Init(&context) && SHA256_Update(&context, bytes, count) &&
                      SHA256_Final(digest.data(), &context);
    OPENSSL_cleanse(&context, sizeof context);
    if (!made) digest.fill(0);
    return digest;
}

Hash256 sha256(const Bytes& bytes) {
    return sha256(bytes.data(), bytes.size());
}

Hash256 double_sha256(const std::uint8_t* bytes, std::size_t count) {
    const Hash256 once = sha256(bytes, count);
    return sha256(once.data(), once.size());
}

Hash256 double_sha256(const Bytes& bytes) {
    return double_sha256(bytes.data(), bytes.size());
}

Hash160 hash160(const std::uint8_t* bytes, std::size_t count) {
    const Hash256 inner = sha256(bytes, count);
    Hash160 digest{};
    if (!RIPEMD160(inner.data(), inner.size(), digest.data())) digest.fill(0);
    return digest;
}

bool hmac_sha512(const std::uint8_t* key, std::size_t key_size, const std::uint8_t* data,
                 std::size_t data_size, SecretBytes<64>& digest) {
    if (key_size > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        digest.wipe();
        return false;
    }
    unsigned int digest_size = 0;
    const bool made = HMAC(EVP_sha512(), key, static_cast<int>(key_size), data, data_size, digest.data(),
                           &digest_size) != nullptr;
    if (made && digest_size == digest.size()) return true;
    digest.wipe();
    return false;
}
