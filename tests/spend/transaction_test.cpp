#include "spend/transaction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>

#include "base/hex.h"
#include "sandbox/chain.h"
#include "sandbox/keys.h"
#include "tests/support/test_home.h"
#include "wallet/address.h"
#include "wallet/ecdsa.h"
#include "wallet/hashes.h"

namespace {

constexpr std::int64_t MOST = std::numeric_limits<std::int64_t>::max();
const Hash160 DEST{1, 2, 3};
const Hash160 CHANGE{9, 8, 7};

std::string txid_of(std::size_t number) {
    std::string digits = std::to_string(number);
    return std::string(64 - digits.size(), 'a') + digits;
}

QvClaspCoin coin_of(std::size_t number, std::int64_t sats) {
    QvClaspCoin coin;
    coin.txid = txid_of(number);
    coin.vout = static_cast<std::uint32_t>(number % 3);
    coin.sats = sats;
    return coin;
}

std::vector<QvClaspCoin> coins_of(const std::vector<std::int64_t>& values) {
    std::vector<QvClaspCoin> coins;
    for (const std::int64_t sats : values) coins.push_back(coin_of(coins.size(), sats));
    return coins;
}

Hash160 hash160_of_hex(const std::string& hex) {
    Hash160 hash{};
    EXPECT_TRUE(qv_clasp_hex_decode_into(hex, hash.data(), hash.size()));
    return hash;
}

struct Built {
    bool ok = false;
    std::vector<QvClaspCoin> coins;
    std::vector<QvClaspTxOutput> outputs;
    std::int64_t fee = -7;
    std::string error = "left over";
};

Built build(std::vector<QvClaspCoin> candidates, std::int64_t sats, const std::string& memo = "") {
    Built built;
    built.coins = std::move(candidates);
    built.ok =
        qv_clasp_build_tx(built.coins, built.outputs, DEST, CHANGE, sats, memo, built.fee, built.error);
    return built;
}

std::vector<std::int64_t> values_of(const std::vector<QvClaspTxOutput>& outputs) {
    std::vector<std::int64_t> values;
    for (const QvClaspTxOutput& output : outputs) values.push_back(output.sats);
    return values;
}

}  // namespace

TEST(TransactionFee, IsTheSizeAtATenthOfASatoshiRoundedUp) {
    const std::map<std::int64_t, std::int64_t> fees = {
        {-5, 1}, {1, 1}, {10, 1}, {11, 2}, {226, 23}, {1000, 100}, {1001, 101}, {MOST, 922337203685477581}};
    for (const auto& [size, fee] : fees) EXPECT_EQ(qv_clasp_fee_for_size(size), fee) << size;
    EXPECT_EQ(build(coins_of({100'000}), 1000).fee, 23);
}

TEST(TransactionBytes, TheEstimatedSizeIsThatOfTheWrittenTransaction) {
    std::vector<QvClaspCoin> coins;
    for (const std::size_t inputs : {0, 1, 2, 252, 253, 254, 0xffff, 0x10000}) {
        while (coins.size() < inputs) coins.push_back(coin_of(coins.size(), 1));
        for (const std::size_t memo : {0, 1, 75, 76, 245, 246, 300, 70'000}) {
            if (inputs > 1000 && memo > 0) continue;
            std::vector<QvClaspTxOutput> outputs = {{5, qv_clasp_p2pkh_script(DEST)}, {0, Bytes(memo)}};
            EXPECT_EQ(estimated_tx_size(inputs, 2, tx_output_size(25) + tx_output_size(memo)),
                      static_cast<std::int64_t>(qv_clasp_serialize_tx(coins, outputs, true).size()))
                << inputs << " inputs, memo of " << memo;
        }
    }
}

TEST(Sighash, MatchesPublishedPreimagesOfPlainPayments) {
    const Json document = test_data("sighash_p2pkh_computed.json");
    ASSERT_EQ(document["vectors"].size(), 10U);
    for (const Json& row : document["vectors"]) {
        std::vector<QvClaspCoin> coins;
        for (const Json& input : row["inputs"]) {
            QvClaspCoin& coin = coins.emplace_back();
            coin.txid = json_text(input, "txid");
            coin.vout = static_cast<std::uint32_t>(json_int(input, "vout"));
            coin.sats = json_int(input, "satoshis");
            coin.hash160 = hash160_of_hex(json_text(input, "hash160"));
            coin.priv.assign(json_text(input, "privateKey"));
            coin.pub = json_text(input, "publicKey");
        }
        std::vector<QvClaspTxOutput> outputs;
        for (const Json& output : row["outputs"]) {
            outputs.push_back(
                {json_int(output, "satoshis"), qv_clasp_hex_decode(json_text(output, "lockingScript"))});
        }
        EXPECT_EQ(qv_clasp_hex_encode(qv_clasp_serialize_tx(coins, outputs, false)),
                  json_text(row, "unsignedTx"));

        const auto index = static_cast<std::size_t>(json_int(row, "inputIndex"));
        const Bytes preimage =
            sighash_preimage(coins[index], sighash_midstate(coins, outputs), coins[index].hash160);
        EXPECT_EQ(qv_clasp_hex_encode(preimage), json_text(row, "preimage"));
        const Hash256 digest = double_sha256(preimage);
        EXPECT_EQ(qv_clasp_hex_encode(digest), json_text(row, "digest"));

        QvClaspCoin alone = coins[index];
        ASSERT_TRUE(qv_clasp_sign_input(alone, coins, outputs, alone.hash160, alone.priv.view(), alone.pub));
        const Bytes pub = qv_clasp_hex_decode(alone.pub);
        const std::size_t der_size = alone.script_sig[0] - 1U;
        ASSERT_EQ(alone.script_sig.size(), 1 + der_size + 1 + 1 + 33);
        EXPECT_EQ(alone.script_sig[1 + der_size], 0x41);
        EXPECT_TRUE(std::equal(pub.begin(), pub.end(), alone.script_sig.end() - 33));
        const auto der = alone.script_sig.begin() + 1;
        EXPECT_TRUE(sandbox::verify_der(pub, digest, {der, der + static_cast<std::ptrdiff_t>(der_size)}));
    }
}

TEST(BuildTransaction, PaysTheFirstPrefixThatCovers) {
    using Values = std::vector<std::int64_t>;
    const auto expect = [](const std::string& what, const Values& coins, std::int64_t sats,
                           std::size_t chosen, const Values& outputs, std::int64_t fee) {
        const Built built = build(coins_of(coins), sats);
        EXPECT_TRUE(built.ok) << what << ": " << built.error;
        EXPECT_EQ(built.error, "") << what;
        EXPECT_EQ(built.coins.size(), chosen) << what;
        EXPECT_EQ(values_of(built.outputs), outputs) << what;
        EXPECT_EQ(built.fee, fee) << what;
    };
    expect("change, and coins that are not needed", {100'000, 5, 7}, 1000, 1, {1000, 98'977}, 23);
    expect("no search for a better fit", {500, 700, 100'000}, 1000, 2, {1000, 162}, 38);
    expect("change of one satoshi is kept", {1024}, 1000, 1, {1000, 1}, 23);
    expect("exactly the fee with a change output: the miners have it all", {1023}, 1000, 1, {1000}, 23);
    expect("exactly the smaller fee, no other coin", {1020}, 1000, 1, {1000}, 20);
    expect("exactly the smaller fee, the walk goes on", {1020, 500}, 1000, 2, {1000, 482}, 38);
    expect("an output of one satoshi", {1000}, 1, 1, {1, 976}, 23);
    // A lying service's huge coins are no danger to a common amount: their sum is never formed.
    expect("huge coins", {MOST, MOST}, 1000, 1, {1000, MOST - 1023}, 23);
}

TEST(BuildTransaction, SaysWhatIsMissing) {
    const auto expect = [](const std::vector<std::int64_t>& coins, std::int64_t sats,
                           const std::string& error) {
        const Built built = build(coins_of(coins), sats);
        EXPECT_FALSE(built.ok) << error;
        EXPECT_EQ(built.error, error);
    };
    const auto lacks = [](std::int64_t need, std::int64_t have) {
        return "insufficient funds. Need " + std::to_string(need) + " sats, you have " +
               std::to_string(have) + " in your Clasp wallet.";
    };
    expect({}, 1000, lacks(1005, 0));
    expect({400, 300}, 1000, lacks(1034, 700));
    // Enough without a change output, but the larger fee is what is asked for.
    expect({1021}, 1000, lacks(1023, 1021));
    expect({1022}, 1000, lacks(1023, 1022));
    expect({5000}, MOST - 3, lacks(MOST, 5000));
    expect({MOST}, MOST - 3, lacks(MOST, MOST));
    // Sums that no transaction can carry.
    expect({MOST - 5000, 6000}, MOST - 100, "failed to build transaction.");
    expect({-1000}, 1000, "failed to build transaction.");
    expect({1000}, -1, "failed to build transaction.");
}

TEST(BuildTransaction, PutsTheMemoBetweenPaymentAndChange) {
    for (const auto& [size, head] : std::vector<std::pair<std::size_t, std::string>>{
             {1, "006a01"}, {75, "006a4b"}, {76, "006a4c4c"}, {256, "006a4d0001"}}) {
        const Built built = build(coins_of({100'000}), 1000, std::string(size, 'm'));
        ASSERT_TRUE(built.ok);
        ASSERT_EQ(built.outputs.size(), 3U);
        EXPECT_EQ(built.outputs[0].script, qv_clasp_p2pkh_script(DEST));
        EXPECT_EQ(built.outputs[1].sats, 0);
        EXPECT_EQ(qv_clasp_hex_encode(built.outputs[1].script).substr(0, head.size()), head);
        EXPECT_EQ(built.outputs[1].script.size(), head.size() / 2 + size);
        EXPECT_EQ(built.outputs[2].script, qv_clasp_p2pkh_script(CHANGE));
        EXPECT_EQ(built.outputs[2].sats, 100'000 - 1000 - built.fee);
    }
}

TEST(BuildTransaction, PassesOverCandidatesWithoutATxid) {
    std::vector<QvClaspCoin> coins = coins_of({50'000, 60'000});
    coins[0].txid = "not a hash";
    const Built built = build(std::move(coins), 1000);
    ASSERT_TRUE(built.ok);
    ASSERT_EQ(built.coins.size(), 1U);
    EXPECT_EQ(built.coins[0].sats, 60'000);
}

TEST(Signatures, ACoinWithoutKeysIsSignedWithTheSessionsPair) {
    const sandbox::KeyPair own = sandbox::key_from_priv(Bytes(32, 0x21));
    const sandbox::KeyPair session = sandbox::key_from_priv(Bytes(32, 0x22));
    std::vector<QvClaspCoin> coins = coins_of({1000, 2000});
    coins[0].priv.assign(qv_clasp_hex_encode(own.priv));
    coins[0].pub = qv_clasp_hex_encode(own.pub);
    ASSERT_TRUE(
        sign_all_inputs(coins, {}, qv_clasp_hex_encode(session.priv), qv_clasp_hex_encode(session.pub)));
    EXPECT_TRUE(std::equal(own.pub.begin(), own.pub.end(), coins[0].script_sig.end() - 33));
    EXPECT_TRUE(std::equal(session.pub.begin(), session.pub.end(), coins[1].script_sig.end() - 33));
    EXPECT_FALSE(sign_all_inputs(coins, {}, "", ""));
}
