// A cached view of transactions and spends, read through the chain service. One lock, the chain lock, guards
// both caches and is never held during a request. Functions block on the network, without the wallet mutex.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "base/json_file.h"

enum class SpendStatus { Spent = 0, Unspent = 1, Unknown = 2, NoSuchTx = 3 };

// The parsed JSON object of a transaction; kept for the life of the process.
bool qv_clasp_tx_json(const std::string& txid, Json& tx_out);
// The same without a copy; null if the transaction cannot be had.
std::shared_ptr<const Json> qv_clasp_shared_tx(const std::string& txid);
// The array `vout` of a transaction; null if there is no transaction or no such array. Valid as long as `tx`
// is.
const Json* tx_outputs(const std::shared_ptr<const Json>& tx);
// Only final answers are kept: spent, and no such transaction. `spender_out` is empty unless the output is
// spent.
SpendStatus qv_clasp_spend_status(const std::string& txid, std::uint32_t vout, std::string& spender_out);
void qv_clasp_clear_spend_cache();

// Adds the newest transactions of an address that `seen` does not hold yet, until the list has `limit`
// entries.
void qv_clasp_history_txids(const std::string& address, const std::string& path,
                            std::vector<std::string>& list_inout, std::size_t limit,
                            std::unordered_set<std::string>& seen_inout);
