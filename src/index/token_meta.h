// A token's display name and icon from the indexer, and the one token whose name is fixed.
#pragma once

#include <string>
#include <string_view>

// The fixed display name of the token, or empty.
std::string qv_clasp_fixed_token_name(const std::string& token_id);
// 1 to 6 characters, all alphanumeric.
bool is_ticker_like(std::string_view name);
// Fills an empty name (and icon, where a slot is given). Blocks on the network.
void qv_clasp_fetch_token_meta(const std::string& token_id, std::string& name_inout,
                               std::string* icon_inout = nullptr);
