#include "spend/transaction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>
#include <random>

#include "base/hex.h"
#include "base/text.h"
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

// A transaction of somebody else in this program's records.
void take_apart(const sandbox::Transaction& tx, std::vector<QvClaspCoin>& coins,
                std::vector<QvClaspTxOutput>& outputs) {
    for (const sandbox::TxInput& input : tx.inputs) {
        QvClaspCoin& coin = coins.emplace_back();
        coin.txid = input.txid;
        coin.vout = input.vout;
        coin.script_sig = input.script_sig;
    }
    for (const sandbox::TxOutput& output : tx.outputs) outputs.push_back({output.sats, output.script});
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

// The selection in its plainest form: the growing transaction is written out for every candidate.
Built build_by_writing_out(const std::vector<QvClaspCoin>& candidates, std::int64_t sats,
                           const std::string& memo) {
    Built built;
    const auto size = [&] {
        return static_cast<std::int64_t>(qv_clasp_serialize_tx(built.coins, built.outputs, true).size());
    };
    built.outputs.push_back({sats, qv_clasp_p2pkh_script(DEST)});
    if (!memo.empty()) {
        Bytes script{0x00, 0x6a};
        qv_clasp_write_push(script, reinterpret_cast<const std::uint8_t*>(memo.data()), memo.size());
        built.outputs.push_back({0, script});
    }
    std::int64_t total = 0;
    for (const QvClaspCoin& candidate : candidates) {
        if (!is_hex64(candidate.txid)) continue;
        built.coins.push_back(candidate);
        total += candidate.sats;
        if (total >= sats + qv_clasp_fee_for_size(size() + 34)) break;
    }
    std::int64_t fee = qv_clasp_fee_for_size(size());
    std::int64_t change = total - sats - fee;
    if (change >= 1) {
        built.outputs.push_back({change, qv_clasp_p2pkh_script(CHANGE)});
        fee = qv_clasp_fee_for_size(size());
        change = total - sats - fee;
        built.outputs.back().sats = change;
        if (change < 1) built.outputs.pop_back();
    }
    built.fee = fee;
    built.ok = total >= sats + fee;
    return built;
}

std::vector<std::int64_t> values_of(const std::vector<QvClaspTxOutput>& outputs) {
    std::vector<std::int64_t> values;
    for (const QvClaspTxOutput& output : outputs) values.push_back(output.sats);
    return values;
}

}  // namespace

TEST(TransactionBytes, IntegersAndPushesTakeTheShortestForm) {
    const std::vector<std::pair<std::uint64_t, std::string>> compact = {
        {0, "00"},
        {252, "fc"},
        {253, "fdfd00"},
        {0xffff, "fdffff"},
        {0x10000, "fe00000100"},
        {0xffffffffU, "feffffffff"},
        {0x100000000U, "ff0000000001000000"},
        {std::numeric_limits<std::uint64_t>::max(), "ffffffffffffffffff"}};
    for (const auto& [value, hex] : compact) {
        Bytes bytes;
        qv_clasp_write_compact(bytes, value);
        EXPECT_EQ(qv_clasp_hex_encode(bytes), hex) << value;
    }
    const std::vector<std::pair<std::size_t, std::string>> pushes = {
        {0, "00"},     {1, "01"},       {75, "4b"},         {76, "4c4c"},
        {255, "4cff"}, {256, "4d0001"}, {0xffff, "4dffff"}, {0x10000, "4e00000100"}};
    for (const auto& [size, hex] : pushes) {
        const Bytes data(size, 0xee);
        Bytes bytes;
        qv_clasp_write_push(bytes, data.data(), data.size());
        ASSERT_EQ(bytes.size(), hex.size() / 2 + size);
        EXPECT_EQ(qv_clasp_hex_encode(bytes.data(), hex.size() / 2), hex) << size;
        EXPECT_TRUE(std::equal(data.begin(), data.end(), bytes.end() - static_cast<std::ptrdiff_t>(size)));
    }
}

TEST(TransactionFee, IsTheSizeAtATenthOfASatoshiRoundedUp) {
    const std::map<std::int64_t, std::int64_t> fees = {{-5, 1},
                                                       {0, 1},
                                                       {1, 1},
                                                       {10, 1},
                                                       {11, 2},
                                                       {192, 20},
                                                       {226, 23},
                                                       {1000, 100},
                                                       {1001, 101},
                                                       {1009, 101},
                                                       {1010, 101},
                                                       {1011, 102},
                                                       {MOST, 922337203685477581}};
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

TEST(TransactionBytes, ATxidThatIsNoHashGivesNothing) {
    for (const std::string& txid :
         {std::string(), std::string(63, 'a'), std::string(64, 'g'), std::string(66, 'a')}) {
        std::vector<QvClaspCoin> coins = coins_of({1, 2});
        coins[1].txid = txid;
        EXPECT_TRUE(qv_clasp_serialize_tx(coins, {}, true).empty());
        EXPECT_TRUE(qv_clasp_serialize_tx(coins, {}, false).empty());
        const sandbox::KeyPair key = sandbox::key_from_priv(Bytes(32, 0x11));
        EXPECT_FALSE(qv_clasp_sign_input(coins[1], coins, {}, key.hash160, qv_clasp_hex_encode(key.priv),
                                         qv_clasp_hex_encode(key.pub)));
        EXPECT_TRUE(coins[1].script_sig.empty());
    }
}

// Real transactions of the fixed shape come out of the writer as they went into the chain.
TEST(TransactionBytes, RealTransactionsComeBackByteForByte) {
    int compared = 0;
    const Json document = test_data("ordinals_raw_transactions.json");
    for (const Json& row : document["transactions"]) {
        const Bytes raw = qv_clasp_hex_decode(json_text(row, "rawTx"));
        EXPECT_EQ(qv_clasp_txid(raw), json_text(row, "txid"));
        sandbox::Transaction tx;
        ASSERT_TRUE(sandbox::parse_transaction(raw, tx));
        const bool final_inputs = std::all_of(tx.inputs.begin(), tx.inputs.end(), [](const auto& input) {
            return input.sequence == 0xffffffffU;
        });
        if (tx.version != 1 || tx.lock_time != 0 || !final_inputs) continue;
        std::vector<QvClaspCoin> coins;
        std::vector<QvClaspTxOutput> outputs;
        take_apart(tx, coins, outputs);
        EXPECT_EQ(qv_clasp_serialize_tx(coins, outputs, false), raw) << json_text(row, "txid");
        ++compared;
    }
    EXPECT_EQ(compared, 10);
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
        const Bytes der(alone.script_sig.begin() + 1,
                        alone.script_sig.begin() + 1 + static_cast<std::ptrdiff_t>(der_size));
        EXPECT_TRUE(sandbox::verify_der(pub, digest, der));
        EXPECT_TRUE(
            sandbox::verify_der(pub, digest, qv_clasp_hex_decode(json_text(row, "signatureDerLowS"))));
    }
}

// The tables vary what is fixed here: version, sequences, lock time and the upper bytes of the hash type.
// Those fields are put in from the row; the hashes of outpoints and outputs, the outpoint, the script code
// and the order are ours. Rows that sign fewer outpoints or outputs have another shape and are left out.
TEST(Sighash, MatchesTheTablesInAllThatIsNotFixed) {
    const std::vector<std::tuple<std::string, std::string, int>> tables = {
        {"sighash_bitcoin_sv.json", "expectedRegular", 40}, {"sighash_sdk_bip143.json", "expected", 40}};
    for (const auto& [file, expected_key, least] : tables) {
        int compared = 0;
        const Json document = test_data(file);
        for (const Json& row : document["rows"]) {
            const auto hash_type = static_cast<std::uint32_t>(json_int(row, "hashType"));
            const std::uint32_t base_type = hash_type & 0x1fU;
            if (base_type == 2 || base_type == 3 || (hash_type & 0x80U) != 0) continue;
            const Bytes raw = qv_clasp_hex_decode(json_text(row, "tx"));
            sandbox::Transaction tx;
            ASSERT_TRUE(sandbox::parse_transaction(raw, tx));
            std::vector<QvClaspCoin> coins;
            std::vector<QvClaspTxOutput> outputs;
            take_apart(tx, coins, outputs);
            const auto index = static_cast<std::size_t>(json_int(row, "inputIndex"));
            coins[index].prev_script = qv_clasp_hex_decode(json_text(row, "script"));
            // An empty script code would mean the P2PKH script here.
            if (coins[index].prev_script.empty()) continue;

            SighashMidstate midstate = sighash_midstate(coins, outputs);
            Bytes sequences;
            for (const sandbox::TxInput& input : tx.inputs) qv_clasp_write_u32(sequences, input.sequence);
            midstate.sequence = double_sha256(sequences);
            Bytes preimage = sighash_preimage(coins[index], midstate, DEST);
            const auto put = [&](std::size_t at, std::uint32_t value) {
                Bytes bytes;
                qv_clasp_write_u32(bytes, value);
                std::copy(bytes.begin(), bytes.end(), preimage.begin() + static_cast<std::ptrdiff_t>(at));
            };
            put(0, tx.version);
            put(preimage.size() - 44, tx.inputs[index].sequence);
            put(preimage.size() - 8, tx.lock_time);
            put(preimage.size() - 4, hash_type);
            EXPECT_EQ(qv_clasp_txid(preimage), json_text(row, expected_key)) << json_text(row, "tx");
            ++compared;
        }
        EXPECT_GE(compared, least) << file;
    }
}

TEST(Signatures, AThousandAreLowSAndVerify) {
    const sandbox::KeyPair key = sandbox::key_from_priv(Bytes(32, 0x42));
    std::vector<QvClaspCoin> coins;
    for (std::size_t i = 0; i < 1000; ++i) {
        coins.push_back(coin_of(i, 1000 + static_cast<std::int64_t>(i)));
        coins.back().hash160 = key.hash160;
    }
    const std::vector<QvClaspTxOutput> outputs = {{5000, qv_clasp_p2pkh_script(DEST)}};
    ASSERT_TRUE(sign_all_inputs(coins, outputs, qv_clasp_hex_encode(key.priv), qv_clasp_hex_encode(key.pub)));
    const SighashMidstate midstate = sighash_midstate(coins, outputs);
    for (const QvClaspCoin& coin : coins) {
        const auto end = coin.script_sig.begin() + coin.script_sig[0];
        const Bytes der(coin.script_sig.begin() + 1, end);
        // The check refuses a high S.
        EXPECT_TRUE(
            sandbox::verify_der(key.pub, double_sha256(sighash_preimage(coin, midstate, coin.hash160)), der));
    }
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

TEST(BuildTransaction, PassesOverCandidatesWithoutATxid) {
    std::vector<QvClaspCoin> coins = coins_of({50'000, 60'000});
    coins[0].txid = "not a hash";
    const Built built = build(std::move(coins), 1000);
    ASSERT_TRUE(built.ok);
    ASSERT_EQ(built.coins.size(), 1U);
    EXPECT_EQ(built.coins[0].sats, 60'000);
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

TEST(BuildTransaction, EqualsTheSelectionThatWritesEverythingOut) {
    std::mt19937 random(20240607);
    const auto upto = [&](std::int64_t most) {
        return std::uniform_int_distribution<std::int64_t>(0, most)(random);
    };
    for (int round = 0; round < 400; ++round) {
        std::vector<QvClaspCoin> candidates;
        // Coins below the price of their own input make the walk go back and forth.
        const std::int64_t largest = round % 2 == 0 ? 40 : 3000;
        for (std::int64_t i = upto(40); i >= 0; --i)
            candidates.push_back(coin_of(candidates.size(), upto(largest)));
        const std::int64_t sats = 1 + upto(round % 2 == 0 ? 300 : 30'000);
        const std::string memo(static_cast<std::size_t>(round % 5 == 0 ? upto(300) : 0), 'm');
        const Built expected = build_by_writing_out(candidates, sats, memo);
        const Built built = build(candidates, sats, memo);
        ASSERT_EQ(built.ok, expected.ok) << round;
        ASSERT_EQ(built.fee, expected.fee) << round;
        ASSERT_EQ(qv_clasp_serialize_tx(built.coins, built.outputs, true),
                  qv_clasp_serialize_tx(expected.coins, expected.outputs, true))
            << round;
    }
}
