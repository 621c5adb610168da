#include "wallet/document_path.h"

#include "wallet/binds.h"
#include "wallet/data_root.h"

std::string wallet_document_path(const std::string& wallet_id) {
    return qv_data_root() + "/wallets/" + wallet_id + "/wallet.json";
}

std::string root_document_path() {
    return qv_data_root() + "/quorvelle_clasp.json";
}

std::string qv_clasp_document_path() {
    const std::string wallet_id = qv_clasp_active_wallet_id();
    return wallet_id.empty() ? root_document_path() : wallet_document_path(wallet_id);
}
