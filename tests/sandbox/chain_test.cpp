#include "sandbox/chain.h"

#include <gtest/gtest.h>

#include <functional>

#include "base/hex.h"
#include "sandbox/byte_io.h"
#include "sandbox/keys.h"
#include "sandbox/scripts.h"
#include "sandbox/sighash.h"
#include "sandbox/spend_check.h"

namespace {

using namespace sandbox;

constexpr std::int64_t COIN_SATS = 100'000;

// A chain with coins of one key, and an honest payment from them that a case spoils in one place.
struct Bench {
    Chain chain;
    KeyPair key = key_from_priv(Bytes(32, 1));
    KeyPair stranger = key_from_priv(Bytes(32, 2));
    std::vector<SpentCoin> spent;
    Transaction tx;
    Bytes raw;  // what is handed in; empty: the payment, signed

    Bench() {
        coin(p2pkh_script(key.hash160));
        pay(COIN_SATS - 1'000);
    }

    // Makes a further coin and lets the payment spend it too.
    SpentCoin& coin(const Bytes& script, std::int64_t sats = COIN_SATS) {
        spent.push_back({{chain.fund({{sats, script}}), 0, sats, script, 0}, key});
        add_input(tx, spent.back().coin);
        return spent.back();
    }
    SpentCoin& token(Layout layout) {
        return coin(token_script(key.hash160, transfer_body(std::string(64, 'a') + "_0", "5"), layout), 1);
    }
    void pay(std::int64_t sats) { tx.outputs.push_back({sats, p2pkh_script(stranger.hash160)}); }
    Bytes& sign() {
        sign_transaction(tx, spent);
        return raw = tx.raw;
    }
    Bytes& without_signing() { return raw = serialize_transaction(tx); }
    // The honest payment goes first; what is judged is another one from the same coin.
    void after_a_rival() {
        chain.submit(sign());
        raw.clear();
        tx.outputs[0].sats -= 1;
    }
    // The payment with an unlocking script made of these parts.
    void unlock_with(const std::vector<Bytes>& pushes) {
        tx.inputs[0].script_sig.clear();
        for (const Bytes& push : pushes) put_push(tx.inputs[0].script_sig, push);
        without_signing();
    }
    Bytes signature(std::uint32_t type = SIGHASH_ALL_FORKID) {
        const Coin& coin = spent[0].coin;
        Bytes made = sign_der(key, signature_hash(tx, sighash_parts(tx), 0, coin.script, coin.sats, type));
        made.push_back(static_cast<std::uint8_t>(type));
        return made;
    }
    // The payment with a fee that lies `above` the least one.
    void with_fee(std::int64_t above) {
        for (std::int64_t fee = 1; fee < 200; ++fee) {
            tx.outputs[0].sats = COIN_SATS - fee;
            sign();
            if (fee == static_cast<std::int64_t>(raw.size()) * chain.fee_rate / 1000 + above) return;
        }
        ADD_FAILURE() << "no such fee";
    }
};

Bytes high_s(const Bytes& signature) {
    const std::size_t r_size = signature[3];
    const std::size_t s_size = signature[5 + r_size];
    const auto s_begin = signature.begin() + static_cast<std::ptrdiff_t>(6 + r_size);
    Bytes s(s_begin, s_begin + static_cast<std::ptrdiff_t>(s_size));
    s.insert(s.begin(), 33 - s.size(), 0);
    const Bytes order =
        qv_clasp_hex_decode("00fffffffffffffffffffffffffffffffebaaedce6af48a03bbfd25e8cd0364141");
    int borrow = 0;
    for (std::size_t i = 33; i-- > 0;) {
        const int digit = order[i] - s[i] - borrow;
        borrow = digit < 0 ? 1 : 0;
        s[i] = static_cast<std::uint8_t>(digit);
    }
    Bytes der(signature.begin(), s_begin - 2);
    put_bytes(der, {0x02, 33});
    put_bytes(der, s);
    der[1] = static_cast<std::uint8_t>(der.size() - 2);
    der.push_back(0x41);
    return der;
}

struct Case {
    const char* name;
    std::string reason;
    std::function<void(Bench&)> spoil;
};

void expect_verdicts(const std::vector<Case>& cases) {
    for (const Case& row : cases) {
        Bench bench;
        row.spoil(bench);
        if (bench.raw.empty()) bench.sign();
        const std::size_t before = bench.chain.all().size();
        const Verdict verdict = bench.chain.submit(bench.raw);
        EXPECT_EQ(verdict.reason, row.reason) << row.name;
        EXPECT_EQ(verdict.accepted, row.reason.empty()) << row.name;
        EXPECT_EQ(bench.chain.all().size(), before + (row.reason.empty() ? 1 : 0)) << row.name;
    }
}

TEST(SandboxChain, HonestPaymentsAreTaken) {
    expect_verdicts({
        {"a plain coin", "", [](Bench&) {}},
        {"a token, owner first", "", [](Bench& b) { b.token(Layout::OwnerFirst); }},
        {"a token, envelope first", "", [](Bench& b) { b.token(Layout::EnvelopeFirst); }},
        {"the least fee", "", [](Bench& b) { b.with_fee(0); }},
        {"a lock time with final inputs", "", [](Bench& b) { b.tx.lock_time = 900'000; }},
        {"an output that has no key", "",
         [](Bench& b) {
             b.tx.outputs.push_back({1, {0x51}});
         }},
    });
}

TEST(SandboxChain, MoneyThatDoesNotAddUpIsRefused) {
    expect_verdicts({
        {"a satoshi more than came in", "bad-txns-in-belowout",
         [](Bench& b) { b.tx.outputs[0].sats = COIN_SATS + 1; }},
        {"no fee", "mempool min fee not met", [](Bench& b) { b.tx.outputs[0].sats = COIN_SATS; }},
        {"a satoshi under the least fee", "mempool min fee not met", [](Bench& b) { b.with_fee(-1); }},
        {"a negative output", "bad-txns-vout-negative", [](Bench& b) { b.pay(-1); }},
        {"an output beyond all money", "bad-txns-vout-toolarge", [](Bench& b) { b.pay(MAX_SATS + 1); }},
        {"outputs beyond all money", "bad-txns-txouttotal-toolarge", [](Bench& b) { b.pay(MAX_SATS); }},
        {"an output of nothing for a key", "dust", [](Bench& b) { b.pay(0); }},
    });
}

TEST(SandboxChain, CoinsThatAreNotThereAreRefused) {
    expect_verdicts({
        {"an unknown transaction", "Missing inputs",
         [](Bench& b) { b.tx.inputs[0].txid = std::string(64, 'a'); }},
        {"an output that it does not have", "Missing inputs", [](Bench& b) { b.tx.inputs[0].vout = 1; }},
        {"spent in a block", "Missing inputs",
         [](Bench& b) {
             b.after_a_rival();
             b.chain.mine();
         }},
        {"spent a moment ago", "txn-mempool-conflict", [](Bench& b) { b.after_a_rival(); }},
        {"the same again", "txn-already-known", [](Bench& b) { b.chain.submit(b.sign()); }},
    });
}

TEST(SandboxChain, SignaturesThatDoNotHoldAreRefused) {
    const auto fault = [](const char* why) {
        return std::string("mandatory-script-verify-flag-failed (") + why + ")";
    };
    const std::string null_fail = fault("Signature must be zero for failed CHECK(MULTI)SIG operation");
    const std::string bad_type = fault("Signature hash type missing or not understood");
    const std::string small_stack = fault("Operation not valid with the current stack size");
    const auto of_type = [](std::uint32_t type) {
        return [type](Bench& b) { b.unlock_with({b.signature(type), b.key.pub}); };
    };
    expect_verdicts({
        {"an output changed after signing", null_fail,
         [](Bench& b) {
             b.sign();
             b.tx.outputs[0].sats -= 1;
             b.without_signing();
         }},
        {"signed for another amount", null_fail, [](Bench& b) { b.spent[0].coin.sats += 1; }},
        {"a token signed over its lock alone", null_fail,
         [](Bench& b) { b.token(Layout::OwnerFirst).coin.script = p2pkh_script(b.key.hash160); }},
        {"the second of two inputs", null_fail,
         [](Bench& b) { b.coin(p2pkh_script(b.key.hash160)).coin.sats -= 1; }},
        {"another key", fault("Script failed an OP_EQUALVERIFY operation"),
         [](Bench& b) { b.spent[0].key = b.stranger; }},
        {"another key's signature", null_fail,
         [](Bench& b) {
             const Bytes own_pub = b.key.pub;
             b.key = b.stranger;
             b.unlock_with({b.signature(), own_pub});
         }},
        {"no fork flag", fault("Signature must use SIGHASH_FORKID"), of_type(0x01)},
        {"none of the outputs", bad_type, of_type(0x42)},
        {"one of the outputs", bad_type, of_type(0x43)},
        {"anyone can pay", bad_type, of_type(0xc1)},
        {"no hash type", fault("Non-canonical DER signature"),
         [](Bench& b) {
             Bytes bare = b.signature();
             bare.pop_back();
             b.unlock_with({bare, b.key.pub});
         }},
        {"high s", fault("Non-canonical signature: S value is unnecessarily high"),
         [](Bench& b) {
             b.unlock_with({high_s(b.signature()), b.key.pub});
         }},
        {"an empty signature",
         fault("Script evaluated without error but finished with a false/empty top stack element"),
         [](Bench& b) {
             b.unlock_with({{}, b.key.pub});
         }},
        {"a push too many", "non-mandatory-script-verify-flag (Extra items left on stack after execution)",
         [](Bench& b) {
             b.unlock_with({b.key.pub, b.signature(), b.key.pub});
         }},
        {"a push too few", small_stack, [](Bench& b) { b.unlock_with({b.signature()}); }},
        {"not signed at all", small_stack, [](Bench& b) { b.without_signing(); }},
        {"an operation among the pushes", fault("Only non-push operators allowed in signatures"),
         [](Bench& b) {
             b.sign();
             b.tx.inputs[0].script_sig.push_back(0x61);
             b.without_signing();
         }},
        {"a longer form of a push", "non-mandatory-script-verify-flag (Data push larger than necessary)",
         [](Bench& b) {
             b.sign();
             b.tx.inputs[0].script_sig.insert(b.tx.inputs[0].script_sig.begin(), 76);
             b.without_signing();
         }},
        {"a script of another kind", "bad-txns-nonstandard-inputs", [](Bench& b) { b.coin({0x51}); }},
    });
}

}  // namespace
