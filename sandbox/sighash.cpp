#include "sandbox/sighash.h"

#include "sandbox/byte_io.h"

namespace sandbox {

namespace {

void put_outpoint(Bytes& out, const TxInput& input) {
    put_txid(out, input.txid);
    put_u32(out, input.vout);
}

void put_hash(Bytes& out, const Hash256& hash) {
    out.insert(out.end(), hash.begin(), hash.end());
}

}  // namespace

SighashParts sighash_parts(const Transaction& tx) {
    Bytes prevouts;
    Bytes sequences;
    Bytes outputs;
    for (const TxInput& input : tx.inputs) {
        put_outpoint(prevouts, input);
        put_u32(sequences, input.sequence);
    }
    for (const TxOutput& output : tx.outputs) {
        put_u64(outputs, static_cast<std::uint64_t>(output.sats));
        put_compact(outputs, output.script.size());
        put_bytes(outputs, output.script);
    }
    return {sha256d(prevouts), sha256d(sequences), sha256d(outputs)};
}

Hash256 signature_hash(const Transaction& tx, const SighashParts& parts, std::size_t input,
                       const Bytes& script_code, std::int64_t sats, std::uint32_t hash_type) {
    Bytes preimage;
    put_u32(preimage, tx.version);
    put_hash(preimage, parts.prevouts);
    put_hash(preimage, parts.sequences);
    put_outpoint(preimage, tx.inputs[input]);
    put_compact(preimage, script_code.size());
    put_bytes(preimage, script_code);
    put_u64(preimage, static_cast<std::uint64_t>(sats));
    put_u32(preimage, tx.inputs[input].sequence);
    put_hash(preimage, parts.outputs);
    put_u32(preimage, tx.lock_time);
    put_u32(preimage, hash_type);
    return sha256d(preimage);
}

void add_input(Transaction& tx, const Coin& coin) {
    TxInput input;
    input.txid = coin.txid;
    input.vout = coin.vout;
    tx.inputs.push_back(input);
}

void sign_transaction(Transaction& tx, const std::vector<SpentCoin>& spent) {
    const SighashParts parts = sighash_parts(tx);
    for (std::size_t i = 0; i < tx.inputs.size(); ++i) {
        const Coin& coin = spent.at(i).coin;
        Bytes signature = sign_der(spent[i].key, signature_hash(tx, parts, i, coin.script, coin.sats));
        signature.push_back(static_cast<std::uint8_t>(SIGHASH_ALL_FORKID));
        tx.inputs[i].script_sig.clear();
        put_push(tx.inputs[i].script_sig, signature);
        put_push(tx.inputs[i].script_sig, spent[i].key.pub);
    }
    tx.raw = serialize_transaction(tx);
    tx.txid = txid_text(sha256d(tx.raw));
}

}  // namespace sandbox
