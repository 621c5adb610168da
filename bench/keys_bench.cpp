// Keys, addresses and signatures, beside the bare arithmetic of the curve library in use and of libsecp256k1.
#include <benchmark/benchmark.h>
#include <openssl/bn.h>
#include <openssl/ec.h>
#include <openssl/ecdsa.h>
#include <openssl/objects.h>
#include <secp256k1.h>

#include <array>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/hex.h"
#include "bench/bench_wallet.h"
#include "spend/transaction.h"
#include "wallet/address.h"
#include "wallet/ecdsa.h"
#include "wallet/session_keys.h"

namespace {

using Number = std::array<std::uint8_t, 32>;

// A private key, another one for each number.
Number private_key(std::size_t number) {
    Number key{};
    key.fill(0x5a);
    for (std::size_t i = 0; i < 8; ++i) key[24 + i] = static_cast<std::uint8_t>((number + 1) >> (8 * i));
    return key;
}

struct CurveLibrary {
    EC_GROUP* group = EC_GROUP_new_by_curve_name(NID_secp256k1);
    ~CurveLibrary() { EC_GROUP_free(group); }
};

void bare_multiplications(const EC_GROUP* group, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const Number key = private_key(i);
        BIGNUM* number = BN_bin2bn(key.data(), 32, nullptr);
        EC_POINT* point = EC_POINT_new(group);
        std::array<unsigned char, 33> pub{};
        EC_POINT_mul(group, point, number, nullptr, nullptr, nullptr);
        EC_POINT_point2oct(group, point, POINT_CONVERSION_COMPRESSED, pub.data(), pub.size(), nullptr);
        benchmark::DoNotOptimize(pub);
        EC_POINT_free(point);
        BN_free(number);
    }
}

void addresses_derived(benchmark::State& state) {
    BenchWallet wallet(0);
    const auto count = static_cast<std::uint32_t>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        wallet.restart();
        state.ResumeTiming();
        for (std::uint32_t index = 1; index <= count; ++index) {
            if (qv_clasp_account_address(RECEIVE_ACCOUNT, index).empty()) state.SkipWithError("no address");
        }
    }
}
BENCHMARK(addresses_derived)->Arg(40)->Arg(400);

void bare_openssl_multiplications(benchmark::State& state) {
    const CurveLibrary curve;
    for (auto _ : state) bare_multiplications(curve.group, static_cast<std::size_t>(state.range(0)));
}
BENCHMARK(bare_openssl_multiplications)->Arg(40)->Arg(400)->Arg(606)->Arg(6006);

void bare_secp256k1_multiplications(benchmark::State& state) {
    secp256k1_context* context = secp256k1_context_create(SECP256K1_CONTEXT_SIGN);
    for (auto _ : state) {
        for (std::size_t i = 0; i < static_cast<std::size_t>(state.range(0)); ++i) {
            secp256k1_pubkey pub;
            if (!secp256k1_ec_pubkey_create(context, &pub, private_key(i).data())) state.SkipWithError("key");
            benchmark::DoNotOptimize(pub);
        }
    }
    secp256k1_context_destroy(context);
}
BENCHMARK(bare_secp256k1_multiplications)->Arg(400);

// An address of somebody else, which is looked for in every account to the end.
const std::string& foreign_address() {
    static const std::string address = qv_clasp_address_from_hash160(Hash160{1, 2, 3});
    return address;
}

void first_key_look_up(benchmark::State& state) {
    BenchWallet wallet(static_cast<unsigned>(state.range(0)));
    for (auto _ : state) {
        state.PauseTiming();
        wallet.restart();
        state.ResumeTiming();
        if (qv_clasp_owns_address(foreign_address())) state.SkipWithError("found");
    }
}
BENCHMARK(first_key_look_up)->Arg(100)->Arg(1000);

void later_key_look_up(benchmark::State& state) {
    BenchWallet wallet(static_cast<unsigned>(state.range(0)));
    qv_clasp_owns_address(foreign_address());
    for (auto _ : state) {
        if (qv_clasp_owns_address(foreign_address())) state.SkipWithError("found");
    }
}
BENCHMARK(later_key_look_up)->Arg(100)->Arg(1000);

std::vector<QvClaspCoin> coins_to_spend(std::size_t count) {
    std::vector<QvClaspCoin> coins(count);
    for (std::size_t i = 0; i < count; ++i) {
        QvClaspCoin& coin = coins[i];
        const Number key = private_key(i % 400);
        coin.txid = bench_txid(i);
        coin.vout = static_cast<std::uint32_t>(i % 7);
        coin.sats = 10'000;
        coin.priv = SecretText(qv_clasp_hex_encode(key));
        if (!qv_clasp_pub_from_priv(coin.priv.view(), coin.pub) ||
            !qv_clasp_address_to_hash160(qv_clasp_address_from_pub(coin.pub), coin.hash160)) {
            throw std::runtime_error("the coins of the measurement have no keys");
        }
    }
    return coins;
}

// One send of every coin, from the candidates to the id of the signed transaction.
void built_and_signed(benchmark::State& state) {
    const auto count = static_cast<std::size_t>(state.range(0));
    const std::vector<QvClaspCoin> candidates = coins_to_spend(count);
    // Ten thousand satoshis a coin and 15 of fee for each leave less than one coin over.
    const std::int64_t sats =
        static_cast<std::int64_t>(count) * 10'000 - selection_fee(count, 1, tx_output_size(25)) - 1;
    for (auto _ : state) {
        std::vector<QvClaspCoin> coins = candidates;
        std::vector<QvClaspTxOutput> outputs;
        std::int64_t fee = 0;
        std::string error;
        if (!qv_clasp_build_tx(coins, outputs, Hash160{1}, Hash160{2}, sats, "", fee, error) ||
            coins.size() != count || !sign_all_inputs(coins, outputs, "", "")) {
            state.SkipWithError("not built");
        }
        benchmark::DoNotOptimize(qv_clasp_txid(qv_clasp_serialize_tx(coins, outputs, false)));
    }
}
BENCHMARK(built_and_signed)->Arg(1)->Arg(10)->Arg(100)->Arg(1000)->Arg(5000);

void bare_openssl_signatures(benchmark::State& state) {
    const CurveLibrary curve;
    EC_KEY* key = EC_KEY_new();
    const Number priv = private_key(0);
    BIGNUM* number = BN_bin2bn(priv.data(), 32, nullptr);
    if (EC_KEY_set_group(key, curve.group) != 1 || EC_KEY_set_private_key(key, number) != 1)
        state.SkipWithError("no key");
    Number digest = priv;
    for (auto _ : state) {
        for (std::int64_t i = 0; i < state.range(0); ++i) {
            ++digest[0];
            ECDSA_SIG* signature = ECDSA_do_sign(digest.data(), 32, key);
            benchmark::DoNotOptimize(signature);
            ECDSA_SIG_free(signature);
        }
    }
    BN_free(number);
    EC_KEY_free(key);
}
BENCHMARK(bare_openssl_signatures)->Arg(1)->Arg(10)->Arg(100)->Arg(1000)->Arg(5000);

void bare_secp256k1_signatures(benchmark::State& state) {
    secp256k1_context* context = secp256k1_context_create(SECP256K1_CONTEXT_SIGN);
    Number digest = private_key(1);
    const Number priv = private_key(0);
    for (auto _ : state) {
        for (std::int64_t i = 0; i < state.range(0); ++i) {
            ++digest[0];
            secp256k1_ecdsa_signature signature;
            if (!secp256k1_ecdsa_sign(context, &signature, digest.data(), priv.data(), nullptr, nullptr))
                state.SkipWithError("no signature");
            benchmark::DoNotOptimize(signature);
        }
    }
    secp256k1_context_destroy(context);
}
BENCHMARK(bare_secp256k1_signatures)->Arg(1)->Arg(10)->Arg(100)->Arg(1000)->Arg(5000);

}  // namespace

BENCHMARK_MAIN();
