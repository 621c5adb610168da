// What the token indexer says of an address: which of its outputs carry an ordinal or a token, and which are
// plain coins. Blocking network reads without the wallet mutex.
#pragma once

#include <string>
#include <vector>

#include "wallet/coin_records.h"

// The outputs of the address that carry something; true if the first of the two lists answered.
bool qv_clasp_read_ordinal_outpoints(const std::string& address, OutpointSet& outpoints_out);
// The same, with the outputs that the first list shows as plain, and whether the answer is complete: both
// lists came, and neither as a full page that may go on. Where it is not, an output that was not listed may
// carry a token all the same.
bool qv_clasp_read_ordinal_outpoints(const std::string& address, OutpointSet& outpoints_out,
                                     OutpointSet& plain_out, bool& complete_out);
// The plain coins of the address, for a resync; true if there is any.
bool qv_clasp_read_index_coins(const std::string& address, std::vector<QvClaspUtxo>& utxos_out);
