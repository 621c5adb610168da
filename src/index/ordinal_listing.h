// The sweep that brings the wallet's knowledge of its 1-sat outputs up to date: the indexer's listings, the
// chain, what the document remembers, and the inbox, merged into one list. Runs on a worker thread; holds the
// wallet mutex in short stretches only.
#pragma once

#include <string>
#include <vector>

#include "index/ordinal_row.h"

// Empty, or a text that begins with "error: ".
std::string qv_clasp_list_ordinals(std::vector<QvClaspOrdRow>& rows);
