// What the chain service says of an address and of a transaction. Blocking network reads without the wallet
// mutex; any number of threads may call at once. Nothing throws; any JSON that does not fit is a failed read.
#pragma once

#include <string>
#include <vector>

#include "base/json_file.h"
#include "wallet/coin_records.h"

// The full read of one address: three lists, merged, largest first, without what the mempool has spent.
// `any_ok_out` tells whether one of the first two lists answered. False, with the error text, if none did.
bool qv_clasp_fetch_utxos(const std::string& address, std::vector<QvClaspUtxo>& utxos_out,
                          std::string& error_out, bool& any_ok_out);
// One list, appended.
bool qv_clasp_read_utxo_list(const std::string& url, std::vector<QvClaspUtxo>& utxos_inout,
                             std::string& error_out);
bool qv_clasp_parse_utxo_list(const Json& json, std::vector<QvClaspUtxo>& utxos_inout);
// Removes coins that the newest unconfirmed transactions of the address spend.
void qv_clasp_drop_mempool_spends(const std::string& address, std::vector<QvClaspUtxo>& utxos_inout);

// The service knows the transaction.
bool qv_clasp_tx_exists(const std::string& txid);
// The same, and whether the service answered: it showed the transaction or said that there is none.
bool qv_clasp_tx_exists(const std::string& txid, bool& answered_out);

enum class TxProbe { Known = 0, NotFound = 1, NoAnswer = 2 };
TxProbe qv_clasp_tx_probe(const std::string& txid);

// Takes the array out of an answer that is an array, or an object with an array under `result`; null for any
// other.
const Json* result_array(const Json& root);
// The transaction id of a row: `tx_hash` if that is a string, else `txid`; empty if neither is.
std::string row_txid(const Json& row);
