#include "sandbox/chain.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>

#include "base/hex.h"
#include "sandbox/byte_io.h"
#include "sandbox/keys.h"
#include "sandbox/scripts.h"
#include "sandbox/sighash.h"
#include "sandbox/spend_check.h"

namespace {

using namespace sandbox;

constexpr std::int64_t COIN_SATS = 100'000;
const std::string SIGNATURE_FAULT = "mandatory-script-verify-flag-failed (";

// A chain with coins of one key, and an honest payment from them that a case spoils in one place.
struct Bench {
    Chain chain;
    KeyPair key = key_from_priv(Bytes(32, 1));
    KeyPair stranger = key_from_priv(Bytes(32, 2));
    std::vector<SpentCoin> spent;
    Transaction tx;

    Bench() {
        coin(p2pkh_script(key.hash160));
        pay(COIN_SATS - 1'000);
    }

    // Makes a further coin and lets the payment spend it too.
    void coin(const Bytes& script, std::int64_t sats = COIN_SATS) {
        const std::string txid = chain.fund({{sats, script}});
        spent.push_back({{txid, 0, sats, script, 0}, key});
        add_input(tx, spent.back().coin);
    }
    void pay(std::int64_t sats) { tx.outputs.push_back({sats, p2pkh_script(stranger.hash160)}); }
    Bytes sign() {
        sign_transaction(tx, spent);
        return tx.raw;
    }
    // The payment with an unlocking script made of these parts.
    Bytes unlock_with(const std::vector<Bytes>& pushes) {
        tx.inputs[0].script_sig.clear();
        for (const Bytes& push : pushes) put_push(tx.inputs[0].script_sig, push);
        return serialize_transaction(tx);
    }
    Bytes signature(std::uint32_t type = SIGHASH_ALL_FORKID) {
        const Coin& spent_coin = spent[0].coin;
        const Hash256 digest =
            signature_hash(tx, sighash_parts(tx), 0, spent_coin.script, spent_coin.sats, type);
        Bytes made = sign_der(key, digest);
        made.push_back(static_cast<std::uint8_t>(type));
        return made;
    }
    // The payment with a fee that lies `above` the least one.
    Bytes with_fee(std::int64_t above) {
        for (std::int64_t fee = 1; fee < 200; ++fee) {
            tx.outputs[0].sats = COIN_SATS - fee;
            sign();
            if (fee == static_cast<std::int64_t>(tx.raw.size()) * chain.fee_rate / 1000 + above)
                return tx.raw;
        }
        return {};
    }
};

Bytes token_lock(const KeyPair& key, Layout layout) {
    return token_script(key.hash160, transfer_body(std::string(64, 'a') + "_0", "5"), layout);
}

Bytes high_s(const Bytes& signature) {
    const std::size_t r_size = signature[3];
    const std::size_t s_size = signature[5 + r_size];
    const Bytes order =
        qv_clasp_hex_decode("00fffffffffffffffffffffffffffffffebaaedce6af48a03bbfd25e8cd0364141");
    Bytes s(signature.begin() + static_cast<std::ptrdiff_t>(6 + r_size),
            signature.begin() + static_cast<std::ptrdiff_t>(6 + r_size + s_size));
    s.insert(s.begin(), 33 - s.size(), 0);
    int borrow = 0;
    for (std::size_t i = 33; i-- > 0;) {
        int digit = order[i] - s[i] - borrow;
        borrow = digit < 0 ? 1 : 0;
        if (digit < 0) digit += 256;
        s[i] = static_cast<std::uint8_t>(digit);
    }
    Bytes der(signature.begin(), signature.begin() + static_cast<std::ptrdiff_t>(4 + r_size));
    der.push_back(0x02);
    der.push_back(33);
    put_bytes(der, s);
    der[1] = static_cast<std::uint8_t>(der.size() - 2);
    der.push_back(0x41);
    return der;
}

struct Case {
    const char* name;
    std::string reason;
    std::function<Bytes(Bench&)> raw;
};

void expect_verdicts(const std::vector<Case>& cases) {
    for (const Case& row : cases) {
        Bench bench;
        const Bytes raw = row.raw(bench);
        ASSERT_FALSE(raw.empty()) << row.name;
        const std::size_t before = bench.chain.all().size();
        const Verdict verdict = bench.chain.submit(raw);
        EXPECT_EQ(verdict.reason, row.reason) << row.name;
        EXPECT_EQ(verdict.accepted, row.reason.empty()) << row.name;
        EXPECT_EQ(bench.chain.all().size(), before + (row.reason.empty() ? 1 : 0)) << row.name;
    }
}

TEST(SandboxChain, HonestPaymentsAreTaken) {
    expect_verdicts({
        {"a plain coin", "", [](Bench& b) { return b.sign(); }},
        {"a token, owner first", "",
         [](Bench& b) {
             b.coin(token_lock(b.key, Layout::OwnerFirst), 1);
             return b.sign();
         }},
        {"a token, envelope first", "",
         [](Bench& b) {
             b.coin(token_lock(b.key, Layout::EnvelopeFirst), 1);
             return b.sign();
         }},
        {"the least fee", "", [](Bench& b) { return b.with_fee(0); }},
        {"a data output of nothing", "",
         [](Bench& b) {
             b.tx.outputs.push_back({0, {0x00, 0x6a, 0x01, 0x41}});
             return b.sign();
         }},
        {"a lock time with final inputs", "",
         [](Bench& b) {
             b.tx.lock_time = 900'000;
             return b.sign();
         }},
        {"a lock time that has passed", "",
         [](Bench& b) {
             b.tx.lock_time = 800'000;
             b.tx.inputs[0].sequence = 0;
             return b.sign();
         }},
        {"version 2", "",
         [](Bench& b) {
             b.tx.version = 2;
             return b.sign();
         }},
        {"an output that has no key", "",
         [](Bench& b) {
             b.tx.outputs.push_back({1, {0x51}});
             return b.sign();
         }},
    });
}

TEST(SandboxChain, BytesAndFormsThatAreNoTransactionAreRefused) {
    expect_verdicts({
        {"cut short", "TX decode failed",
         [](Bench& b) {
             const Bytes raw = b.sign();
             return Bytes(raw.begin(), raw.end() - 1);
         }},
        {"a byte too many", "TX decode failed",
         [](Bench& b) {
             Bytes raw = b.sign();
             raw.push_back(0);
             return raw;
         }},
        {"a count in a longer form", "TX decode failed",
         [](Bench& b) {
             Bytes raw = b.sign();
             raw[4] = 253;
             raw.insert(raw.begin() + 5, {1, 0});
             return raw;
         }},
        {"a count beyond the bytes", "TX decode failed",
         [](Bench&) { return Bytes{1, 0, 0, 0, 255, 255, 255, 255, 255, 255, 255, 255, 255}; }},
        {"no inputs", "bad-txns-vin-empty",
         [](Bench& b) {
             b.tx.inputs.clear();
             return serialize_transaction(b.tx);
         }},
        {"no outputs", "bad-txns-vout-empty",
         [](Bench& b) {
             b.tx.outputs.clear();
             return b.sign();
         }},
        {"money out of nothing", "coinbase",
         [](Bench& b) {
             b.tx.coinbase = {1, 2, 3};
             return serialize_transaction(b.tx);
         }},
        {"an input that is none", "bad-txns-prevout-null",
         [](Bench& b) {
             b.tx.inputs[0].txid = std::string(64, '0');
             return b.sign();
         }},
        {"an unknown version", "version",
         [](Bench& b) {
             b.tx.version = 3;
             return b.sign();
         }},
        {"a lock time to come", "non-final",
         [](Bench& b) {
             b.tx.lock_time = 900'000;
             b.tx.inputs[0].sequence = 0;
             return b.sign();
         }},
        {"too many bytes", "tx-size",
         [](Bench& b) {
             Bytes data(MAX_TRANSACTION_SIZE, 0x6a);
             data[0] = 0;
             b.tx.outputs.push_back({0, data});
             return b.sign();
         }},
        {"one coin twice", "bad-txns-inputs-duplicate",
         [](Bench& b) {
             b.spent.push_back(b.spent[0]);
             add_input(b.tx, b.spent[0].coin);
             return b.sign();
         }},
    });
}

TEST(SandboxChain, MoneyThatDoesNotAddUpIsRefused) {
    expect_verdicts({
        {"a satoshi more than came in", "bad-txns-in-belowout",
         [](Bench& b) {
             b.tx.outputs[0].sats = COIN_SATS + 1;
             return b.sign();
         }},
        {"no fee", "mempool min fee not met",
         [](Bench& b) {
             b.tx.outputs[0].sats = COIN_SATS;
             return b.sign();
         }},
        {"a satoshi less than the least fee", "mempool min fee not met",
         [](Bench& b) { return b.with_fee(-1); }},
        {"a negative output", "bad-txns-vout-negative",
         [](Bench& b) {
             b.pay(-1);
             return b.sign();
         }},
        {"an output beyond all money", "bad-txns-vout-toolarge",
         [](Bench& b) {
             b.pay(MAX_SATS + 1);
             return b.sign();
         }},
        {"outputs beyond all money", "bad-txns-txouttotal-toolarge",
         [](Bench& b) {
             b.pay(MAX_SATS);
             return b.sign();
         }},
        {"an output of nothing for a key", "dust",
         [](Bench& b) {
             b.pay(0);
             return b.sign();
         }},
    });
}

TEST(SandboxChain, CoinsThatAreNotThereAreRefused) {
    expect_verdicts({
        {"an unknown transaction", "Missing inputs",
         [](Bench& b) {
             b.tx.inputs[0].txid = std::string(64, 'a');
             return b.sign();
         }},
        {"an output that it does not have", "Missing inputs",
         [](Bench& b) {
             b.tx.inputs[0].vout = 1;
             return b.sign();
         }},
        {"spent in a block", "Missing inputs",
         [](Bench& b) {
             b.chain.submit(b.sign());
             b.chain.mine();
             b.tx.outputs[0].sats -= 1;
             return b.sign();
         }},
        {"spent a moment ago", "txn-mempool-conflict",
         [](Bench& b) {
             b.chain.submit(b.sign());
             b.tx.outputs[0].sats -= 1;
             return b.sign();
         }},
        {"the same again", "txn-already-known",
         [](Bench& b) {
             b.chain.submit(b.sign());
             return b.tx.raw;
         }},
    });
}

TEST(SandboxChain, SignaturesThatDoNotHoldAreRefused) {
    const std::string null_fail =
        SIGNATURE_FAULT + "Signature must be zero for failed CHECK(MULTI)SIG operation)";
    const std::string bad_type = SIGNATURE_FAULT + "Signature hash type missing or not understood)";
    expect_verdicts({
        {"an output changed after signing", null_fail,
         [](Bench& b) {
             b.sign();
             b.tx.outputs[0].sats -= 1;
             return serialize_transaction(b.tx);
         }},
        {"signed for another amount", null_fail,
         [](Bench& b) {
             b.spent[0].coin.sats += 1;
             return b.sign();
         }},
        {"a token signed over its lock alone", null_fail,
         [](Bench& b) {
             b.coin(token_lock(b.key, Layout::OwnerFirst), 1);
             b.spent[1].coin.script = p2pkh_script(b.key.hash160);
             return b.sign();
         }},
        {"another key", SIGNATURE_FAULT + "Script failed an OP_EQUALVERIFY operation)",
         [](Bench& b) {
             b.spent[0].key = b.stranger;
             return b.sign();
         }},
        {"another key's signature", null_fail,
         [](Bench& b) {
             const Bytes own_pub = b.key.pub;
             b.key = b.stranger;
             return b.unlock_with({b.signature(), own_pub});
         }},
        {"no fork flag", SIGNATURE_FAULT + "Signature must use SIGHASH_FORKID)",
         [](Bench& b) {
             return b.unlock_with({b.signature(0x01), b.key.pub});
         }},
        {"none of the outputs", bad_type,
         [](Bench& b) {
             return b.unlock_with({b.signature(0x42), b.key.pub});
         }},
        {"one of the outputs", bad_type,
         [](Bench& b) {
             return b.unlock_with({b.signature(0x43), b.key.pub});
         }},
        {"anyone can pay", bad_type,
         [](Bench& b) {
             return b.unlock_with({b.signature(0xc1), b.key.pub});
         }},
        {"no hash type", SIGNATURE_FAULT + "Non-canonical DER signature)",
         [](Bench& b) {
             Bytes bare = b.signature();
             bare.pop_back();
             return b.unlock_with({bare, b.key.pub});
         }},
        {"high s", SIGNATURE_FAULT + "Non-canonical signature: S value is unnecessarily high)",
         [](Bench& b) {
             return b.unlock_with({high_s(b.signature()), b.key.pub});
         }},
        {"an empty signature",
         SIGNATURE_FAULT +
             "Script evaluated without error but finished with a false/empty top stack element)",
         [](Bench& b) {
             return b.unlock_with({{}, b.key.pub});
         }},
        {"a push too many", "non-mandatory-script-verify-flag (Extra items left on stack after execution)",
         [](Bench& b) {
             return b.unlock_with({b.key.pub, b.signature(), b.key.pub});
         }},
        {"a push too few", SIGNATURE_FAULT + "Operation not valid with the current stack size)",
         [](Bench& b) { return b.unlock_with({b.signature()}); }},
        {"not signed at all", SIGNATURE_FAULT + "Operation not valid with the current stack size)",
         [](Bench& b) { return b.unlock_with({}); }},
        {"an operation among the pushes", SIGNATURE_FAULT + "Only non-push operators allowed in signatures)",
         [](Bench& b) {
             b.sign();
             b.tx.inputs[0].script_sig.push_back(0x61);
             return serialize_transaction(b.tx);
         }},
        {"a longer form of a push", "non-mandatory-script-verify-flag (Data push larger than necessary)",
         [](Bench& b) {
             b.sign();
             Bytes& script_sig = b.tx.inputs[0].script_sig;
             script_sig.insert(script_sig.begin(), 76);
             return serialize_transaction(b.tx);
         }},
        {"a script of another kind", "bad-txns-nonstandard-inputs",
         [](Bench& b) {
             b.coin({0x51});
             return b.sign();
         }},
        {"the second of two inputs", null_fail,
         [](Bench& b) {
             b.coin(p2pkh_script(b.key.hash160));
             b.spent[1].coin.sats -= 1;
             return b.sign();
         }},
    });
}

TEST(SandboxChain, ChangeCanBeSpentBeforeItIsMinedAndIsForgottenWithItsSource) {
    Bench bench;
    bench.tx.outputs = {{50'000, p2pkh_script(bench.stranger.hash160)},
                        {49'000, p2pkh_script(bench.key.hash160)}};
    bench.sign();
    const Transaction first = bench.tx;
    ASSERT_TRUE(bench.chain.submit(first.raw).accepted);
    Transaction second;
    const Coin change{first.txid, 1, 49'000, first.outputs[1].script, 0};
    add_input(second, change);
    second.outputs = {{48'000, p2pkh_script(bench.stranger.hash160)}};
    sign_transaction(second, {{change, bench.key}});
    ASSERT_TRUE(bench.chain.submit(second.raw).accepted);
    EXPECT_EQ(bench.chain.spender(first.txid, 1), second.txid);
    EXPECT_EQ(bench.chain.unspent(bench.stranger.address).size(), 2U);
    EXPECT_TRUE(bench.chain.unspent(bench.key.address).empty());
    EXPECT_EQ(bench.chain.history(bench.key.address).size(), 3U);

    ASSERT_TRUE(bench.chain.drop(first.txid));
    EXPECT_FALSE(bench.chain.find(first.txid).has_value());
    EXPECT_FALSE(bench.chain.find(second.txid).has_value());
    EXPECT_TRUE(bench.chain.unspent(bench.stranger.address).empty());
    ASSERT_EQ(bench.chain.unspent(bench.key.address).size(), 1U);
    EXPECT_EQ(bench.chain.unspent(bench.key.address)[0].sats, COIN_SATS);
    EXPECT_EQ(bench.chain.history(bench.key.address).size(), 1U);
    EXPECT_EQ(bench.chain.txids().size(), 1U);

    EXPECT_TRUE(bench.chain.submit(first.raw).accepted);
    const int height = bench.chain.mine();
    EXPECT_EQ(bench.chain.find(first.txid)->height, height);
    EXPECT_FALSE(bench.chain.drop(first.txid)) << "what is in a block stays";
    EXPECT_EQ(bench.chain.unspent(bench.key.address)[0].height, height);
}

TEST(SandboxChain, MoneyMadeTwiceAlikeIsTwoTransactions) {
    Chain chain;
    const KeyPair key = key_from_priv(Bytes(32, 1));
    const std::string first = chain.fund({{5, p2pkh_script(key.hash160)}});
    const std::string second = chain.fund({{5, p2pkh_script(key.hash160)}});
    EXPECT_NE(first, second);
    EXPECT_EQ(chain.unspent(key.address).size(), 2U);
    Transaction read;
    ASSERT_TRUE(parse_transaction(chain.find(first)->raw, read));
    EXPECT_EQ(read.txid, first);
    EXPECT_TRUE(read.inputs.empty());
    EXPECT_EQ(serialize_transaction(read), read.raw);
}

TEST(SandboxChain, OfManyRivalsForOneCoinOneWins) {
    Bench bench;
    std::vector<Bytes> rivals;
    for (std::int64_t i = 0; i < 8; ++i) {
        bench.tx.outputs[0].sats = COIN_SATS - 1'000 - i;
        rivals.push_back(bench.sign());
    }
    std::atomic<int> taken{0};
    std::vector<std::thread> threads;
    for (const Bytes& raw : rivals) {
        threads.emplace_back([&] {
            if (bench.chain.submit(raw).accepted) ++taken;
            bench.chain.unspent(bench.stranger.address);
            bench.chain.all();
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(taken, 1);
}

TEST(SandboxChain, RefusalsCarryTheNodesNumbers) {
    EXPECT_EQ(reject_code("txn-already-known"), 257);
    EXPECT_EQ(reject_code("txn-mempool-conflict"), 258);
    EXPECT_EQ(reject_code("mempool min fee not met"), 66);
    EXPECT_EQ(reject_code("dust"), 64);
    EXPECT_EQ(reject_code("bad-txns-in-belowout"), 16);
    EXPECT_EQ(reject_code(SIGNATURE_FAULT + "x)"), 16);
    EXPECT_EQ(reject_code("Missing inputs"), 0);
    EXPECT_EQ(reject_code(""), 0);
}

}  // namespace
