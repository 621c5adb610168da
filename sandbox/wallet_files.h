// The files in which the wallets of the world live: the two forms of a wallet document, and the registry that
// lists the wallets. Written as the family's wallet program writes them.
#pragma once

#include <string>
#include <vector>

#include "base/json_file.h"
#include "sandbox/keys.h"
#include "sandbox/world.h"

namespace sandbox {

// The document of a mnemonic wallet, with every key that such a document always has. `ord_owned` is an array.
Json mnemonic_document(const Wallet& wallet, const Json& ord_owned);
// The document of a wallet of one bare key.
Json legacy_document(const KeyPair& key);

// Writes a document, without a line break at its end, and makes its folder.
bool write_wallet_document(const std::string& path, const Json& document);
// Writes "wallets.json" into the family's folder, with the first wallet as the active one.
bool write_wallet_registry(const std::string& family_folder, const std::vector<Wallet>& wallets);

}  // namespace sandbox
