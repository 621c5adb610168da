#include "sandbox/wallet_files.h"

#include "base/hex.h"

namespace sandbox {

Json mnemonic_document(const Wallet& wallet, const Json& ord_owned) {
    Json document{{"version", 2},
                  {"mnemonic", wallet.mnemonic},
                  {"backup", true},
                  {"recv", {0, wallet.receive_index, 0, 0, 0, wallet.ordinal_index}},
                  {"show", wallet.receive_index},
                  {"identity", wallet.identity().address},
                  {"address", wallet.receive(wallet.receive_index).address}};
    if (!wallet.paymail.empty()) document["paymail"] = wallet.paymail;
    if (!ord_owned.empty()) document["ord_owned"] = ord_owned;
    return document;
}

Json legacy_document(const KeyPair& key) {
    return {{"priv", qv_clasp_hex_encode(key.priv)},
            {"pub", qv_clasp_hex_encode(key.pub)},
            {"address", key.address}};
}

bool write_wallet_document(const std::string& path, const Json& document) {
    make_folder(path.substr(0, path.rfind('/')));
    return write_text_file(path, dump_json(document, 2));
}

bool write_wallet_registry(const std::string& family_folder, const std::vector<Wallet>& wallets) {
    Json rows = Json::array();
    for (const Wallet& wallet : wallets) rows.push_back({{"id", wallet.id}, {"name", wallet.name}});
    const Json registry{{"wallets", rows}, {"active", wallets.empty() ? "" : wallets.front().id}};
    make_folder(family_folder);
    return write_text_file(family_folder + "/wallets.json", dump_json(registry, 2) + "\n");
}

}  // namespace sandbox
