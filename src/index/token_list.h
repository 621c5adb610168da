// The tokens that this wallet can pay dividends on: every token that it holds an output of or minted, with a
// name and the wallet's own lots. Runs on a worker thread and blocks on the network, a whole snapshot a
// token; the wallet mutex is held while the remembered ordinals are read, where no network is touched.
#pragma once

#include <string>
#include <vector>

#include "index/inscription.h"
#include "index/token_row.h"

// Empty on success, otherwise a text that begins with "error: ", with no rows. Sorted by name, then by token
// id. Without `refresh` nothing is asked of the network. A sweep or a snapshot that fails only makes the list
// poorer.
std::string qv_clasp_list_tokens(std::vector<TokenRow>& rows, bool refresh);
// What a token is called: its record's name or symbol, else the fallback, else its id, shortened.
std::string token_label(const std::string& token_id, const Bsv20Meta& meta, const std::string& fallback);
