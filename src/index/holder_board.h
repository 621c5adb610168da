// The holders of one token as one snapshot found them. Plain records, in board order.
#pragma once

#include <string>
#include <vector>

struct HolderRow {
    std::string who;   // paymail where an alias is known, otherwise the address
    std::string dest;  // P2PKH address to pay; empty: nobody can be paid here; always empty on a reserve row
    std::string pubkey;  // lower-case hexadecimal identity key; empty where none is known
    std::string lots;
    bool reserve = false;  // the row belongs to the connected wallet itself
};

struct HolderBoard {
    std::string token_id;
    std::string token_name;
    std::string total_lots;
    std::string reserve_lots;
    std::string in_market_lots;
    bool loaded = false;  // the wallet's right to the token has been established
    std::vector<HolderRow> rows;
};
