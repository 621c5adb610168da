// One entry of the token list.
#pragma once

#include <string>

struct TokenRow {
    std::string token_id;  // deploy origin
    std::string name;
    std::string lots;  // the wallet's own lots as far as known; may be empty
    bool minted = false;
};
