// Building, sizing and signing transactions. All are of one shape: version 1, lock time 0, P2PKH inputs with
// sequence 0xffffffff, a payment, at most one memo, at most one change output. The fee is 100 satoshis per
// 1000 bytes, rounded up. Signature hashes follow BIP-143 with SIGHASH_ALL and the fork flag (0x41). Pure
// apart from the nonce of a signature.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/bytes.h"
#include "spend/coin_guard.h"

struct QvClaspTxOutput {
    std::int64_t sats = 0;
    Bytes script;
};

void qv_clasp_write_u32(Bytes& bytes, std::uint32_t value);
void qv_clasp_write_u64(Bytes& bytes, std::uint64_t value);
// The compact-size integer of the protocol.
void qv_clasp_write_compact(Bytes& bytes, std::uint64_t value);
// A data push with the shortest opcode for its length.
void qv_clasp_write_push(Bytes& bytes, const std::uint8_t* data, std::size_t size);

std::int64_t qv_clasp_fee_for_size(std::int64_t size);

// The bytes of the transaction; with `estimate` each input has a placeholder of a signed input's size. Empty
// if a txid does not decode.
Bytes qv_clasp_serialize_tx(const std::vector<QvClaspCoin>& coins,
                            const std::vector<QvClaspTxOutput>& outputs, bool estimate);
// The transaction id of serialised bytes.
std::string qv_clasp_txid(const Bytes& raw);

// The length of a transaction with so many signed inputs and outputs of `outputs_size` bytes in all; the
// same, to the byte, as qv_clasp_serialize_tx gives with `estimate`.
std::int64_t estimated_tx_size(std::size_t inputs, std::size_t outputs, std::int64_t outputs_size);
// The bytes that an output takes in a transaction.
std::int64_t tx_output_size(std::size_t script_size);

// The money of a transaction whose inputs are chosen: the fee and what is left for a change output (0: none).
struct QvClaspTxPlan {
    std::int64_t fee = 0;
    std::int64_t change = 0;
    bool covered = false;  // the inputs pay for `sats` and the fee
};
// Plans for inputs worth `total` and fixed outputs, the payment of `sats` among them, that take
// `outputs_size` bytes. Neither amount may be negative.
QvClaspTxPlan plan_tx(std::size_t inputs, std::int64_t total, std::int64_t sats, std::size_t outputs,
                      std::int64_t outputs_size);
// What the walk over the candidates wants beyond `sats` before it stops: the fee with a change output.
std::int64_t selection_fee(std::size_t inputs, std::size_t outputs, std::int64_t outputs_size);

// Selects the first prefix of the candidates that covers the sum, and makes the outputs: payment, memo,
// change. There is no dust rule. `coins_inout` holds the selection afterwards. On failure the error text is
// set and `fee_out` holds the fee asked for; "failed to build transaction.", with a fee of 0, means sums that
// no transaction can carry (a negative amount, or coins of more than 2^63 satoshis together).
bool qv_clasp_build_tx(std::vector<QvClaspCoin>& coins_inout, std::vector<QvClaspTxOutput>& outputs_out,
                       const Hash160& dest_hash160, const Hash160& change_hash160, std::int64_t sats,
                       std::string_view memo, std::int64_t& fee_out, std::string& error_out);

// What the signature hashes of one transaction share.
struct SighashMidstate {
    Hash256 prevouts{};
    Hash256 sequence{};
    Hash256 outputs{};
};
SighashMidstate sighash_midstate(const std::vector<QvClaspCoin>& coins,
                                 const std::vector<QvClaspTxOutput>& outputs);
// The bytes whose double SHA-256 is signed for one coin; empty if its txid does not decode. The script code
// is the coin's `prev_script`, or the P2PKH script of `hash160` where that is empty.
Bytes sighash_preimage(const QvClaspCoin& coin, const SighashMidstate& midstate, const Hash160& hash160);

// Signs one input into its `script_sig`, which is untouched after a failure.
bool qv_clasp_sign_input(QvClaspCoin& coin_inout, const std::vector<QvClaspCoin>& coins,
                         const std::vector<QvClaspTxOutput>& outputs, const Hash160& hash160,
                         std::string_view priv_hex, std::string_view pub_hex);
// Signs every input in order, with the coin's keys or, where those are empty, the pair given, and with the
// coin's own hash160. What the signature hashes share is computed once. Stops at the first failure.
bool sign_all_inputs(std::vector<QvClaspCoin>& coins_inout, const std::vector<QvClaspTxOutput>& outputs,
                     std::string_view session_priv_hex, std::string_view session_pub_hex);
