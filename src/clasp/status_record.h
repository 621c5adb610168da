// The result of a status report.
#pragma once

#include <cstdint>
#include <string>

struct QvClaspStatus {
    bool connected = false;
    bool hd = false;
    bool balance_known = false;
    std::string address;
    std::int64_t balance_sats = 0;  // 0 until computed, -1 if nothing is known
};
