#include "wallet/ecdsa.h"

#include <openssl/bn.h>
#include <openssl/ec.h>
#include <openssl/ecdsa.h>
#include <openssl/objects.h>

#include <memory>

#include "base/hex.h"
#include "wallet/hashes.h"

namespace {

struct Free {
    void operator()(BIGNUM* number) const { BN_clear_free(number); }
    void operator()(EC_POINT* point) const { EC_POINT_clear_free(point); }
    void operator()(EC_KEY* key) const { EC_KEY_free(key); }  // clears the private number
    void operator()(ECDSA_SIG* signature) const { ECDSA_SIG_free(signature); }
};
template <typename T>
using Owned = std::unique_ptr<T, Free>;

// Read only after it is made, so all threads share it; never freed, since a worker may sign while the process
// ends.
const EC_GROUP* curve() {
    static const EC_GROUP* const group = EC_GROUP_new_by_curve_name(NID_secp256k1);
    return group;
}

// The number of 32 bytes, or null if it is not below the order.
Owned<BIGNUM> number_below_order(const std::uint8_t* bytes32) {
    if (!curve()) return nullptr;
    Owned<BIGNUM> number(BN_bin2bn(bytes32, 32, nullptr));
    if (!number || BN_cmp(number.get(), EC_GROUP_get0_order(curve())) >= 0) return nullptr;
    BN_set_flags(number.get(), BN_FLG_CONSTTIME);
    return number;
}

// The private number of 32 bytes; null unless it lies from 1 to the order minus 1.
Owned<BIGNUM> private_number(const std::uint8_t* bytes32) {
    Owned<BIGNUM> number = number_below_order(bytes32);
    if (number && BN_is_zero(number.get())) number.reset();
    return number;
}

Owned<BIGNUM> private_number(std::string_view priv_hex) {
    SecretBytes<32> bytes;
    if (!qv_clasp_hex_decode_into(priv_hex, bytes.data(), bytes.size())) return nullptr;
    return private_number(bytes.data());
}

bool compressed_point(const BIGNUM& number, std::array<std::uint8_t, 33>& pub) {
    const Owned<EC_POINT> point(EC_POINT_new(curve()));
    return point && EC_POINT_mul(curve(), point.get(), &number, nullptr, nullptr, nullptr) == 1 &&
           EC_POINT_point2oct(curve(), point.get(), POINT_CONVERSION_COMPRESSED, pub.data(), pub.size(),
                              nullptr) == pub.size();
}

// Either s or the order minus s is valid; the network relays the lower one only.
bool make_low_s(ECDSA_SIG& signature) {
    const BIGNUM* order = EC_GROUP_get0_order(curve());
    const BIGNUM* s = ECDSA_SIG_get0_s(&signature);
    const Owned<BIGNUM> half(BN_dup(order));
    if (!half || BN_rshift1(half.get(), half.get()) != 1) return false;
    if (BN_cmp(s, half.get()) <= 0) return true;
    Owned<BIGNUM> low_s(BN_new());
    Owned<BIGNUM> r(BN_dup(ECDSA_SIG_get0_r(&signature)));
    if (!low_s || !r || BN_sub(low_s.get(), order, s) != 1) return false;
    if (ECDSA_SIG_set0(&signature, r.get(), low_s.get()) != 1) return false;
    // The signature owns them from here on.
    (void)r.release();
    (void)low_s.release();
    return true;
}

Owned<ECDSA_SIG> sign(std::string_view priv_hex, const Hash256& digest32) {
    const Owned<BIGNUM> number = private_number(priv_hex);
    const Owned<EC_KEY> key(EC_KEY_new());
    if (!number || !key || EC_KEY_set_group(key.get(), curve()) != 1) return nullptr;
    if (EC_KEY_set_private_key(key.get(), number.get()) != 1) return nullptr;
    Owned<ECDSA_SIG> signature(ECDSA_do_sign(digest32.data(), static_cast<int>(digest32.size()), key.get()));
    if (!signature || !make_low_s(*signature)) return nullptr;
    return signature;
}

}  // namespace

bool qv_clasp_pub_from_priv(std::string_view priv_hex, std::string& pub_hex_out) {
    pub_hex_out.clear();
    const Owned<BIGNUM> number = private_number(priv_hex);
    std::array<std::uint8_t, 33> pub{};
    if (!number || !compressed_point(*number, pub)) return false;
    pub_hex_out = qv_clasp_hex_encode(pub);
    return true;
}

bool compressed_public_key(const SecretBytes<32>& priv, std::array<std::uint8_t, 33>& pub_out) {
    const Owned<BIGNUM> number = private_number(priv.data());
    if (number && compressed_point(*number, pub_out)) return true;
    pub_out.fill(0);
    return false;
}

bool add_to_private_key(const SecretBytes<32>& priv, const std::uint8_t* number32, SecretBytes<32>& sum_out) {
    const Owned<BIGNUM> key = private_number(priv.data());
    const Owned<BIGNUM> number = number_below_order(number32);
    const Owned<BIGNUM> sum(BN_new());
    const BIGNUM* order = curve() ? EC_GROUP_get0_order(curve()) : nullptr;
    if (key && number && sum && BN_mod_add_quick(sum.get(), key.get(), number.get(), order) == 1 &&
        !BN_is_zero(sum.get()) && BN_bn2binpad(sum.get(), sum_out.data(), 32) == 32) {
        return true;
    }
    sum_out.wipe();
    return false;
}

bool qv_clasp_ecdsa_sign(std::string_view priv_hex, const Hash256& digest32, Bytes& der_out) {
    der_out.clear();
    const Owned<ECDSA_SIG> signature = sign(priv_hex, digest32);
    if (!signature) return false;
    const int size = i2d_ECDSA_SIG(signature.get(), nullptr);
    if (size <= 0) return false;
    der_out.resize(static_cast<std::size_t>(size));
    unsigned char* end = der_out.data();
    if (i2d_ECDSA_SIG(signature.get(), &end) == size) return true;
    der_out.clear();
    return false;
}

bool qv_clasp_ecdsa_sign_compact(std::string_view priv_hex, const Hash256& digest32,
                                 std::array<std::uint8_t, 64>& rs_out) {
    rs_out.fill(0);
    Bytes der;
    if (!qv_clasp_ecdsa_sign(priv_hex, digest32, der)) return false;
    const unsigned char* start = der.data();
    const Owned<ECDSA_SIG> signature(d2i_ECDSA_SIG(nullptr, &start, static_cast<long>(der.size())));
    if (signature && BN_bn2binpad(ECDSA_SIG_get0_r(signature.get()), rs_out.data(), 32) == 32 &&
        BN_bn2binpad(ECDSA_SIG_get0_s(signature.get()), rs_out.data() + 32, 32) == 32) {
        return true;
    }
    rs_out.fill(0);
    return false;
}

Hash256 bitcoin_message_digest(std::string_view text) {
    constexpr std::string_view MAGIC = "Bitcoin Signed Message:\n";
    Bytes preimage{static_cast<std::uint8_t>(MAGIC.size())};
    preimage.insert(preimage.end(), MAGIC.begin(), MAGIC.end());
    if (text.size() < 253) {
        preimage.push_back(static_cast<std::uint8_t>(text.size()));
    } else {
        preimage.push_back(253);
        preimage.push_back(static_cast<std::uint8_t>(text.size() & 0xFF));
        preimage.push_back(static_cast<std::uint8_t>((text.size() >> 8) & 0xFF));
    }
    preimage.insert(preimage.end(), text.begin(), text.end());
    return double_sha256(preimage);
}
