// The paymail receipt: delivers a sent transaction to the receiver's host as a signed message. The table of
// expected deliveries is filled by hosts of this library that pay through such a flow; here it stays empty.
// Failures are silent: a receipt never stops a send. The table's mutex is never held together with the wallet
// mutex.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "spend/recoverable_signature.h"
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
// After a recorded send: takes the wallet mutex to sign as the identity, takes the rows that this transaction
// pays, and delivers them on a thread of its own.
void qv_clasp_queue_receipt(const std::string& raw_hex, const std::string& txid,
                            const std::vector<QvClaspTxOutput>& outputs);
// The body of that thread: one POST a row, whose answer nobody waits for.
void qv_clasp_deliver_receipts(const QvClaspReceiptJob& job);

// Blocks until no delivery thread is at work; each ends by itself within seconds.
void wait_for_receipts();
// How many payments are still expected.
std::size_t expected_receipts();
