// wallets.json, the registry of all wallets of the family, its lock and the migration from the old layout.
//
// The lock has two layers: a recursive mutex of the process, and an exclusive lock on "wallets.lock", taken
// once for nested holds; a lock file that does not open leaves the mutex alone. It is never held across a
// network call. It may be taken while the wallet mutex is held, never the other way round. A registry that
// does not parse reads as empty.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "base/json_file.h"

void qv_clasp_registry_lock();
void qv_clasp_registry_unlock();

// Holds the registry lock while it lives.
class RegistryLock {
 public:
    RegistryLock() { qv_clasp_registry_lock(); }
    ~RegistryLock() { qv_clasp_registry_unlock(); }
    RegistryLock(const RegistryLock&) = delete;
    RegistryLock& operator=(const RegistryLock&) = delete;
};

// Always an object with an array under `wallets`.
Json qv_clasp_read_registry();
// Replaces the file in one atomic step.
bool qv_clasp_write_registry(const Json& registry);
// Moves the document of the old single-wallet layout into the registry, if the registry is empty.
void qv_clasp_migrate();

// Pairs of id and name; an empty name is replaced by the id.
std::vector<std::pair<std::string, std::string>> qv_clasp_list_wallets();
// The name of the wallet, or the id itself if there is no such row.
std::string qv_clasp_wallet_name(const std::string& id);
// Names the row after the session's paymail. Callers hold the wallet mutex.
void qv_clasp_set_wallet_name(const std::string& id);
