// The judgement of which coins may be spent, and the candidates of one send in a fixed order. A rejected coin
// is skipped without a word: the list is only shorter.
//
// Callers hold the wallet mutex. qv_clasp_refresh_coins and qv_clasp_resync_from_index release the lock they
// are handed for their network reads and take it back; the lock must be the caller's only hold on the mutex.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "spend/sibling_reserves.h"
#include "wallet/coin_records.h"
#include "wallet/secret.h"
#include "wallet/wallet_session.h"

// One candidate input.
struct QvClaspCoin {
    std::string txid;
    std::uint32_t vout = 0;
    std::int64_t sats = 0;
    Bytes script_sig;   // empty until signed
    Bytes prev_script;  // empty for a plain P2PKH coin
    SecretText priv;    // empty: the session's current receive key
    std::string pub;
    Hash160 hash160{};
};

// The addresses that can hold spendable coins, each once: receive chain, identity, and the house oracles
// whose key is in this wallet; in a legacy wallet the one address, and those oracles.
std::vector<std::string> qv_clasp_spend_addresses();

// One address on its way from the services into the records.
struct QvClaspAddressRead {
    std::string address;
    std::vector<QvClaspUtxo> coins;
    bool started = false;
    bool read_ok = false;
    bool any_ok = false;
    std::string error;  // of a read that is not ok
    OutpointSet ordinals;
    OutpointSet plain;  // what the index lists and sees nothing in
    bool ordinals_ok = false;
};
// Reads all addresses at once, without the wallet mutex; stops starting when the generation moves.
// `with_ordinals` asks the index as well.
void qv_clasp_read_addresses(std::vector<QvClaspAddressRead>& reads, bool with_ordinals,
                             std::uint64_t generation);
// Stores the reads: coins into the cache, pending coins pruned, ordinal rows replaced. A coin of one satoshi
// that a good answer of the index does not list at all counts as an ordinal.
void qv_clasp_commit_reads(std::vector<QvClaspAddressRead>& reads);

// Reads the spend addresses whose cached coins are stale. False with "no wallet" or "wallet changed.".
bool qv_clasp_refresh_coins(WalletLock& wallet_lock, std::string& error_out);
// The candidates, pending change first. False if there is none.
bool qv_clasp_collect_coins(std::vector<QvClaspCoin>& coins_out, std::int64_t& total_out,
                            std::string& error_out);

struct CoinAdmission {
    std::vector<QvClaspCoin>* coins = nullptr;
    std::int64_t total = 0;
    // Kept by the guard: the keys of the coins appended, and what siblings hold back, read at the first coin.
    OutpointSet keys{};
    std::optional<SiblingReserves> reserves{};
};
// The guard: appends the coin if nothing forbids it. An empty address means that it is not known; a coin of
// one satoshi is then judged by the address of its hash160 as well.
void qv_clasp_admit_coin(CoinAdmission& context, const QvClaspUtxo& utxo, const SecretText& priv,
                         const std::string& pub, const Hash160& hash160, const std::string& address);

// After "missing inputs": the index is asked what is unspent, and believed. Nothing is stored if the wallet
// has changed meanwhile.
void qv_clasp_resync_from_index(WalletLock& wallet_lock);
// Reads a transaction back and takes its outputs to this wallet as pending coins. Blocks on the network under
// the mutex.
bool qv_clasp_ingest_own_outputs(const std::string& txid);

// Where change goes. False with the error text if every address is a house oracle.
bool qv_clasp_change_target(Hash160& hash160_out, std::string& error_out);
bool qv_clasp_is_house_oracle(const std::string& address);
