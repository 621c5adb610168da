// A wallet on disk, as the wallet program leaves it: a document, its row in the registry, and this program
// started beside it. With one wallet in the registry it is bound at once.
#pragma once

#include <string>

#include "base/json_file.h"
#include "sandbox/keys.h"
#include "tests/support/test_home.h"
#include "wallet/binds.h"

inline const std::string ONE_WALLET_ID = "w1700000000001";
inline const std::string ONE_WALLET_WORDS =
    "abandon abandon abandon abandon abandon abandon abandon abandon abandon abandon abandon about";
// Words of another wallet, for tests that switch.
inline const std::string OTHER_WORDS =
    "legal winner thank year wave sausage worth useful legal winner thank yellow";
inline const std::string ONE_WALLET_PATH = "/wallets/" + ONE_WALLET_ID + "/wallet.json";

inline Json one_wallet_document(const std::string& words = ONE_WALLET_WORDS) {
    return {{"version", 2}, {"mnemonic", words}, {"backup", true}, {"recv", {0, 0, 0, 0, 0, 0}}, {"show", 0}};
}

inline void add_wallet(const TestHome& home, const std::string& id, const Json& document) {
    Json registry = home.read_json("/wallets.json");
    if (!registry.is_object()) registry = {{"wallets", Json::array()}};
    registry["wallets"].push_back({{"id", id}, {"name", "Wallet " + id}});
    home.write("/wallets.json", registry);
    home.write("/wallets/" + id + "/wallet.json", document);
}

inline void start_program_in(const TestHome& home) {
    qv_clasp_init(home.folder() + "/program", "The Bursaria");
}

inline void bind_one_wallet(const TestHome& home, const Json& document = one_wallet_document()) {
    add_wallet(home, ONE_WALLET_ID, document);
    start_program_in(home);
}

// Keys of that wallet as the sandbox derives them.
inline sandbox::KeyPair one_wallet_key(const std::string& path) {
    return sandbox::derive(ONE_WALLET_WORDS, "m/44'/236'/" + path);
}
inline std::string receive_address(unsigned index) {
    return one_wallet_key("1'/0/" + std::to_string(index)).address;
}
