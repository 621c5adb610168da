#include "spend/sibling_reserves.h"

#include <algorithm>
#include <initializer_list>
#include <limits>
#include <string>
#include <system_error>

#include "base/clock.h"
#include "base/json_file.h"
#include "base/text.h"
#include "wallet/binds.h"
#include "wallet/coin_records.h"
#include "wallet/data_root.h"

namespace {

constexpr std::size_t LONGEST_FILE_ID = 64;
constexpr std::size_t TXID_LENGTH = 64;
constexpr std::uintmax_t LARGEST_SIBLING_FILE = 16U << 20U;

std::string wallet_id_or_none() {
    const std::string id = qv_clasp_active_wallet_id();
    return id.empty() ? "none" : id;
}

std::string reserves_file_id() {
    const std::string id = replace_unsafe(wallet_id_or_none(), "-_");
    return id.empty() ? "wallet" : id.substr(0, LONGEST_FILE_ID);
}

// The offer locks are named by another rule: what does not fit is dropped, not replaced.
std::string offer_locks_file_id() {
    std::string id = wallet_id_or_none();
    std::erase_if(id, [](char c) { return !is_ascii_alnum(c) && c != '-' && c != '_'; });
    return id.empty() ? "none" : id.substr(0, LONGEST_FILE_ID);
}

std::string reserves_path(const char* app_folder) {
    return qv_data_root() + app_folder + "/reserves_" + reserves_file_id() + ".json";
}

std::string offer_locks_path() {
    return qv_data_root() + "/atelier/offer_locks_" + offer_locks_file_id() + ".json";
}

bool read_sibling_file(const std::string& path, Json& document_out) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(utf8_path(path), error);
    return !error && size <= LARGEST_SIBLING_FILE && read_json_file(path, document_out);
}

// The siblings' own form of an outpoint: lower-case txid, "_", output number.
std::string sibling_key(std::string_view txid, std::uint32_t vout) {
    return ascii_lower(txid) + "_" + std::to_string(vout);
}

std::string normalised(std::string text) {
    text = ascii_lower(text);
    std::ranges::replace(text, ':', '_');
    return text;
}

bool has_expired(const Json& row) {
    std::int64_t expires_at = 0;
    return json_whole(json_member(row, "exp"), expires_at) && expires_at > 0 && expires_at < unix_seconds();
}

template <typename RowTest>
bool any_row(const char* app_folder, const char* array_key, const RowTest& is_match) {
    Json document;
    if (!read_sibling_file(reserves_path(app_folder), document)) return false;
    const Json& rows = json_member(document, array_key);
    return rows.is_array() && std::any_of(rows.begin(), rows.end(), is_match);
}

bool is_reserved_by_bazaar(const std::string& key) {
    return any_row("/bazaar", "reserves",
                   [&](const Json& row) { return normalised(json_text(row, "utxo")) == key; });
}

bool is_reserved_by_atelier(const std::string& key) {
    return any_row("/atelier", "reserves", [&](const Json& row) {
        if (has_expired(row)) return false;
        return normalised(json_text(row, "pic_utxo")) == key ||
               normalised(json_text(row, "cert_utxo")) == key;
    });
}

bool is_held_by_swapfloor(const std::string& key) {
    return any_row("/swapfloor", "holds", [&](const Json& row) { return json_text(row, "utxo") == key; });
}

bool is_offer_locked(const std::string& key) {
    Json document;
    if (!read_sibling_file(offer_locks_path(), document)) return false;
    const Json& locks = json_member(document, "utxos");
    return locks.is_array() && std::any_of(locks.begin(), locks.end(), [&](const Json& lock) {
               return lock.is_string() && ascii_lower(lock.get_ref<const std::string&>()) == key;
           });
}

// The lock names a coin that this wallet has spent.
bool is_lock_of_spent(std::string_view lock) {
    if (lock.size() <= TXID_LENGTH || lock[TXID_LENGTH] != '_') return false;
    const std::string_view txid = lock.substr(0, TXID_LENGTH);
    unsigned long long vout = 0;
    if (!is_hex64(txid) || !parse_u64(lock.substr(TXID_LENGTH + 1), vout)) return false;
    return vout <= std::numeric_limits<std::uint32_t>::max() &&
           qv_clasp_is_spent(txid, static_cast<std::uint32_t>(vout));
}

}  // namespace

bool is_reserved_by_sibling(std::string_view txid, std::uint32_t vout) {
    const std::string key = sibling_key(txid, vout);
    return is_reserved_by_bazaar(key) || is_reserved_by_atelier(key) || is_held_by_swapfloor(key) ||
           is_offer_locked(key);
}

void prune_offer_locks() {
    const std::string path = offer_locks_path();
    Json document;
    if (!read_sibling_file(path, document)) return;
    const Json& locks = json_member(document, "utxos");
    if (!locks.is_array()) return;
    Json kept = Json::array();
    bool dropped = false;
    for (const Json& entry : locks) {
        if (!entry.is_string()) continue;
        std::string lock = ascii_lower(entry.get_ref<const std::string&>());
        const bool is_spent = is_lock_of_spent(lock);
        dropped = dropped || is_spent;
        if (!is_spent) kept.push_back(std::move(lock));
    }
    if (!dropped) return;
    document["utxos"] = std::move(kept);
    write_text_file(path, dump_json(document, 2));
}
