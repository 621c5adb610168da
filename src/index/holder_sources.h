// Where the rows of a board come from, and how they are made one list.
#pragma once

#include <string>
#include <vector>

#include "index/token_walk.h"

// The indexer's holder list, appended; an owner already in the rows is left out. Blocks on the network.
void qv_clasp_fetch_holders(const std::string& token_id, std::vector<HolderTxo>& rows_inout);
// The list apart from the network.
void parse_holders(const std::string& body, std::vector<HolderTxo>& rows_inout);
// Chain rows first; the index speaks only for owners that the chain rows do not name.
std::vector<HolderTxo> merge_holder_rows(const std::vector<HolderTxo>& chain_rows,
                                         const std::vector<HolderTxo>& index_rows);
// A deploy row carries the whole supply: what has moved on is taken off it.
void reconcile_deploy_rows(std::vector<HolderTxo>& rows_inout);
