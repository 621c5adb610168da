// The file "/ord_snap/<scope>.json" under the data root: the last complete sweep of one wallet. It holds no
// date; its entries are candidates that every reader tests again. The scope key in its name keeps wallets
// apart. Files only.
#pragma once

#include <string>
#include <vector>

#include "wallet/wallet_session.h"

struct OrdSnapshot {
    std::vector<LocalOrd>
        lots;  // outputs: origin, txid, vout, and what was known of type, name, icon and address
    std::vector<std::string> txids;
    std::vector<std::string> token_ids;
};
// False, with the snapshot empty, if there is no usable file: it must hold an output or a transaction.
bool qv_clasp_ord_snap_load(const std::string& scope, OrdSnapshot& snapshot);
// Replaces the file; a failure is passed over.
void qv_clasp_ord_snap_save(const std::string& scope, const OrdSnapshot& snapshot);
