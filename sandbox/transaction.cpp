// The bytes of a transaction, read and written.
#include "base/hex.h"
#include "sandbox/byte_io.h"
#include "sandbox/chain.h"
#include "sandbox/keys.h"

namespace sandbox {

namespace {

constexpr std::uint32_t NO_OUTPUT = 0xffffffffU;
const std::string NO_TXID(64, '0');

TxInput read_input(ByteReader& reader) {
    TxInput input;
    Bytes txid = reader.take(32);
    input.txid = qv_clasp_hex_encode(Bytes(txid.rbegin(), txid.rend()));
    input.vout = static_cast<std::uint32_t>(reader.number(4));
    input.script_sig = reader.take(reader.compact());
    input.sequence = static_cast<std::uint32_t>(reader.number(4));
    return input;
}

TxOutput read_output(ByteReader& reader) {
    TxOutput output;
    output.sats = static_cast<std::int64_t>(reader.number(8));
    output.script = reader.take(reader.compact());
    return output;
}

void put_input(Bytes& out, const TxInput& input) {
    put_txid(out, input.txid);
    put_u32(out, input.vout);
    put_compact(out, input.script_sig.size());
    put_bytes(out, input.script_sig);
    put_u32(out, input.sequence);
}

void take_coinbase(Transaction& tx) {
    if (tx.inputs.size() != 1 || tx.inputs[0].txid != NO_TXID || tx.inputs[0].vout != NO_OUTPUT) return;
    if (tx.inputs[0].script_sig.empty() || tx.inputs[0].sequence != NO_OUTPUT) return;
    tx.coinbase = tx.inputs[0].script_sig;
    tx.inputs.clear();
}

}  // namespace

bool parse_transaction(const Bytes& raw, Transaction& tx_out) {
    ByteReader reader{raw};
    tx_out = {};
    tx_out.version = static_cast<std::uint32_t>(reader.number(4));
    const std::uint64_t input_count = reader.compact();
    for (std::uint64_t i = 0; i < input_count && reader.ok; ++i) tx_out.inputs.push_back(read_input(reader));
    const std::uint64_t output_count = reader.compact();
    for (std::uint64_t i = 0; i < output_count && reader.ok; ++i)
        tx_out.outputs.push_back(read_output(reader));
    tx_out.lock_time = static_cast<std::uint32_t>(reader.number(4));
    if (!reader.ok || !reader.at_end()) {
        tx_out = {};
        return false;
    }
    take_coinbase(tx_out);
    tx_out.raw = raw;
    tx_out.txid = txid_text(sha256d(raw));
    return true;
}

Bytes serialize_transaction(const Transaction& tx) {
    std::vector<TxInput> inputs = tx.inputs;
    if (!tx.coinbase.empty()) inputs = {TxInput{NO_TXID, NO_OUTPUT, tx.coinbase, NO_OUTPUT}};
    Bytes raw;
    put_u32(raw, tx.version);
    put_compact(raw, inputs.size());
    for (const TxInput& input : inputs) put_input(raw, input);
    put_compact(raw, tx.outputs.size());
    for (const TxOutput& output : tx.outputs) {
        put_u64(raw, static_cast<std::uint64_t>(output.sats));
        put_compact(raw, output.script.size());
        put_bytes(raw, output.script);
    }
    put_u32(raw, tx.lock_time);
    return raw;
}

}  // namespace sandbox
