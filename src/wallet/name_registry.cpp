#include "wallet/name_registry.h"

#include <algorithm>
#include <array>

#include "base/json_file.h"
#include "base/ranked_mutex.h"
#include "base/settings.h"
#include "base/text.h"
#include "wallet/data_root.h"
#include "wallet/wallet_session.h"

namespace {

constexpr std::string_view FILE_NAME = "/quorvelle_paymail.json";
// Where the registry lay before the family had a data folder: beside the program.
constexpr std::string_view OLD_FOLDER = "userinfo";
constexpr int NO_LIMIT = -1;
constexpr int DEV_LIMIT = 20;
constexpr int PLAIN_LIMIT = 10;

using NamesMutex = RankedMutex<LockRank::Registry, std::recursive_mutex>;

// Never destroyed: a detached worker may hold it while the process ends.
NamesMutex& names_mutex() {
    static auto& the_mutex = *new NamesMutex;
    return the_mutex;
}

class NamesLock {
 public:
    NamesLock() : hold_(names_mutex()) {}

 private:
    std::lock_guard<NamesMutex> hold_;
};

bool qv_clasp_registry_save(const Json& registry) {
    return write_text_file(qv_data_root() + std::string(FILE_NAME), dump_json(registry, 2));
}

Json parse_registry(const std::string& content) {
    Json registry;
    parse_json(content, registry);
    return registry.is_object() ? registry : Json::object();
}

// Always an object.
Json qv_clasp_registry_load() {
    std::string content;
    if (read_text_file(qv_data_root() + std::string(FILE_NAME), content)) return parse_registry(content);
    if (!read_text_file(std::string(OLD_FOLDER) + std::string(FILE_NAME), content)) return Json::object();
    Json moved = parse_registry(content);
    qv_clasp_registry_save(moved);
    return moved;
}

// The object under `key`, made if something else or nothing is there.
Json& object_member(Json& registry, const char* key) {
    Json& member = registry[key];
    if (!member.is_object()) member = Json::object();
    return member;
}

std::string pubkey_of(const Json& row) {
    return ascii_lower(json_text(row, "pubkey"));
}

bool belongs_to(const Json& row, const std::string& pubkey) {
    return row.is_object() && pubkey_of(row) == pubkey;
}

bool has_address_form(std::string_view text) {
    return text.size() >= 26 && text.size() <= 35 && text.front() == '1' && !contains(text, "_");
}

// The name of the last claim on this machine, if that identity owns it.
std::string self_name_of(const Json& registry, const std::string& pubkey) {
    const std::string self = qv_clasp_clean_name(json_text(registry, "self"));
    return belongs_to(json_member(json_member(registry, "names"), self), pubkey) ? self : "";
}

// `name` as it came from `old_row` or else from the first row of the identity that has one.
std::string inherited_text(const Json& old_row, const Json& names, const std::string& pubkey, const char* key,
                           const std::string& before_others = "") {
    std::string text = json_text(old_row, key);
    if (text.empty()) text = before_others;
    for (auto row = names.begin(); text.empty() && row != names.end(); ++row) {
        if (belongs_to(*row, pubkey)) text = json_text(*row, key);
    }
    return text;
}

// Empty, or why the identity may not have the name.
std::string refusal(const Json& registry, const std::string& name, const std::string& pubkey) {
    const Json& names = json_member(registry, "names");
    if (names.contains(name)) {
        const std::string owner = pubkey_of(json_member(names, name));
        const bool taken = !owner.empty() && owner != pubkey;
        return taken ? name + "@" + settings().home_domain + " is already taken" : "";
    }
    const int limit = qv_clasp_role_quota(json_text(registry, "host_role"));
    const auto owned =
        std::count_if(names.begin(), names.end(), [&](const Json& row) { return belongs_to(row, pubkey); });
    if (limit == NO_LIMIT || owned < limit) return "";
    return "paymail quota reached (" + std::to_string(limit) + " free labels per identity)";
}

Json claimed_row(const Json& registry, const std::string& name, const std::string& pubkey,
                 const std::string& address) {
    const Json& names = json_member(registry, "names");
    const Json& old_row = json_member(names, name);
    Json row = {{"pubkey", pubkey}};
    if (!address.empty()) row["address"] = address;
    const std::string ord = inherited_text(old_row, names, pubkey, "ord");
    if (!ord.empty()) row["ord"] = ord;
    const std::string own_avatar = json_text(json_member(registry, "avatars"), pubkey);
    const std::string avatar = inherited_text(old_row, names, pubkey, "avatar", own_avatar);
    if (!avatar.empty()) row["avatar"] = avatar;
    return row;
}

std::string accepted_role(const std::string& role) {
    constexpr std::array<std::string_view, 4> ACCEPTED = {"dev", "agent", "operator", "architect"};
    const std::string lower = ascii_lower(role);
    return std::find(ACCEPTED.begin(), ACCEPTED.end(), lower) != ACCEPTED.end() ? lower : "";
}

// True if the row changed.
bool set_row_ordinal_address(Json& row, const std::string& address) {
    bool changed = false;
    if (json_text(row, "ordAddress") != address) {
        row["ordAddress"] = address;
        changed = true;
    }
    if (has_address_form(json_text(row, "ord"))) {
        row.erase("ord");
        changed = true;
    }
    return changed;
}

// Puts the text under the key, or takes the key away for an empty one.
void set_or_erase(Json& object, const std::string& key, const std::string& text) {
    if (text.empty())
        object.erase(key);
    else
        object[key] = text;
}

}  // namespace

std::string qv_clasp_clean_alias(std::string_view text) {
    text = trim(text, "@$ ", " \r\n");
    return ascii_lower(text.substr(0, text.find('@')));
}

std::string qv_clasp_clean_name(std::string_view text) {
    std::string name = qv_clasp_clean_alias(text);
    std::erase_if(name, [](char c) { return !is_ascii_alnum(c) && c != '-' && c != '.' && c != '_'; });
    return name;
}

std::string qv_clasp_normalize_dest(std::string_view text) {
    text = trim_white(text);
    text.remove_prefix(std::min(text.find_first_not_of("@$"), text.size()));
    text = trim_white(text);
    if (text.size() >= 26 && text.front() == '1') return std::string(text);
    std::string dest = ascii_lower(text);
    const std::size_t at = dest.find('@');
    if (at != std::string::npos && dest.substr(at + 1) == settings().home_domain) dest.erase(at);
    return dest;
}

int qv_clasp_role_quota(std::string_view role) {
    const std::string lower = ascii_lower(role);
    if (lower == "architect") return NO_LIMIT;
    return lower == "dev" ? DEV_LIMIT : PLAIN_LIMIT;
}

std::string qv_clasp_registry_name_for(const std::string& pubkey) {
    const std::string owner = ascii_lower(pubkey);
    if (owner.empty()) return "";
    const NamesLock lock;
    const Json registry = qv_clasp_registry_load();
    const Json& names = json_member(registry, "names");
    if (!names.is_object()) return "";
    std::string best = self_name_of(registry, owner);
    if (!best.empty()) return best;
    for (const auto& [key, row] : names.items()) {
        const std::string name = belongs_to(row, owner) ? qv_clasp_clean_name(key) : "";
        if (!name.empty() && (best.empty() || name < best)) best = name;
    }
    return best;
}

std::string qv_clasp_registry_claim(const std::string& name, const std::string& pubkey,
                                    const std::string& address) {
    const std::string clean = qv_clasp_clean_name(name);
    if (clean.empty()) return "need a paymail name (letters, numbers, _ - .)";
    const std::string owner = ascii_lower(pubkey);
    if (owner.empty()) return "no Clasp identity pubkey";
    const NamesLock lock;
    Json registry = qv_clasp_registry_load();
    Json& names = object_member(registry, "names");
    const std::string error = refusal(registry, clean, owner);
    if (!error.empty()) return error;
    names[clean] = claimed_row(registry, clean, owner, address);
    registry["self"] = clean;
    return qv_clasp_registry_save(registry) ? "" : "could not write paymail registry";
}

std::string qv_clasp_registry_address(const std::string& name) {
    const NamesLock lock;
    const Json registry = qv_clasp_registry_load();
    return json_text(json_member(json_member(registry, "names"), qv_clasp_clean_name(name)), "address");
}

void qv_clasp_registry_set_role(const std::string& role) {
    const std::string fresh = accepted_role(role);
    const NamesLock lock;
    Json registry = qv_clasp_registry_load();
    if (json_text(registry, "host_role") == fresh) return;
    set_or_erase(registry, "host_role", fresh);
    qv_clasp_registry_save(registry);
}

void qv_clasp_registry_set_ordinal_address(const std::string& address) {
    const std::string owner = ascii_lower(qv_clasp_session().identity_pub);
    if (owner.empty() || !has_address_form(address)) return;
    const NamesLock lock;
    Json registry = qv_clasp_registry_load();
    if (!json_member(registry, "names").is_object()) return;
    bool changed = false;
    for (Json& row : registry["names"]) {
        if (belongs_to(row, owner) && set_row_ordinal_address(row, address)) changed = true;
    }
    if (changed) qv_clasp_registry_save(registry);
}

std::string qv_clasp_registry_set_avatar(const std::string& pubkey, const std::string& avatar) {
    const std::string owner = ascii_lower(pubkey);
    if (owner.empty()) return "no identity pubkey";
    const NamesLock lock;
    Json registry = qv_clasp_registry_load();
    Json& names = object_member(registry, "names");
    set_or_erase(object_member(registry, "avatars"), owner, avatar);
    for (Json& row : names) {
        if (belongs_to(row, owner)) set_or_erase(row, "avatar", avatar);
    }
    return qv_clasp_registry_save(registry) ? "" : "could not write paymail registry";
}

NameRegistrySnapshot qv_clasp_registry_snapshot() {
    const NamesLock lock;
    const Json registry = qv_clasp_registry_load();
    NameRegistrySnapshot snapshot;
    const Json& names = json_member(registry, "names");
    if (!names.is_object()) return snapshot;
    for (const auto& [key, row] : names.items()) {
        NameRegistryMatch match;
        match.pubkey = pubkey_of(row);
        match.pay_address = json_text(row, "address");
        match.ord_address = json_text(row, "ordAddress");
        const std::string self = match.pubkey.empty() ? "" : self_name_of(registry, match.pubkey);
        match.name = self.empty() ? key : self;
        for (const std::string& address : {match.pay_address, match.ord_address, json_text(row, "ord")}) {
            // A row without an address belongs to nobody's search.
            if (address.empty()) continue;
            match.ordinal_side = address != match.pay_address;
            snapshot.by_address.try_emplace(address, match);
        }
    }
    return snapshot;
}

bool qv_clasp_registry_lookup(const NameRegistrySnapshot& registry, const std::string& address,
                              NameRegistryMatch& match) {
    const auto found = registry.by_address.find(address);
    match = found == registry.by_address.end() ? NameRegistryMatch{} : found->second;
    return found != registry.by_address.end();
}

bool qv_clasp_registry_lookup(const std::string& address, NameRegistryMatch& match) {
    return qv_clasp_registry_lookup(qv_clasp_registry_snapshot(), address, match);
}
