// The sweep that brings the wallet's knowledge of its 1-sat outputs up to date: the indexer's listings, the
// chain, what the document remembers, and the inbox, merged into one list. Afterwards `ord_owned`, the
// content cache and the snapshot file are current, on which the spending side relies.
//
// Runs on a worker thread and blocks on the network; it holds the wallet mutex in short stretches only, and
// ends with "error: wallet changed." if the wallet is another one when it takes it back. A request that fails
// never stops it.
#pragma once

#include <string>
#include <vector>

#include "index/ordinal_row.h"

// Empty, or a text that begins with "error: ", with no rows.
std::string qv_clasp_list_ordinals(std::vector<QvClaspOrdRow>& rows);
