// The play-money chain: transactions in memory, verified in full before they are taken. Signatures are
// checked with libsecp256k1 over a signature hash of the sandbox's own; nothing of the product's wallet code
// is used. Thread-safe: one mutex inside, and every answer is a copy.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/bytes.h"

namespace sandbox {

struct TxInput {
    std::string txid;  // as usually shown
    std::uint32_t vout = 0;
    Bytes script_sig;
    std::uint32_t sequence = 0xffffffffU;
};
struct TxOutput {
    std::int64_t sats = 0;
    Bytes script;
};
struct Transaction {
    std::string txid;
    Bytes raw;
    std::uint32_t version = 1;
    std::uint32_t lock_time = 0;
    std::vector<TxInput> inputs;  // empty for money made at the start
    Bytes coinbase;               // the script of such money's one input, which spends nothing
    std::vector<TxOutput> outputs;
    int height = 0;  // 0: not mined yet
    std::int64_t time = 0;
};
struct Coin {
    std::string txid;
    std::uint32_t vout = 0;
    std::int64_t sats = 0;
    Bytes script;
    int height = 0;
};

// Parses raw bytes and fills raw and txid; false for anything but one whole transaction.
bool parse_transaction(const Bytes& raw, Transaction& tx_out);
Bytes serialize_transaction(const Transaction& tx);

// The verdict on a transaction: accepted, or the node's words for a refusal ("txn-already-known",
// "txn-mempool-conflict", "Missing inputs", "mandatory-script-verify-flag-failed ...",
// "bad-txns-in-belowout", "mempool min fee not met", "TX decode failed", ...).
struct Verdict {
    bool accepted = false;
    std::string reason;
    std::string txid;
    int code = 0;  // the number that a node puts in front of the reason; 0 where it puts none
};

class Chain {
 public:
    // Takes a transaction from the network, after full verification: inputs exist and are unspent, scripts
    // and signatures are right, no value is created, the fee is at least `fee_rate` satoshis per 1000 bytes.
    Verdict submit(const Bytes& raw);
    // Takes a transaction without inputs, for money and tokens made at the start, into a block of its own.
    // Returns its txid.
    std::string fund(const std::vector<TxOutput>& outputs);
    // Forgets an unmined transaction and everything that spends from it, as if no node had kept it.
    bool drop(const std::string& txid);
    // Puts every unmined transaction into a block; returns the new height.
    int mine();

    int height() const;
    std::optional<Transaction> find(const std::string& txid) const;
    // The transaction that spends an output, if any.
    std::optional<std::string> spender(const std::string& txid, std::uint32_t vout) const;
    // Unspent outputs that an address owns: plain P2PKH, and 1-sat outputs in either layout.
    std::vector<Coin> unspent(const std::string& address) const;
    // Transactions that touch an address, oldest first.
    std::vector<std::string> history(const std::string& address) const;
    // Every transaction in the order of arrival, and their txids alone.
    std::vector<Transaction> all() const;
    std::vector<std::string> txids() const;

    std::int64_t fee_rate = 100;  // set before use

 private:
    using Outpoint = std::pair<std::string, std::uint32_t>;

    // All of these expect the mutex to be held.
    std::string check(const Transaction& tx) const;
    bool is_final(const Transaction& tx) const;
    std::string check_inputs_unspent(const Transaction& tx) const;
    std::string check_value(const Transaction& tx) const;
    const TxOutput& spent_output(const TxInput& input) const;
    std::set<Hash160> owners_touched(const Transaction& tx) const;
    void insert(Transaction tx);
    void remove_with_spenders(const std::string& txid);

    mutable std::mutex mutex_;
    int height_ = 800000;
    std::vector<std::string> order_;
    std::vector<std::string> unmined_;
    std::map<std::string, Transaction> transactions_;
    std::map<Outpoint, std::string> spenders_;
    std::map<Hash160, std::vector<std::string>> histories_;
    std::map<Hash160, std::set<Outpoint>> unspent_;
};

}  // namespace sandbox
