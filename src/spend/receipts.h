// The paymail receipt: delivers a sent transaction to the receiver's host as a signed message. The table of
// expected deliveries is filled by hosts of this library that pay through such a flow; here it stays empty.
// Failures are silent: a receipt never stops a send. The table's mutex is never held together with the wallet
// mutex.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "spend/transaction.h"

struct QvClaspReceiptRow {
    std::string address;
    std::string url;
    std::string reference;
    std::string sender;
    std::int64_t sats = 0;
};
// Expects a payment; replaces an older row of the address.
void qv_clasp_expect_receipt(const QvClaspReceiptRow& row);

struct QvClaspReceiptJob {
    std::vector<QvClaspReceiptRow> rows;
    std::string raw_hex;
    std::string pubkey;
    std::string signature;
};
// After a recorded send: takes the rows that this transaction pays, and delivers them on a thread of its own.
void qv_clasp_queue_receipt(const std::string& raw_hex, const std::string& txid,
                            const std::vector<QvClaspTxOutput>& outputs);
void qv_clasp_deliver_receipts(const QvClaspReceiptJob& job);

// A signed message of 65 bytes in Base64, from which the public key can be recovered; empty on failure.
std::string sign_recoverable_message(std::string_view priv_hex, std::string_view pub_hex,
                                     std::string_view text);
