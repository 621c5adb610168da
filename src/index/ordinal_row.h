// One row of the ordinal listing.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct QvClaspOrdRow {
    std::string origin;
    std::string txid;
    std::uint32_t vout = 0;
    std::int64_t satoshis = 1;
    std::int32_t height = 0;  // 0 when unknown or unconfirmed
    std::string type;         // content type; "local" for a stored entry whose type is unknown
    std::string address;
    std::string name;
    std::string icon;
    std::string amt;
    std::string dec;
    std::string token_id;
    std::vector<std::string> outpoints;  // all outputs folded into this row
    bool named = false;
    bool needs_name = false;
    std::string art_tag;
    bool certificate = false;
};
