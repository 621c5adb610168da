// Token fields in the rows of the indexer's two address listings. Pure.
#pragma once

#include <string>

#include "base/json_file.h"

// A row of "/txos/address/": true if it names a token id or an amount.
bool read_indexer_token(const Json& txo, std::string& id, std::string& amt, std::string& name,
                        std::string& dec, std::string& icon);
// A row of "/bsv20/<address>": fields at the top or nested.
std::string read_txo_amount(const Json& txo);
std::string read_txo_dec(const Json& txo);
std::string read_txo_id(const Json& txo);
