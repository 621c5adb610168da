// quorvelle_paymail.json, the family's local registry of paymail names on this machine. There is no cache:
// each operation reads the file, and writes it whole if it changed something. One recursive mutex guards it
// within the process and may be taken under the wallet mutex; nothing guards it between processes. No network
// here.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

// A name as it is stored: no "@", "$" or blanks before it, cut at the first "@", lower case, only a-z 0-9 - .
// _
std::string qv_clasp_clean_name(std::string_view text);
// The lighter form for a name read from a wallet document: every byte before the "@" is kept.
std::string qv_clasp_clean_alias(std::string_view text);
// A handle, paymail or address in its normal form: no blanks around it, no "@" or "$" before it, an address
// in its own case, a name in lower case, without the family's domain.
std::string qv_clasp_normalize_dest(std::string_view text);
// Names an identity may own in a role; -1 for no limit.
int qv_clasp_role_quota(std::string_view role);

// The name of an identity: the last one claimed here if it is its own, else the smallest; empty if it has
// none.
std::string qv_clasp_registry_name_for(const std::string& pubkey);
// Gives the name to the identity. Empty on success, else the error text. `address` may be empty.
std::string qv_clasp_registry_claim(const std::string& name, const std::string& pubkey,
                                    const std::string& address);
// The address that a name pays to, or empty.
std::string qv_clasp_registry_address(const std::string& name);
// The role that the host gave this identity; any value outside the accepted ones removes it.
void qv_clasp_registry_set_role(const std::string& role);
// Tells the registry the session identity's current ordinal address. Callers hold the wallet mutex.
void qv_clasp_registry_set_ordinal_address(const std::string& address);
// Sets (or, when empty, removes) the avatar of an identity and of its names; empty on success, else the error
// text.
std::string qv_clasp_registry_set_avatar(const std::string& pubkey, const std::string& avatar);

struct NameRegistryMatch {
    std::string name;
    std::string pubkey;       // lower case
    std::string pay_address;  // the row's address
    std::string ord_address;
    bool ordinal_side = false;  // the address that matched is not the one that the name pays to
};
// The row that an address belongs to, by its payment or ordinal address.
bool qv_clasp_registry_lookup(const std::string& address, NameRegistryMatch& match);

// The registry as one reading found it, for many look-ups in a row: the first row of each address.
struct NameRegistrySnapshot {
    std::unordered_map<std::string, NameRegistryMatch> by_address;
};
NameRegistrySnapshot qv_clasp_registry_snapshot();
// The same look-up, without reading the file.
bool qv_clasp_registry_lookup(const NameRegistrySnapshot& registry, const std::string& address,
                              NameRegistryMatch& match);
