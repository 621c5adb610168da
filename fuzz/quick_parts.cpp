// Stands in for what would cost more than the parsing that is looked at.
#include <openssl/ec.h>

#include <map>

#include "base/bytes.h"
#include "base/parallel_for.h"

// One job after the other: a thread costs more than its job, and a fuzzer learns nothing from an input that
// takes another road each time.
void parallel_for(std::size_t count, std::size_t, const std::function<void(std::size_t)>& job) {
    for (std::size_t i = 0; i < count; ++i) job(i);
}

// The public points of the one wallet are computed once. The linker leads the calls of the program here
// (--wrap).
extern "C" {

int __real_EC_POINT_mul(const EC_GROUP* group, EC_POINT* out, const BIGNUM* number, const EC_POINT* other,
                        const BIGNUM* factor, BN_CTX* context);

int __wrap_EC_POINT_mul(const EC_GROUP* group, EC_POINT* out, const BIGNUM* number, const EC_POINT* other,
                        const BIGNUM* factor, BN_CTX* context) {
    if (other || !number) return __real_EC_POINT_mul(group, out, number, other, factor, context);
    static auto& known = *new std::map<Bytes, EC_POINT*>;
    Bytes key(static_cast<std::size_t>(BN_num_bytes(number)));
    BN_bn2bin(number, key.data());
    const auto [row, is_new] = known.try_emplace(key, nullptr);
    if (is_new) {
        row->second = EC_POINT_new(group);
        if (__real_EC_POINT_mul(group, row->second, number, nullptr, nullptr, context) != 1) std::abort();
    }
    return EC_POINT_copy(out, row->second);
}
}
