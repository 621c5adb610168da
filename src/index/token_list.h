// The tokens that this wallet can pay dividends on: held or minted.
#pragma once

#include <string>
#include <vector>

#include "index/inscription.h"
#include "index/token_row.h"

// Empty on success, otherwise a text that begins with "error: ". Without `refresh` nothing is asked of the
// network.
std::string qv_clasp_list_tokens(std::vector<TokenRow>& rows, bool refresh);
std::string token_label(const std::string& token_id, const Bsv20Meta& meta, const std::string& fallback);
