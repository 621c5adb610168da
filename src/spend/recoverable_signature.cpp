#include "spend/recoverable_signature.h"

#include <openssl/bn.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/objects.h>

#include <algorithm>
#include <memory>

#include "base/hex.h"
#include "base/text.h"
#include "wallet/ecdsa.h"

namespace {

constexpr int COMPRESSED_KEY_HEADER = 31;

struct Free {
    void operator()(BN_CTX* context) const { BN_CTX_free(context); }
    void operator()(BIGNUM* number) const { BN_free(number); }
    void operator()(EC_GROUP* group) const { EC_GROUP_free(group); }
    void operator()(EC_POINT* point) const { EC_POINT_free(point); }
};
template <typename T>
using Owned = std::unique_ptr<T, Free>;

Owned<BIGNUM> number_of(const std::uint8_t* bytes32) {
    return Owned<BIGNUM>(BN_bin2bn(bytes32, 32, nullptr));
}

// The point whose x is r, or r plus the order where the id says so, with the parity that the id tells.
Owned<EC_POINT> nonce_point(const EC_GROUP& group, const BIGNUM& r, int recovery_id, BN_CTX& context) {
    const Owned<BIGNUM> x(BN_dup(&r));
    Owned<EC_POINT> point(EC_POINT_new(&group));
    if (!x || !point) return nullptr;
    if ((recovery_id & 2) != 0 && BN_add(x.get(), x.get(), EC_GROUP_get0_order(&group)) != 1) return nullptr;
    // The library would take the coordinate modulo the field.
    if (BN_cmp(x.get(), EC_GROUP_get0_field(&group)) >= 0) return nullptr;
    if (EC_POINT_set_compressed_coordinates(&group, point.get(), x.get(), recovery_id & 1, &context) != 1) {
        return nullptr;
    }
    return point;
}

// Q = (s R - e G) / r
Owned<EC_POINT> recovered_point(const EC_GROUP& group, const BIGNUM& digest, const BIGNUM& r, const BIGNUM& s,
                                const EC_POINT& nonce, BN_CTX& context) {
    const BIGNUM* order = EC_GROUP_get0_order(&group);
    const Owned<BIGNUM> inverse(BN_mod_inverse(nullptr, &r, order, &context));
    const Owned<BIGNUM> of_nonce(BN_new());
    const Owned<BIGNUM> of_generator(BN_new());
    const Owned<BIGNUM> zero(BN_new());
    Owned<EC_POINT> point(EC_POINT_new(&group));
    if (!inverse || !of_nonce || !of_generator || !zero || !point) return nullptr;
    const bool good =
        BN_mod_mul(of_nonce.get(), &s, inverse.get(), order, &context) == 1 &&
        BN_mod_sub(of_generator.get(), zero.get(), &digest, order, &context) == 1 &&
        BN_mod_mul(of_generator.get(), of_generator.get(), inverse.get(), order, &context) == 1 &&
        EC_POINT_mul(&group, point.get(), of_generator.get(), &nonce, of_nonce.get(), &context) == 1 &&
        EC_POINT_is_at_infinity(&group, point.get()) == 0;
    return good ? std::move(point) : nullptr;
}

std::string base64(const std::uint8_t* bytes, std::size_t count) {
    std::string text(4 * ((count + 2) / 3) + 1, '\0');
    const int length =
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), bytes, static_cast<int>(count));
    text.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return text;
}

}  // namespace

std::string recover_public_key(const Hash256& digest32, const std::array<std::uint8_t, 64>& rs,
                               int recovery_id) {
    if (recovery_id < 0 || recovery_id > 3) return "";
    const Owned<EC_GROUP> group(EC_GROUP_new_by_curve_name(NID_secp256k1));
    const Owned<BN_CTX> context(BN_CTX_new());
    const Owned<BIGNUM> digest = number_of(digest32.data());
    const Owned<BIGNUM> r = number_of(rs.data());
    const Owned<BIGNUM> s = number_of(rs.data() + 32);
    if (!group || !context || !digest || !r || !s) return "";
    const BIGNUM* order = EC_GROUP_get0_order(group.get());
    for (const BIGNUM* number : {r.get(), s.get()}) {
        if (BN_is_zero(number) || BN_cmp(number, order) >= 0) return "";
    }

    const Owned<EC_POINT> nonce = nonce_point(*group, *r, recovery_id, *context);
    if (!nonce) return "";
    const Owned<EC_POINT> point = recovered_point(*group, *digest, *r, *s, *nonce, *context);
    std::array<std::uint8_t, 33> pub{};
    if (!point || EC_POINT_point2oct(group.get(), point.get(), POINT_CONVERSION_COMPRESSED, pub.data(),
                                     pub.size(), context.get()) != pub.size()) {
        return "";
    }
    return qv_clasp_hex_encode(pub);
}

std::string sign_recoverable_message(std::string_view priv_hex, std::string_view pub_hex,
                                     std::string_view text) {
    const Hash256 digest = bitcoin_message_digest(text);
    std::array<std::uint8_t, 64> rs{};
    if (!qv_clasp_ecdsa_sign_compact(priv_hex, digest, rs)) return "";
    const std::string signer = ascii_lower(pub_hex);
    for (int recovery_id = 0; recovery_id < 4; ++recovery_id) {
        if (signer.empty() || recover_public_key(digest, rs, recovery_id) != signer) continue;
        std::array<std::uint8_t, 65> signature{};
        signature[0] = static_cast<std::uint8_t>(COMPRESSED_KEY_HEADER + recovery_id);
        std::copy(rs.begin(), rs.end(), signature.begin() + 1);
        return base64(signature.data(), signature.size());
    }
    return "";
}
