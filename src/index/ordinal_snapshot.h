// The file "/ord_snap/<scope>.json": the last complete sweep of one wallet.
#pragma once

#include <string>
#include <vector>

#include "wallet/wallet_session.h"

struct OrdSnapshot {
    std::vector<LocalOrd> lots;
    std::vector<std::string> txids;
    std::vector<std::string> token_ids;
};
// False if there is no usable file.
bool qv_clasp_ord_snap_load(const std::string& scope, OrdSnapshot& snapshot);
void qv_clasp_ord_snap_save(const std::string& scope, const OrdSnapshot& snapshot);
