#include "records/record_files.h"

#include "base/json_file.h"
#include "base/text.h"
#include "wallet/binds.h"
#include "wallet/data_root.h"

static std::string wallet_file_path(const char* ending) {
    return record_folder() + "/" + record_wallet_key() + ending;
}

std::string record_folder() {
    std::string folder = qv_data_root() + "/bursaria";
    make_folder(folder);
    return folder;
}

std::string record_wallet_key() {
    constexpr std::size_t MOST_BYTES = 64;
    const std::string wallet_id = qv_clasp_active_wallet_id();
    std::string key = replace_unsafe(wallet_id.empty() ? "none" : wallet_id, "-_");
    if (key.empty()) key = "wallet";
    if (key.size() > MOST_BYTES) key.resize(MOST_BYTES);
    return key;
}

std::string settings_file_path() {
    return record_folder() + "/ui.json";
}

std::string ledger_file_path() {
    return wallet_file_path("_paid.json");
}

std::string notes_file_path() {
    return wallet_file_path("_holder_notes.json");
}

std::string vaults_file_path() {
    return wallet_file_path("_vaults.json");
}
