#include "sandbox/spend_check.h"

#include <set>
#include <utility>

#include "sandbox/byte_io.h"
#include "sandbox/keys.h"
#include "sandbox/scripts.h"

namespace sandbox {

namespace {

std::string script_fault(const std::string& words) {
    return "mandatory-script-verify-flag-failed (" + words + ")";
}
std::string policy_fault(const std::string& words) {
    return "non-mandatory-script-verify-flag (" + words + ")";
}

// An output that nobody can spend may be worth nothing.
bool is_data_output(const Bytes& script) {
    return script.size() >= 2 && script[0] == 0x00 && script[1] == 0x6a;
}

std::string check_outputs(const Transaction& tx) {
    std::int64_t total = 0;
    for (const TxOutput& output : tx.outputs) {
        if (output.sats < 0) return "bad-txns-vout-negative";
        if (output.sats > MAX_SATS) return "bad-txns-vout-toolarge";
        total += output.sats;
        if (total > MAX_SATS) return "bad-txns-txouttotal-toolarge";
    }
    for (const TxOutput& output : tx.outputs) {
        if (output.sats == 0 && !is_data_output(output.script)) return "dust";
    }
    return "";
}

std::string check_inputs_form(const Transaction& tx) {
    std::set<std::pair<std::string, std::uint32_t>> seen;
    for (const TxInput& input : tx.inputs) {
        if (!seen.emplace(input.txid, input.vout).second) return "bad-txns-inputs-duplicate";
        if (input.txid == std::string(64, '0')) return "bad-txns-prevout-null";
    }
    return "";
}

// The two pushes of an unlocking script.
std::string split_unlock(const Bytes& script_sig, Bytes& signature, Bytes& pub) {
    std::vector<Bytes> stack;
    std::size_t at = 0;
    while (at < script_sig.size()) {
        ScriptOp op;
        if (!read_op(script_sig, at, op)) return script_fault("Opcode missing or not understood");
        if (!op.is_push) return script_fault("Only non-push operators allowed in signatures");
        if (!op.shortest) return policy_fault("Data push larger than necessary");
        stack.push_back(op.data);
    }
    if (stack.size() < 2) return script_fault("Operation not valid with the current stack size");
    if (stack.size() > 2) return policy_fault("Extra items left on stack after execution");
    signature = stack[0];
    pub = stack[1];
    return "";
}

std::string check_signature_form(const Bytes& der, std::uint8_t hash_type) {
    if (!is_strict_der(der)) return script_fault("Non-canonical DER signature");
    if (!has_low_s(der)) return script_fault("Non-canonical signature: S value is unnecessarily high");
    if ((hash_type & 0x40) == 0) return script_fault("Signature must use SIGHASH_FORKID");
    if (hash_type != SIGHASH_ALL_FORKID) {
        return script_fault("Signature hash type missing or not understood");
    }
    return "";
}

}  // namespace

std::string check_form(const Transaction& tx) {
    if (tx.inputs.empty()) return tx.coinbase.empty() ? "bad-txns-vin-empty" : "coinbase";
    if (tx.outputs.empty()) return "bad-txns-vout-empty";
    if (tx.raw.size() > MAX_TRANSACTION_SIZE) return "tx-size";
    if (tx.version != 1 && tx.version != 2) return "version";
    const std::string outputs = check_outputs(tx);
    return outputs.empty() ? check_inputs_form(tx) : outputs;
}

std::string check_input(const Transaction& tx, const SighashParts& parts, std::size_t input,
                        const TxOutput& spent) {
    const auto owner = script_owner(spent.script);
    if (!owner) return "bad-txns-nonstandard-inputs";
    Bytes signature;
    Bytes pub;
    const std::string unlock = split_unlock(tx.inputs[input].script_sig, signature, pub);
    if (!unlock.empty()) return unlock;
    if (hash160_of(pub) != *owner) return script_fault("Script failed an OP_EQUALVERIFY operation");
    if (signature.empty()) {
        return script_fault(
            "Script evaluated without error but finished with a false/empty top stack element");
    }
    const std::uint8_t hash_type = signature.back();
    signature.pop_back();
    const std::string form = check_signature_form(signature, hash_type);
    if (!form.empty()) return form;
    if (!is_public_key(pub)) return script_fault("Public key is neither compressed or uncompressed");
    const Hash256 digest = signature_hash(tx, parts, input, spent.script, spent.sats, hash_type);
    if (!verify_der(pub, digest, signature)) {
        return script_fault("Signature must be zero for failed CHECK(MULTI)SIG operation");
    }
    return "";
}

int reject_code(const std::string& reason) {
    if (reason == "txn-already-known") return 257;
    if (reason == "txn-mempool-conflict") return 258;
    if (reason == "mempool min fee not met") return 66;
    if (reason == "dust" || reason == "version" || reason == "tx-size" ||
        reason == "bad-txns-nonstandard-inputs" || reason == "non-final" ||
        reason.starts_with("non-mandatory")) {
        return 64;
    }
    if (reason.starts_with("mandatory") || reason.starts_with("bad-txns") || reason == "coinbase") return 16;
    return 0;
}

}  // namespace sandbox
