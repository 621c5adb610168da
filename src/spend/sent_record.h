// What a transaction that the network shows changes in the records: its coins are spent, its outputs to this
// wallet are pending coins, in memory, in the cache and on disk, so that the next send finds them before any
// indexer has. Callers hold the wallet mutex.
#pragma once

#include <string>
#include <vector>

#include "spend/transaction.h"

// The coins are gone, in the spent file (written once) and in the cache.
void write_off_coins(const std::vector<QvClaspCoin>& coins);

// The bookkeeping of one transaction: see above. Raises the generation.
void qv_clasp_record_sent(const std::vector<QvClaspCoin>& coins, const std::vector<QvClaspTxOutput>& outputs,
                          const std::string& txid, const Hash160& change_hash160);
// Takes a transaction that has turned up for a success: "success: " and the txid, or empty for a bad txid.
std::string qv_clasp_finish_known_tx(const std::vector<QvClaspCoin>& coins,
                                     const std::vector<QvClaspTxOutput>& outputs, const std::string& txid,
                                     const Hash160& change_hash160);
