// Building, sizing and signing transactions. All are of one shape: version 1, lock time 0, P2PKH inputs with sequence
// 0xffffffff, a payment, at most one memo, at most one change output. The fee is 100 satoshis per 1000 bytes, rounded
// up. Signature hashes follow BIP-143 with SIGHASH_ALL and the fork flag (0x41). Pure apart from the nonce of a
// signature.
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

// The bytes of the transaction; with `estimate` each input has a placeholder of a signed input's size. Empty if a
// txid does not decode.
Bytes qv_clasp_serialize_tx(const std::vector<QvClaspCoin>& coins, const std::vector<QvClaspTxOutput>& outputs,
                            bool estimate);
// The transaction id of serialised bytes.
std::string qv_clasp_txid(const Bytes& raw);

// Selects the first prefix of the candidates that covers the sum, and makes the outputs. On success `coins_inout`
// holds the coins chosen. On failure the error text is set and `fee_out` holds the fee asked for.
bool qv_clasp_build_tx(std::vector<QvClaspCoin>& coins_inout, std::vector<QvClaspTxOutput>& outputs_out,
                       const Hash160& dest_hash160, const Hash160& change_hash160, std::int64_t sats,
                       std::string_view memo, std::int64_t& fee_out, std::string& error_out);

// What the signature hashes of one transaction share.
struct SighashMidstate {
    Hash256 prevouts{};
    Hash256 sequence{};
    Hash256 outputs{};
};
SighashMidstate sighash_midstate(const std::vector<QvClaspCoin>& coins, const std::vector<QvClaspTxOutput>& outputs);
// The bytes whose double SHA-256 is signed for one coin.
Bytes sighash_preimage(const QvClaspCoin& coin, const SighashMidstate& midstate, const Hash160& hash160);

// Signs one input into its `script_sig`.
bool qv_clasp_sign_input(QvClaspCoin& coin_inout, const std::vector<QvClaspCoin>& coins,
                         const std::vector<QvClaspTxOutput>& outputs, const Hash160& hash160,
                         std::string_view priv_hex, std::string_view pub_hex);
// Signs every input, with the coin's keys or, where those are empty, the ones given.
bool sign_all_inputs(std::vector<QvClaspCoin>& coins_inout, const std::vector<QvClaspTxOutput>& outputs,
                     std::string_view session_priv_hex, std::string_view session_pub_hex);
