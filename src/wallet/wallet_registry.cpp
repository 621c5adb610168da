#include "wallet/wallet_registry.h"

#include <optional>

#include "base/ranked_mutex.h"
#include "platform/file_lock.h"
#include "platform/file_replace.h"
#include "wallet/data_root.h"
#include "wallet/document_path.h"
#include "wallet/wallet_session.h"

namespace {

struct RegistryLockState {
    RankedMutex<LockRank::Registry, std::recursive_mutex> mutex;
    // Guarded by the mutex.
    int depth = 0;
    std::optional<FileLock> file;
};

// Never destroyed: a detached worker may hold the lock while the process ends.
RegistryLockState& lock_state() {
    static auto& the_state = *new RegistryLockState;
    return the_state;
}

std::string registry_path() {
    return qv_data_root() + "/wallets.json";
}

// Whether the move worked is not asked: the row of a wallet whose document stayed behind leads to a failed
// load, which the user is told of.
void adopt_root_document(const std::string& wallet_id) {
    make_folder(qv_data_root() + "/wallets/" + wallet_id);
    move_file(root_document_path(), wallet_document_path(wallet_id));
}

}  // namespace

void qv_clasp_registry_lock() {
    RegistryLockState& state = lock_state();
    state.mutex.lock();
    if (++state.depth == 1) state.file.emplace(qv_data_root() + "/wallets.lock");
}

void qv_clasp_registry_unlock() {
    RegistryLockState& state = lock_state();
    if (--state.depth == 0) state.file.reset();
    state.mutex.unlock();
}

Json qv_clasp_read_registry() {
    Json registry;
    read_json_file(registry_path(), registry);
    if (!registry.is_object()) registry = Json::object();
    if (!json_member(registry, "wallets").is_array()) registry["wallets"] = Json::array();
    return registry;
}

bool qv_clasp_write_registry(const Json& registry) {
    const std::string path = registry_path();
    const std::string fresh = path + ".tmp";
    if (!write_text_file(fresh, dump_json(registry, 2) + "\n")) return false;
    if (replace_file(fresh, path)) return true;
    remove_file(fresh);
    return false;
}

void qv_clasp_migrate() {
    const RegistryLock lock;
    if (!file_exists(root_document_path())) return;
    Json registry = qv_clasp_read_registry();
    if (!registry["wallets"].empty()) return;
    const std::string wallet_id = qv_clasp_new_id();
    adopt_root_document(wallet_id);
    registry["wallets"].push_back({{"id", wallet_id}, {"name", "Wallet 1"}});
    registry["active"] = wallet_id;
    qv_clasp_write_registry(registry);
}

std::vector<std::pair<std::string, std::string>> qv_clasp_list_wallets() {
    const RegistryLock lock;
    const Json registry = qv_clasp_read_registry();
    std::vector<std::pair<std::string, std::string>> wallets;
    for (const Json& row : json_member(registry, "wallets")) {
        const std::string id = json_text(row, "id");
        const std::string name = json_text(row, "name");
        if (!id.empty()) wallets.emplace_back(id, name.empty() ? id : name);
    }
    return wallets;
}

std::string qv_clasp_wallet_name(const std::string& id) {
    for (const auto& [wallet_id, name] : qv_clasp_list_wallets()) {
        if (wallet_id == id) return name;
    }
    return id;
}

void qv_clasp_set_wallet_name(const std::string& id) {
    const std::string& name = qv_clasp_session().paymail;
    if (id.empty() || name.empty()) return;
    const RegistryLock lock;
    Json registry = qv_clasp_read_registry();
    for (Json& row : registry["wallets"]) {
        if (json_text(row, "id") != id) continue;
        // Each status report comes here: a row that has its name already is not worth a write to the disk.
        if (json_text(row, "name") == name) return;
        row["name"] = name;
        qv_clasp_write_registry(registry);
        return;
    }
}
