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

template <typename TakeRow>
void for_each_row(const std::string& path, const char* array_key, const TakeRow& take) {
    Json document;
    if (!read_sibling_file(path, document)) return;
    const Json& rows = json_member(document, array_key);
    if (rows.is_array()) std::for_each(rows.begin(), rows.end(), take);
}

void add_bazaar(SiblingReserves& reserves) {
    for_each_row(reserves_path("/bazaar"), "reserves",
                 [&](const Json& row) { reserves.keys.insert(normalised(json_text(row, "utxo"))); });
}

void add_atelier(SiblingReserves& reserves) {
    for_each_row(reserves_path("/atelier"), "reserves", [&](const Json& row) {
        if (has_expired(row)) return;
        for (const char* key : {"pic_utxo", "cert_utxo"})
            reserves.keys.insert(normalised(json_text(row, key)));
    });
}

void add_swapfloor(SiblingReserves& reserves) {
    for_each_row(reserves_path("/swapfloor"), "holds",
                 [&](const Json& row) { reserves.keys.insert(json_text(row, "utxo")); });
}

void add_offer_locks(SiblingReserves& reserves) {
    for_each_row(offer_locks_path(), "utxos", [&](const Json& lock) {
        if (lock.is_string()) reserves.keys.insert(ascii_lower(lock.get_ref<const std::string&>()));
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

SiblingReserves read_sibling_reserves() {
    SiblingReserves reserves;
    add_bazaar(reserves);
    add_atelier(reserves);
    add_swapfloor(reserves);
    add_offer_locks(reserves);
    return reserves;
}

bool is_reserved_by_sibling(const SiblingReserves& reserves, std::string_view txid, std::uint32_t vout) {
    return !reserves.keys.empty() && reserves.keys.contains(sibling_key(txid, vout));
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
