// What the program knows of its coins without asking anyone: spent outpoints, change not yet seen on the
// chain, what the index last said of an address, the coins last read of an address, and the last
// transactions. These records live and die with the session; two of them are kept in files per wallet as
// well. No network here.
//
// Callers hold the wallet mutex. An outpoint key is the lower-case txid, ":", the decimal output number;
// every set is asked for both byte orders of the txid, since services print either. A record file that does
// not parse counts as empty. Nothing is written under the scope key "wallet" or an empty one.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "base/bytes.h"
#include "wallet/secret.h"

// One unspent output.
struct QvClaspUtxo {
    std::string txid;  // 64 hexadecimal characters, as the service printed them
    std::uint32_t vout = 0;
    std::int64_t sats = 0;
};

// 64-bit FNV-1a.
struct OutpointKeyHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view key) const;
};
using OutpointSet = std::unordered_set<std::string, OutpointKeyHash, std::equal_to<>>;

// More than all coins there will ever be: an amount above this is no amount.
inline constexpr std::int64_t MOST_SATS = 2'100'000'000'000'000;

std::string qv_clasp_outpoint_key(std::string_view txid, std::uint32_t vout);
// The txid with its 32 byte pairs in reverse order, lower-case; empty unless it has 64 characters.
std::string qv_clasp_reversed_txid(std::string_view txid);
bool qv_clasp_same_outpoint(std::string_view txid_a, std::uint32_t vout_a, std::string_view txid_b,
                            std::uint32_t vout_b);
// The key of the outpoint, in either byte order, is in the set.
bool outpoint_in_set(const OutpointSet& set, std::string_view txid, std::uint32_t vout);
// Adds the key in both byte orders.
void add_outpoint(OutpointSet& set, std::string_view txid, std::uint32_t vout);

// A coin that this program made and no service shows yet.
struct QvClaspPendingCoin {
    std::string txid;
    std::uint32_t vout = 0;
    std::int64_t sats = 0;
    SecretText priv;  // may be empty: the session's current receive key
    std::string pub;
    Hash160 hash160{};
};

// What the index last said of one address.
struct QvClaspOrdinalRow {
    std::string address;
    OutpointSet outpoints;
    bool read_ok = false;
    std::int64_t read_at_ns = 0;
};

// The coins of one address as last merged.
struct QvClaspCoinCacheRow {
    std::string address;
    std::vector<QvClaspUtxo> coins;
    std::int64_t read_at_ns = 0;
    bool valid = false;
};

struct QvClaspCoinRecords {
    OutpointSet spent_set;
    std::vector<QvClaspPendingCoin> pending_coins;
    std::vector<QvClaspOrdinalRow> ordinal_rows;
    bool index_failed = false;
    std::int64_t index_failed_at_ns = 0;
    std::vector<QvClaspCoinCacheRow> coin_cache;
    std::string read_error;  // of an address that the last reads got nothing about; empty if there was none
    std::string last_sent_txid;
    std::string last_broadcast_txid;
    // When the last payment was recorded, and from which addresses coins were spent at what time: the status
    // report does not let a service that has not seen the payment overwrite what is known.
    std::int64_t last_send_at_ns = 0;
    std::vector<std::pair<std::string, std::int64_t>> spent_from;
};
QvClaspCoinRecords& qv_clasp_coin_records();
void qv_clasp_clear_coin_records();

bool qv_clasp_is_spent(std::string_view txid, std::uint32_t vout);
// Reloads the file, adds both keys, writes the file.
void qv_clasp_mark_spent(std::string_view txid, std::uint32_t vout);
// The same for several outpoints with one reload and one write.
void qv_clasp_mark_all_spent(const std::vector<QvClaspUtxo>& coins);
// Takes coins that a more credible source shows unspent out of the set, after a reload; writes the file if
// that changed anything.
void qv_clasp_unmark_spent(const std::vector<QvClaspUtxo>& coins);
void qv_clasp_load_spent();
void qv_clasp_save_spent();
// Rebuilds the pending coins from the file; their keys are found again through their addresses. A coin that
// no key of this wallet opens is left out.
void qv_clasp_load_change();
void qv_clasp_save_change();
bool qv_clasp_is_pending(std::string_view txid, std::uint32_t vout);

// What the index said of an address; replaces every older row of it.
void qv_clasp_ord_store(const std::string& address, const OutpointSet& outpoints, bool read_ok);
// The coin is taken for an ordinal, by the fresh row of its address. Without a fresh and good row every coin
// of exactly one satoshi is.
bool qv_clasp_is_ordinal_at(const std::string& address, const QvClaspUtxo& utxo);
// The same for a coin without an address: any row, at any age.
bool qv_clasp_is_ordinal_anywhere(const QvClaspUtxo& utxo);

// The cache row of an address, or null. Valid until the cache changes.
QvClaspCoinCacheRow* qv_clasp_cache_row(const std::string& address);
// The row is valid and less than 8 seconds old.
bool qv_clasp_cache_fresh(const std::string& address);
// Stores a read. A failed one adds an invalid row at most; a good one is merged with pending coins of the
// address and, if `keep_old` is set, with the row's old coins.
void qv_clasp_cache_store(const std::string& address, const std::vector<QvClaspUtxo>& utxos, bool read_ok,
                          bool keep_old);
// Makes every row stale at once; the coins stay.
void qv_clasp_expire_cache();
void qv_clasp_prune_spent_from_cache();
// Drops the pending coins of an address that are spent, or that a complete fresh read does not show, except
// those of the last transaction sent.
void qv_clasp_prune_pending(const std::string& address, const std::vector<QvClaspUtxo>& fresh);
