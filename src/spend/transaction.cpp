#include "spend/transaction.h"

#include <algorithm>
#include <limits>

#include "base/hex.h"
#include "base/text.h"
#include "wallet/address.h"
#include "wallet/ecdsa.h"
#include "wallet/hashes.h"

namespace {

constexpr std::uint32_t FINAL_SEQUENCE = 0xffffffffU;
constexpr std::uint8_t SIGHASH_ALL_FORKID = 0x41;
// A signature with its hash type, a compressed public key, and a push opcode before each, at their usual
// sizes.
constexpr std::size_t PLACEHOLDER_SIZE = 107;
constexpr std::int64_t SIGNED_INPUT_SIZE = 32 + 4 + 1 + static_cast<std::int64_t>(PLACEHOLDER_SIZE) + 4;
constexpr std::int64_t CHANGE_OUTPUT_SIZE = 34;
constexpr std::int64_t MAX_SATS = std::numeric_limits<std::int64_t>::max();

void append(Bytes& bytes, const Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

void write_little_endian(Bytes& bytes, std::uint64_t value, int count) {
    for (int i = 0; i < count; ++i) bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

std::int64_t compact_size(std::uint64_t value) {
    if (value < 253) return 1;
    if (value < 0x10000) return 3;
    return value <= 0xffffffffU ? 5 : 9;
}

// The outpoint as it stands in an input; false if the txid is not 32 bytes of hexadecimal.
bool write_outpoint(Bytes& bytes, const QvClaspCoin& coin) {
    Hash256 txid{};
    if (!is_hex64(coin.txid) || !qv_clasp_hex_decode_into(coin.txid, txid.data(), txid.size())) return false;
    bytes.insert(bytes.end(), txid.rbegin(), txid.rend());
    qv_clasp_write_u32(bytes, coin.vout);
    return true;
}

void write_output(Bytes& bytes, const QvClaspTxOutput& output) {
    qv_clasp_write_u64(bytes, static_cast<std::uint64_t>(output.sats));
    qv_clasp_write_compact(bytes, output.script.size());
    append(bytes, output.script);
}

std::int64_t outputs_size_of(const std::vector<QvClaspTxOutput>& outputs) {
    std::int64_t size = 0;
    for (const QvClaspTxOutput& output : outputs) size += tx_output_size(output.script.size());
    return size;
}

QvClaspTxOutput memo_output(std::string_view memo) {
    QvClaspTxOutput output;
    output.script = {0x00, 0x6a};
    qv_clasp_write_push(output.script, reinterpret_cast<const std::uint8_t*>(memo.data()), memo.size());
    return output;
}

// Walks the candidates in their order and keeps the first prefix that covers the sum. False if their values
// do not add up to an amount.
bool select_coins(std::vector<QvClaspCoin>& coins, std::int64_t sats, std::size_t outputs,
                  std::int64_t outputs_size, std::int64_t& total) {
    total = 0;
    std::size_t kept = 0;
    bool adds_up = true;
    for (std::size_t i = 0; i < coins.size(); ++i) {
        if (!is_hex64(coins[i].txid)) continue;
        adds_up = coins[i].sats >= 0 && coins[i].sats <= MAX_SATS - total;
        if (!adds_up) break;
        total += coins[i].sats;
        if (kept != i) coins[kept] = std::move(coins[i]);
        ++kept;
        if (total - sats >= selection_fee(kept, outputs, outputs_size)) break;
    }
    coins.erase(coins.begin() + static_cast<std::ptrdiff_t>(kept), coins.end());
    return adds_up;
}

bool sign_with_midstate(QvClaspCoin& coin, const SighashMidstate& midstate, const Hash160& hash160,
                        std::string_view priv_hex, std::string_view pub_hex) {
    const Bytes preimage = sighash_preimage(coin, midstate, hash160);
    if (preimage.empty()) return false;
    Bytes signature;
    if (!qv_clasp_ecdsa_sign(priv_hex, double_sha256(preimage), signature)) return false;
    signature.push_back(SIGHASH_ALL_FORKID);
    const Bytes pub = qv_clasp_hex_decode(pub_hex);
    coin.script_sig.clear();
    qv_clasp_write_push(coin.script_sig, signature.data(), signature.size());
    qv_clasp_write_push(coin.script_sig, pub.data(), pub.size());
    return true;
}

}  // namespace

void qv_clasp_write_u32(Bytes& bytes, std::uint32_t value) {
    write_little_endian(bytes, value, 4);
}

void qv_clasp_write_u64(Bytes& bytes, std::uint64_t value) {
    write_little_endian(bytes, value, 8);
}

void qv_clasp_write_compact(Bytes& bytes, std::uint64_t value) {
    const std::int64_t size = compact_size(value);
    if (size > 1) bytes.push_back(size == 3 ? 253 : size == 5 ? 254 : 255);
    write_little_endian(bytes, value, size == 1 ? 1 : static_cast<int>(size - 1));
}

void qv_clasp_write_push(Bytes& bytes, const std::uint8_t* data, std::size_t size) {
    if (size < 76) {
        bytes.push_back(static_cast<std::uint8_t>(size));
    } else if (size < 0x100) {
        bytes.push_back(76);
        write_little_endian(bytes, size, 1);
    } else if (size < 0x10000) {
        bytes.push_back(77);
        write_little_endian(bytes, size, 2);
    } else {
        bytes.push_back(78);
        write_little_endian(bytes, size, 4);
    }
    if (size > 0) bytes.insert(bytes.end(), data, data + size);
}

std::int64_t qv_clasp_fee_for_size(std::int64_t size) {
    if (size < 1) return 1;
    // size * 100 / 1000 rounded up, in a form that no size overflows.
    return size / 1000 * 100 + (size % 1000 * 100 + 999) / 1000;
}

std::int64_t tx_output_size(std::size_t script_size) {
    return 8 + compact_size(script_size) + static_cast<std::int64_t>(script_size);
}

std::int64_t estimated_tx_size(std::size_t inputs, std::size_t outputs, std::int64_t outputs_size) {
    return 4 + compact_size(inputs) + SIGNED_INPUT_SIZE * static_cast<std::int64_t>(inputs) +
           compact_size(outputs) + outputs_size + 4;
}

Bytes qv_clasp_serialize_tx(const std::vector<QvClaspCoin>& coins,
                            const std::vector<QvClaspTxOutput>& outputs, bool estimate) {
    Bytes bytes;
    bytes.reserve(
        static_cast<std::size_t>(estimated_tx_size(coins.size(), outputs.size(), outputs_size_of(outputs))));
    qv_clasp_write_u32(bytes, 1);
    qv_clasp_write_compact(bytes, coins.size());
    for (const QvClaspCoin& coin : coins) {
        if (!write_outpoint(bytes, coin)) return {};
        if (estimate) {
            bytes.push_back(static_cast<std::uint8_t>(PLACEHOLDER_SIZE));
            bytes.insert(bytes.end(), PLACEHOLDER_SIZE, 0);
        } else {
            qv_clasp_write_compact(bytes, coin.script_sig.size());
            append(bytes, coin.script_sig);
        }
        qv_clasp_write_u32(bytes, FINAL_SEQUENCE);
    }
    qv_clasp_write_compact(bytes, outputs.size());
    for (const QvClaspTxOutput& output : outputs) write_output(bytes, output);
    qv_clasp_write_u32(bytes, 0);
    return bytes;
}

std::string qv_clasp_txid(const Bytes& raw) {
    Hash256 digest = double_sha256(raw);
    std::reverse(digest.begin(), digest.end());
    return qv_clasp_hex_encode(digest);
}

std::int64_t selection_fee(std::size_t inputs, std::size_t outputs, std::int64_t outputs_size) {
    return qv_clasp_fee_for_size(estimated_tx_size(inputs, outputs, outputs_size) + CHANGE_OUTPUT_SIZE);
}

QvClaspTxPlan plan_tx(std::size_t inputs, std::int64_t total, std::int64_t sats, std::size_t outputs,
                      std::int64_t outputs_size) {
    QvClaspTxPlan plan;
    plan.fee = qv_clasp_fee_for_size(estimated_tx_size(inputs, outputs, outputs_size));
    const std::int64_t spare = total - sats;
    if (spare > plan.fee) {
        // The larger fee stays even where it leaves nothing to change: the remainder goes to the miners.
        plan.fee =
            qv_clasp_fee_for_size(estimated_tx_size(inputs, outputs + 1, outputs_size + CHANGE_OUTPUT_SIZE));
        plan.change = std::max<std::int64_t>(spare - plan.fee, 0);
    }
    plan.covered = spare >= plan.fee;
    return plan;
}

bool qv_clasp_build_tx(std::vector<QvClaspCoin>& coins_inout, std::vector<QvClaspTxOutput>& outputs_out,
                       const Hash160& dest_hash160, const Hash160& change_hash160, std::int64_t sats,
                       std::string_view memo, std::int64_t& fee_out, std::string& error_out) {
    fee_out = 0;
    error_out.clear();
    outputs_out.clear();
    outputs_out.push_back({sats, qv_clasp_p2pkh_script(dest_hash160)});
    if (!memo.empty()) outputs_out.push_back(memo_output(memo));
    const std::size_t outputs = outputs_out.size();
    const std::int64_t outputs_size = outputs_size_of(outputs_out);

    std::int64_t total = 0;
    if (sats < 0 || !select_coins(coins_inout, sats, outputs, outputs_size, total)) {
        error_out = "failed to build transaction.";
        return false;
    }
    const QvClaspTxPlan plan = plan_tx(coins_inout.size(), total, sats, outputs, outputs_size);
    if (plan.change > 0) outputs_out.push_back({plan.change, qv_clasp_p2pkh_script(change_hash160)});
    fee_out = plan.fee;
    if (plan.covered) return true;
    const std::int64_t need = plan.fee > MAX_SATS - sats ? MAX_SATS : sats + plan.fee;
    error_out = "insufficient funds. Need " + std::to_string(need) + " sats, you have " +
                std::to_string(total) + " in your Clasp wallet.";
    return false;
}

SighashMidstate sighash_midstate(const std::vector<QvClaspCoin>& coins,
                                 const std::vector<QvClaspTxOutput>& outputs) {
    Bytes prevouts;
    Bytes sequences;
    Bytes output_bytes;
    prevouts.reserve(36 * coins.size());
    for (const QvClaspCoin& coin : coins) {
        write_outpoint(prevouts, coin);
        qv_clasp_write_u32(sequences, FINAL_SEQUENCE);
    }
    for (const QvClaspTxOutput& output : outputs) write_output(output_bytes, output);
    return {double_sha256(prevouts), double_sha256(sequences), double_sha256(output_bytes)};
}

Bytes sighash_preimage(const QvClaspCoin& coin, const SighashMidstate& midstate, const Hash160& hash160) {
    const Bytes script_code = coin.prev_script.empty() ? qv_clasp_p2pkh_script(hash160) : coin.prev_script;
    Bytes bytes;
    bytes.reserve(160 + script_code.size());
    qv_clasp_write_u32(bytes, 1);
    bytes.insert(bytes.end(), midstate.prevouts.begin(), midstate.prevouts.end());
    bytes.insert(bytes.end(), midstate.sequence.begin(), midstate.sequence.end());
    if (!write_outpoint(bytes, coin)) return {};
    qv_clasp_write_compact(bytes, script_code.size());
    append(bytes, script_code);
    qv_clasp_write_u64(bytes, static_cast<std::uint64_t>(coin.sats));
    qv_clasp_write_u32(bytes, FINAL_SEQUENCE);
    bytes.insert(bytes.end(), midstate.outputs.begin(), midstate.outputs.end());
    qv_clasp_write_u32(bytes, 0);
    qv_clasp_write_u32(bytes, SIGHASH_ALL_FORKID);
    return bytes;
}

bool qv_clasp_sign_input(QvClaspCoin& coin_inout, const std::vector<QvClaspCoin>& coins,
                         const std::vector<QvClaspTxOutput>& outputs, const Hash160& hash160,
                         std::string_view priv_hex, std::string_view pub_hex) {
    return sign_with_midstate(coin_inout, sighash_midstate(coins, outputs), hash160, priv_hex, pub_hex);
}

bool sign_all_inputs(std::vector<QvClaspCoin>& coins_inout, const std::vector<QvClaspTxOutput>& outputs,
                     std::string_view session_priv_hex, std::string_view session_pub_hex) {
    const SighashMidstate midstate = sighash_midstate(coins_inout, outputs);
    for (QvClaspCoin& coin : coins_inout) {
        const bool own_keys = !coin.priv.empty() && !coin.pub.empty();
        const std::string_view priv_hex = own_keys ? coin.priv.view() : session_priv_hex;
        const std::string_view pub_hex = own_keys ? std::string_view(coin.pub) : session_pub_hex;
        if (!sign_with_midstate(coin, midstate, coin.hash160, priv_hex, pub_hex)) return false;
    }
    return true;
}
