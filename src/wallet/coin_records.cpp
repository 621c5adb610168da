#include "wallet/coin_records.h"

#include <algorithm>
#include <fstream>
#include <limits>
#include <map>
#include <system_error>

#include "base/clock.h"
#include "base/json_file.h"
#include "base/text.h"
#include "wallet/address.h"
#include "wallet/data_root.h"
#include "wallet/session_keys.h"
#include "wallet/wallet_session.h"

namespace {

constexpr std::size_t TXID_LENGTH = 64;
constexpr std::int64_t CACHE_FRESH_NS = 8'000'000'000;
constexpr std::int64_t ORDINALS_FRESH_NS = 20'000'000'000;
constexpr std::int64_t EXPIRED_AGE_NS = 30'000'000'000;
constexpr std::uintmax_t LARGEST_RECORD_FILE = 64U << 20U;
constexpr std::size_t COMPARED_END = 512;
constexpr std::string_view SPENT_TEXT_START = R"({"outpoints":[)";
constexpr std::string_view SPENT_TEXT_END = "]}";

// A record file and its text as last read or written. A text that could not be written stands for the file.
struct RecordFile {
    const char* suffix;
    std::string scope{};
    std::string text{};
    bool only_here = false;
    bool is_own_text = false;  // written here, so its form is known
    // When the file was last found to hold `text`; its size is the text's.
    bool was_in_step = false;
    std::filesystem::file_time_type time{};
};

RecordFile spent_file{"_spent.json"};
RecordFile change_file{"_change.json"};
// How many keys the set had when it and the text of the file were the same.
std::size_t spent_keys_in_file = 0;
QvClaspCoinRecords coin_records;

std::string key_of(std::string lower_txid, std::uint32_t vout) {
    return std::move(lower_txid) + ":" + std::to_string(vout);
}

bool is_outpoint_key(std::string_view key) {
    if (key.size() <= TXID_LENGTH || key[TXID_LENGTH] != ':' || !is_hex64(key.substr(0, TXID_LENGTH)))
        return false;
    unsigned long long vout = 0;
    return parse_u64(key.substr(TXID_LENGTH + 1), vout) && vout <= std::numeric_limits<std::uint32_t>::max();
}

// True if the file last belonged to another wallet: what is in memory is that wallet's.
bool entered_other_scope(RecordFile& file) {
    std::string scope = qv_clasp_scope_key();
    if (scope == file.scope) return false;
    const bool had_scope = !file.scope.empty();
    file.scope = std::move(scope);
    file.text.clear();
    file.only_here = false;
    file.is_own_text = false;
    file.was_in_step = false;
    return had_scope;
}

bool is_written_to_disk(const RecordFile& file) {
    return !file.scope.empty() && file.scope != "wallet";
}

std::string record_path(const RecordFile& file) {
    return qv_data_root() + "/ord_snap/" + file.scope + file.suffix;
}

bool read_record(const RecordFile& file, std::string& text_out) {
    if (file.only_here) {
        text_out = file.text;
        return true;
    }
    if (!is_written_to_disk(file)) return false;
    const std::string path = record_path(file);
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(utf8_path(path), error);
    return !error && size <= LARGEST_RECORD_FILE && read_text_file(path, text_out);
}

// The file holds `text` now, as it was read or written a moment ago.
void note_in_step(RecordFile& file) {
    std::error_code error;
    file.time = std::filesystem::last_write_time(utf8_path(record_path(file)), error);
    file.was_in_step = !error;
}

// The file is the one that held `text`, by its size, its time and its end. Who adds a coin changes the size,
// and who replaces some changes the end, also within one tick of the file's time.
bool is_as_left(const RecordFile& file) {
    if (!file.was_in_step || file.only_here || !is_written_to_disk(file)) return false;
    const std::filesystem::path path = utf8_path(record_path(file));
    std::error_code error;
    if (std::filesystem::file_size(path, error) != file.text.size() || error) return false;
    if (std::filesystem::last_write_time(path, error) != file.time || error) return false;
    std::string end(std::min<std::size_t>(file.text.size(), COMPARED_END), '\0');
    std::ifstream stream(path, std::ios::binary);
    stream.seekg(static_cast<std::streamoff>(file.text.size() - end.size()));
    stream.read(end.data(), static_cast<std::streamsize>(end.size()));
    return stream.good() && file.text.ends_with(end);
}

void write_record(RecordFile& file, std::string text) {
    file.was_in_step = false;
    file.text = std::move(text);
    file.is_own_text = true;
    file.only_here = true;
    if (!is_written_to_disk(file)) return;
    make_folder(qv_data_root() + "/ord_snap");
    file.only_here = !write_text_file(record_path(file), file.text);
    if (!file.only_here) note_in_step(file);
}

bool parse_spent(const std::string& text, OutpointSet& spent_out) {
    Json document;
    if (!parse_json(text, document)) return false;
    const Json& outpoints = json_member(document, "outpoints");
    if (!outpoints.is_array()) return false;
    spent_out.reserve(outpoints.size());
    for (const Json& outpoint : outpoints) {
        if (!outpoint.is_string()) continue;
        std::string key = ascii_lower(outpoint.get_ref<const std::string&>());
        if (is_outpoint_key(key)) spent_out.insert(std::move(key));
    }
    return true;
}

void append_spent_key(std::string& text, const std::string& key) {
    if (!is_outpoint_key(key)) return;
    if (text.size() > SPENT_TEXT_START.size()) text += ',';
    text += '"';
    text += key;
    text += '"';
}

// Written by hand, because the set is long and every payment writes all of it. A key of the right form has no
// character that JSON would escape.
std::string spent_text(const OutpointSet& spent) {
    std::string text(SPENT_TEXT_START);
    text.reserve(text.size() + spent.size() * (TXID_LENGTH + 8));
    for (const std::string& key : spent) append_spent_key(text, key);
    return text.append(SPENT_TEXT_END);
}

// The coin's keys that the set does not hold yet go into the set and, before its end, into the text.
void add_spent(OutpointSet& spent, std::string& text, const QvClaspUtxo& coin) {
    OutpointSet keys;
    add_outpoint(keys, coin.txid, coin.vout);
    for (const std::string& key : keys) {
        if (spent.insert(key).second) append_spent_key(text, key);
    }
}

void write_spent(std::string text) {
    write_record(spent_file, std::move(text));
    spent_keys_in_file = coin_records.spent_set.size();
}

bool parse_pending_row(const Json& row, QvClaspPendingCoin& coin_out, std::string& address_out) {
    const std::int64_t vout = json_int(row, "vout", -1);
    coin_out.txid = json_text(row, "txid");
    coin_out.sats = json_int(row, "sats");
    address_out = json_text(row, "addr");
    if (!is_hex64(coin_out.txid) || coin_out.sats < 1 || coin_out.sats > MOST_SATS) return false;
    if (vout < 0 || vout > std::numeric_limits<std::uint32_t>::max()) return false;
    coin_out.vout = static_cast<std::uint32_t>(vout);
    return qv_clasp_address_to_hash160(address_out, coin_out.hash160);
}

struct FoundKey {
    bool found = false;
    SecretText priv{};
    std::string pub{};
};

// The pending coins of the file. Finding a key derives many others, so each address is asked for once.
std::vector<QvClaspPendingCoin> read_pending(const Json& rows) {
    std::vector<QvClaspPendingCoin> coins;
    OutpointSet seen;
    std::map<std::string, FoundKey> keys;
    for (const Json& row : rows) {
        QvClaspPendingCoin coin;
        std::string address;
        if (!parse_pending_row(row, coin, address) || outpoint_in_set(seen, coin.txid, coin.vout)) continue;
        const auto [entry, is_new] = keys.try_emplace(address);
        FoundKey& key = entry->second;
        if (is_new) key.found = qv_clasp_find_key(address, key.priv, key.pub);
        if (!key.found) continue;
        coin.priv = key.priv;
        coin.pub = key.pub;
        seen.insert(qv_clasp_outpoint_key(coin.txid, coin.vout));
        coins.push_back(std::move(coin));
    }
    return coins;
}

bool index_failed_lately() {
    return coin_records.index_failed && monotonic_ns() - coin_records.index_failed_at_ns < ORDINALS_FRESH_NS;
}

const QvClaspOrdinalRow* fresh_ordinal_row(const std::string& address) {
    const std::int64_t now = monotonic_ns();
    for (const QvClaspOrdinalRow& row : coin_records.ordinal_rows) {
        if (row.address == address && now - row.read_at_ns < ORDINALS_FRESH_NS) return &row;
    }
    return nullptr;
}

OutpointSet keys_of(const std::vector<QvClaspUtxo>& coins) {
    OutpointSet keys;
    keys.reserve(coins.size());
    for (const QvClaspUtxo& coin : coins) keys.insert(qv_clasp_outpoint_key(coin.txid, coin.vout));
    return keys;
}

// Adds the coin unless it is spent or already there.
void merge_coin(std::vector<QvClaspUtxo>& coins, OutpointSet& keys, const QvClaspUtxo& coin) {
    if (qv_clasp_is_spent(coin.txid, coin.vout) || outpoint_in_set(keys, coin.txid, coin.vout)) return;
    keys.insert(qv_clasp_outpoint_key(coin.txid, coin.vout));
    coins.push_back(coin);
}

}  // namespace

std::size_t OutpointKeyHash::operator()(std::string_view key) const {
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const char c : key) {
        hash ^= static_cast<unsigned char>(c);
        hash *= 0x100000001b3U;
    }
    return static_cast<std::size_t>(hash);
}

std::string qv_clasp_outpoint_key(std::string_view txid, std::uint32_t vout) {
    return key_of(ascii_lower(txid), vout);
}

std::string qv_clasp_reversed_txid(std::string_view txid) {
    if (txid.size() != TXID_LENGTH) return {};
    std::string reversed(TXID_LENGTH, '0');
    for (std::size_t at = 0; at < TXID_LENGTH; at += 2) {
        reversed[at] = ascii_lower(txid[TXID_LENGTH - 2 - at]);
        reversed[at + 1] = ascii_lower(txid[TXID_LENGTH - 1 - at]);
    }
    return reversed;
}

bool qv_clasp_same_outpoint(std::string_view txid_a, std::uint32_t vout_a, std::string_view txid_b,
                            std::uint32_t vout_b) {
    if (vout_a != vout_b || txid_a.size() != txid_b.size()) return false;
    const std::string lower_a = ascii_lower(txid_a);
    return lower_a == ascii_lower(txid_b) || lower_a == qv_clasp_reversed_txid(txid_b);
}

bool outpoint_in_set(const OutpointSet& set, std::string_view txid, std::uint32_t vout) {
    if (set.empty()) return false;
    if (set.contains(qv_clasp_outpoint_key(txid, vout))) return true;
    std::string reversed = qv_clasp_reversed_txid(txid);
    return !reversed.empty() && set.contains(key_of(std::move(reversed), vout));
}

void add_outpoint(OutpointSet& set, std::string_view txid, std::uint32_t vout) {
    set.insert(qv_clasp_outpoint_key(txid, vout));
    std::string reversed = qv_clasp_reversed_txid(txid);
    if (!reversed.empty()) set.insert(key_of(std::move(reversed), vout));
}

QvClaspCoinRecords& qv_clasp_coin_records() {
    return coin_records;
}

void qv_clasp_clear_coin_records() {
    coin_records = {};
    spent_file = {spent_file.suffix};
    change_file = {change_file.suffix};
    spent_keys_in_file = 0;
}

bool qv_clasp_is_spent(std::string_view txid, std::uint32_t vout) {
    return outpoint_in_set(coin_records.spent_set, txid, vout);
}

void qv_clasp_mark_spent(std::string_view txid, std::uint32_t vout) {
    qv_clasp_mark_all_spent({{std::string(txid), vout, 0}});
}

void qv_clasp_mark_all_spent(const std::vector<QvClaspUtxo>& coins) {
    qv_clasp_load_spent();
    OutpointSet& spent = coin_records.spent_set;
    const bool is_in_step = spent_file.is_own_text && spent.size() == spent_keys_in_file;
    std::string text = is_in_step ? std::exchange(spent_file.text, {}) : spent_text(spent);
    text.resize(text.size() - SPENT_TEXT_END.size());
    for (const QvClaspUtxo& coin : coins) add_spent(spent, text, coin);
    text += SPENT_TEXT_END;
    // Moved all the way and back: a copy would be of all that was ever spent, and have no room for the next
    // key.
    write_spent(std::move(text));
}

void qv_clasp_unmark_spent(const std::vector<QvClaspUtxo>& coins) {
    qv_clasp_load_spent();
    OutpointSet& spent = coin_records.spent_set;
    const std::size_t before = spent.size();
    for (const QvClaspUtxo& coin : coins) {
        spent.erase(qv_clasp_outpoint_key(coin.txid, coin.vout));
        spent.erase(key_of(qv_clasp_reversed_txid(coin.txid), coin.vout));
    }
    if (spent.size() != before) qv_clasp_save_spent();
}

void qv_clasp_load_spent() {
    if (entered_other_scope(spent_file)) coin_records.spent_set.clear();
    if (is_as_left(spent_file) && coin_records.spent_set.size() == spent_keys_in_file) return;
    std::string text;
    if (!read_record(spent_file, text)) return;
    if (text == spent_file.text && coin_records.spent_set.size() == spent_keys_in_file) return;
    OutpointSet spent;
    if (!parse_spent(text, spent)) return;
    coin_records.spent_set = std::move(spent);
    spent_file.text = std::move(text);
    spent_keys_in_file = coin_records.spent_set.size();
    spent_file.is_own_text = false;
}

void qv_clasp_save_spent() {
    entered_other_scope(spent_file);
    write_spent(spent_text(coin_records.spent_set));
}

void qv_clasp_load_change() {
    if (entered_other_scope(change_file)) coin_records.pending_coins.clear();
    std::string text;
    Json document;
    if (!read_record(change_file, text) || !parse_json(text, document)) return;
    const Json& rows = json_member(document, "coins");
    if (rows.is_array()) coin_records.pending_coins = read_pending(rows);
}

void qv_clasp_save_change() {
    entered_other_scope(change_file);
    Json rows = Json::array();
    for (const QvClaspPendingCoin& coin : coin_records.pending_coins) {
        rows.push_back({{"txid", coin.txid},
                        {"vout", coin.vout},
                        {"sats", coin.sats},
                        {"addr", qv_clasp_address_from_hash160(coin.hash160)}});
    }
    write_record(change_file, dump_json({{"coins", std::move(rows)}}, -1));
}

bool qv_clasp_is_pending(std::string_view txid, std::uint32_t vout) {
    const auto is_same = [&](const QvClaspPendingCoin& coin) {
        return qv_clasp_same_outpoint(coin.txid, coin.vout, txid, vout);
    };
    return std::ranges::any_of(coin_records.pending_coins, is_same);
}

void qv_clasp_ord_store(const std::string& address, const OutpointSet& outpoints, bool read_ok) {
    const std::int64_t now = monotonic_ns();
    std::erase_if(coin_records.ordinal_rows,
                  [&](const QvClaspOrdinalRow& row) { return row.address == address; });
    coin_records.ordinal_rows.push_back({address, outpoints, read_ok, now});
    if (read_ok) return;
    coin_records.index_failed = true;
    coin_records.index_failed_at_ns = now;
}

bool qv_clasp_is_ordinal_at(const std::string& address, const QvClaspUtxo& utxo) {
    const bool is_one_sat = utxo.sats == 1;
    const QvClaspOrdinalRow* row = fresh_ordinal_row(address);
    // What an index has listed a moment ago stays held back, whichever other address it failed for since.
    if (row != nullptr && outpoint_in_set(row->outpoints, utxo.txid, utxo.vout)) return true;
    if (index_failed_lately() || row == nullptr || !row->read_ok) return is_one_sat;
    return false;
}

bool qv_clasp_is_ordinal_anywhere(const QvClaspUtxo& utxo) {
    if (index_failed_lately() && utxo.sats == 1) return true;
    return std::ranges::any_of(coin_records.ordinal_rows, [&](const QvClaspOrdinalRow& row) {
        return outpoint_in_set(row.outpoints, utxo.txid, utxo.vout);
    });
}

QvClaspCoinCacheRow* qv_clasp_cache_row(const std::string& address) {
    for (QvClaspCoinCacheRow& row : coin_records.coin_cache) {
        if (row.address == address) return &row;
    }
    return nullptr;
}

bool qv_clasp_cache_fresh(const std::string& address) {
    const QvClaspCoinCacheRow* row = qv_clasp_cache_row(address);
    return row != nullptr && row->valid && monotonic_ns() - row->read_at_ns < CACHE_FRESH_NS;
}

void qv_clasp_cache_store(const std::string& address, const std::vector<QvClaspUtxo>& utxos, bool read_ok,
                          bool keep_old) {
    QvClaspCoinCacheRow* row = qv_clasp_cache_row(address);
    if (!read_ok) {
        if (row == nullptr) coin_records.coin_cache.push_back({address, utxos, monotonic_ns(), false});
        return;
    }
    std::vector<QvClaspUtxo> merged = utxos;
    OutpointSet keys = keys_of(merged);
    if (keep_old && row != nullptr) {
        for (const QvClaspUtxo& coin : row->coins) merge_coin(merged, keys, coin);
    }
    Hash160 hash160{};
    const bool is_decoded = qv_clasp_address_to_hash160(address, hash160);
    for (const QvClaspPendingCoin& coin : coin_records.pending_coins) {
        if (!is_decoded || coin.hash160 != hash160) continue;
        merge_coin(merged, keys, {coin.txid, coin.vout, coin.sats});
    }
    if (row == nullptr) row = &coin_records.coin_cache.emplace_back();
    *row = {address, std::move(merged), monotonic_ns(), true};
}

void qv_clasp_expire_cache() {
    const std::int64_t expired = monotonic_ns() - EXPIRED_AGE_NS;
    for (QvClaspCoinCacheRow& row : coin_records.coin_cache) row.read_at_ns = expired;
}

void qv_clasp_prune_spent_from_cache() {
    for (QvClaspCoinCacheRow& row : coin_records.coin_cache) {
        std::erase_if(row.coins,
                      [](const QvClaspUtxo& coin) { return qv_clasp_is_spent(coin.txid, coin.vout); });
    }
}

void qv_clasp_prune_pending(const std::string& address, const std::vector<QvClaspUtxo>& fresh) {
    Hash160 hash160{};
    if (!qv_clasp_address_to_hash160(address, hash160)) return;
    const OutpointSet shown = keys_of(fresh);
    const std::string& last_sent = coin_records.last_sent_txid;
    std::erase_if(coin_records.pending_coins, [&](const QvClaspPendingCoin& coin) {
        if (coin.hash160 != hash160) return false;
        if (qv_clasp_is_spent(coin.txid, coin.vout)) return true;
        return coin.txid != last_sent && !outpoint_in_set(shown, coin.txid, coin.vout);
    });
}
