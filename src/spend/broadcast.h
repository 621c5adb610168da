// Getting one signed transaction onto the network. No service's word is trusted by itself: it is done when
// the chain service shows the transaction. Runs with the wallet mutex held, network waits included.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "spend/transaction.h"

// "success: " and the txid, or a text that begins with "error: ". `txid_out` has the computed txid before
// anything is sent. `accepted_out` is true if the chain service or the third target said that it took the
// transaction: after an error it may be out all the same.
std::string qv_clasp_broadcast(const std::vector<QvClaspCoin>& coins,
                               const std::vector<QvClaspTxOutput>& outputs, const Hash160& change_hash160,
                               std::string& txid_out, bool* accepted_out = nullptr);

struct BroadcastContext {
    const std::vector<QvClaspCoin>& coins;
    const std::vector<QvClaspTxOutput>& outputs;
    const Hash160& change_hash160;
    const std::string& txid;  // computed
    const std::string& raw_hex;
};
// Waits for the chain service to show the transaction, and records it; empty if it does not.
std::string qv_clasp_confirm_and_record(const BroadcastContext& context, const std::string& txid);
// Submits to the third target. False with the reason.
bool qv_clasp_arc_submit(const std::string& raw_hex, const std::string& txid, std::string& error_out);
// The verdict on that target's answer, apart from the network.
bool arc_verdict(const std::string& body, const std::string& txid, std::string& error_out);
bool qv_clasp_is_missing_inputs(std::string_view text);
