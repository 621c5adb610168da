#include "wallet/binds.h"

#include "base/json_file.h"
#include "base/ranked_mutex.h"
#include "base/text.h"
#include "wallet/data_root.h"
#include "wallet/wallet_registry.h"

namespace {

constexpr std::size_t LONGEST_KEY = 96;

// Written by qv_clasp_init, before any other thread runs.
struct Identity {
    bool app_mode = false;
    std::string app_name = "App";
    std::string app_instance = ".";
};

// This one and the next are never destroyed: a detached worker may read them while the process ends.
Identity& identity() {
    static auto& the_identity = *new Identity;
    return the_identity;
}

struct ActiveWallet {
    RankedMutex<LockRank::Leaf> mutex;
    std::string id;
};

ActiveWallet& active_wallet() {
    static auto& the_wallet = *new ActiveWallet;
    return the_wallet;
}

std::string wallet_id_of_bind() {
    Json bind;
    read_json_file(qv_clasp_bind_path(), bind);
    return json_text(bind, "wallet_id");
}

// With exactly one wallet on the machine there is nothing to ask the user.
std::string only_wallet_id() {
    const Json registry = qv_clasp_read_registry();
    const Json& wallets = json_member(registry, "wallets");
    return wallets.size() == 1 ? json_text(wallets.front(), "id") : "";
}

}  // namespace

void qv_clasp_init(const std::string& instance, const std::string& app) {
    const RegistryLock lock;
    identity() = {true, app.empty() ? "App" : app, instance.empty() ? "." : instance};
    qv_clasp_migrate();
    qv_clasp_set_active_wallet_id(wallet_id_of_bind());
    if (qv_clasp_active_wallet_id().empty()) qv_clasp_write_bind(only_wallet_id());
}

bool qv_clasp_app_mode() {
    return identity().app_mode;
}

const std::string& qv_clasp_app_name() {
    return identity().app_name;
}

const std::string& qv_clasp_app_instance() {
    return identity().app_instance;
}

std::string qv_clasp_active_wallet_id() {
    const std::lock_guard lock(active_wallet().mutex);
    return active_wallet().id;
}

void qv_clasp_set_active_wallet_id(const std::string& wallet_id) {
    const std::lock_guard lock(active_wallet().mutex);
    active_wallet().id = wallet_id;
}

std::string qv_clasp_bind_key(std::string_view instance) {
    std::string key = ascii_lower(replace_unsafe(instance, ""));
    if (key.size() > LONGEST_KEY) key.erase(0, key.size() - LONGEST_KEY);
    return key.empty() ? "default" : key;
}

std::string qv_clasp_bind_path() {
    const std::string folder = qv_data_root() + "/binds";
    make_folder(folder);
    return folder + "/" + qv_clasp_bind_key(qv_clasp_app_instance()) + ".json";
}

std::string qv_clasp_read_bind() {
    return qv_clasp_app_mode() ? wallet_id_of_bind() : qv_clasp_active_wallet_id();
}

void qv_clasp_write_bind(const std::string& wallet_id) {
    if (!qv_clasp_app_mode() || wallet_id.empty()) return;
    qv_clasp_set_active_wallet_id(wallet_id);
    const Json bind = {
        {"app", qv_clasp_app_name()}, {"instance", qv_clasp_app_instance()}, {"wallet_id", wallet_id}};
    write_text_file(qv_clasp_bind_path(), dump_json(bind, 2));
}

void qv_clasp_drop_bind() {
    if (!qv_clasp_app_mode()) return;
    remove_file(qv_clasp_bind_path());
    qv_clasp_set_active_wallet_id("");
}
