#include "index/holder_entries.h"

#include <unordered_map>
#include <utility>

#include "base/decimal_text.h"
#include "base/text.h"
#include "index/own_addresses.h"
#include "paymail/paymail_resolve.h"
#include "wallet/address.h"
#include "wallet/name_registry.h"

namespace {

// What the directories say of one owner.
struct Identity {
    std::string alias;
    std::string pubkey;
    std::string pay_address;
    bool token_address = false;
};

void fill(std::string& slot, const std::string& text) {
    if (slot.empty()) slot = text;
}

// A directory's text that is no address would later be read as a name, and pay whoever owns that.
std::string address_or_nothing(const std::string& text) {
    Hash160 hash{};
    return qv_clasp_address_to_hash160(text, hash) ? text : "";
}

Identity ask_local(const NameRegistrySnapshot& registry, const std::string& owner) {
    NameRegistryMatch match;
    if (!qv_clasp_registry_lookup(registry, owner, match)) return {};
    return {match.name, ascii_lower(match.pubkey), address_or_nothing(match.pay_address), match.ordinal_side};
}

void ask_remote(const std::string& owner, Identity& identity) {
    std::string alias;
    std::string pubkey;
    std::string pay_address;
    std::string kind;
    const bool named = qv_clasp_lookup_holder(owner, alias, pubkey, pay_address, kind);
    // An address that the host knows as a token's is one also where it has no name for it: BSV sent there
    // might not be found again.
    if (kind == "ordinal" || kind == "bn") identity.token_address = true;
    if (!named) return;
    fill(identity.alias, alias);
    fill(identity.pubkey, pubkey);
    fill(identity.pay_address, address_or_nothing(pay_address));
}

// The answers of one snapshot, failures included, so that each owner is asked once.
class Directory {
 public:
    explicit Directory(std::size_t owners) { answers_.reserve(owners); }

    const Identity& of(const std::string& owner) {
        const auto [slot, fresh] = answers_.try_emplace(owner);
        Identity& identity = slot->second;
        if (!fresh || owner.empty()) return identity;
        identity = ask_local(registry_, owner);
        if (identity.alias.empty() || identity.pubkey.empty() || identity.pay_address.empty()) {
            ask_remote(owner, identity);
        }
        return identity;
    }

 private:
    NameRegistrySnapshot registry_ = qv_clasp_registry_snapshot();
    std::unordered_map<std::string, Identity> answers_;
};

void add_to_entry(HolderEntry& entry, const HolderTxo& row, const Identity& identity, bool wallet_owned) {
    entry.lots = dec_add(entry.lots, row.lots);
    fill(entry.pubkey, identity.pubkey);
    fill(entry.alias, identity.alias);
    fill(entry.pay_address, identity.pay_address);
    fill(entry.owner, row.owner);
    entry.token_address = entry.token_address || identity.token_address;
    entry.wallet_owned = entry.wallet_owned || wallet_owned;
}

}  // namespace

bool aggregate_holders(const std::vector<HolderTxo>& rows, const SnapshotWallet& wallet,
                       std::vector<HolderEntry>& entries_out) {
    Directory directory(rows.size());
    std::unordered_map<std::string, std::size_t> place_of_key;
    place_of_key.reserve(rows.size());
    for (const HolderTxo& row : rows) {
        if (row.lots.empty() || row.lots == "0") continue;
        if (generation_moved(wallet.generation)) return false;
        const Identity& identity = directory.of(row.owner);
        if (identity.pubkey.empty() && row.owner.empty()) continue;
        const std::string key = identity.pubkey.empty() ? "a:" + row.owner : "p:" + identity.pubkey;
        const auto [slot, fresh] = place_of_key.try_emplace(key, entries_out.size());
        if (fresh) entries_out.emplace_back();
        const bool same_identity = !wallet.identity_pub.empty() && wallet.identity_pub == identity.pubkey;
        add_to_entry(entries_out[slot->second], row, identity, same_identity || wallet.owns(row));
    }
    return true;
}
