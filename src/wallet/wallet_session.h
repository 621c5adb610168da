// The one wallet session of the process: the loaded wallet, its keys and its counters, and the mutex that
// guards it.
//
// The wallet mutex is recursive and guards everything here and in coin_records.h; base/ranked_mutex.h has its
// place in the order of locks. Whoever leaves it for the network reads
// qv_clasp_scope_key and qv_clasp_generation first and compares them on return.
#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/ranked_mutex.h"
#include "wallet/key_derivation.h"
#include "wallet/secret.h"

// A remembered ordinal, a row of `ord_owned` in the wallet document.
struct LocalOrd {
    std::string origin;
    std::string txid;
    std::int32_t vout = 0;
    std::string type;
    std::string address;
    std::string name;
    std::string icon;
    std::string amt;
    std::string dec;
    std::string token_id;
    bool hidden = false;
    bool created = true;
};

// A row of the document's address book, carried along unchanged.
struct QvClaspContact {
    std::string dest;
    std::string note;
};

// Keys of one external chain that are known already: its node m/44'/236'/a'/0, and public key and address of
// the indexes from 0 on, without a gap.
struct QvClaspChainKeys {
    bool node_known = false;
    QvClaspExtKey node;
    PublicKey node_pub{};
    struct Key {
        std::string pub;
        std::string address;
    };
    std::vector<Key> keys;
};

// What was derived from the master once is not derived again. It never answers anything that a walk over all
// indexes would not, and goes when the master does.
struct QvClaspKeyCache {
    std::array<QvClaspChainKeys, 6> chains;
    struct Place {
        std::uint32_t account = 0;
        std::uint32_t index = 0;
    };
    std::unordered_map<std::string, Place> places;  // by address
    QvClaspChainKeys::Key identity;
};

struct QvClaspSession {
    bool hd = false;  // a mnemonic wallet is loaded
    bool backup = false;
    SecretText mnemonic;
    SecretBytes<64> seed;
    bool seed_known = false;
    QvClaspExtKey master;
    bool master_known = false;
    QvClaspKeyCache key_cache;
    // The current receive key.
    SecretText priv;
    std::string pub;
    std::string address;
    std::string identity_pub;
    std::string identity_address;
    std::array<std::uint32_t, 6> recv{};  // highest index in use in each account
    std::uint32_t show = 0;               // index of the current receive address
    std::string paymail;                  // bare name
    std::string ord_avatar;
    std::vector<LocalOrd> ord_owned;
    std::vector<QvClaspContact> contacts;
    bool unlocked = false;
    bool seal_gate = false;
    SecretBytes<32> seal_key;
    std::array<std::uint8_t, 16> seal_salt{};

    // What the status report remembers between reports.
    std::int64_t cached_balance = -1;
    std::int64_t projected_balance = -1;
    std::int64_t projected_at_ns = 0;
    std::uint32_t scan_position = 0;
};

using WalletMutex = RankedMutex<LockRank::Wallet, std::recursive_mutex>;
using WalletLock = std::unique_lock<WalletMutex>;
// Takes the wallet mutex. The holder may release it and take it back; a function that releases a lock it was
// handed says so, and then needs to be its only hold on this thread.
WalletLock qv_clasp_lock_wallet();

// Wipes the seed and everything derived from it. Callers hold the wallet mutex.
void qv_clasp_forget_master(QvClaspSession& session);

// The session. Callers hold the wallet mutex.
QvClaspSession& qv_clasp_session();

// Ends the session: wipes every secret, empties the rest, clears the coin records, and raises the generation.
// Callers hold the wallet mutex.
void qv_clasp_wipe_session();

// The prefix of per-wallet file names, and the test for a changed wallet: the active wallet id, else the
// identity address, else the address; letters and digits stay, every other byte is "_"; "wallet" for nothing;
// at most 80 bytes. Callers hold the wallet mutex.
std::string qv_clasp_scope_key();

// "The wallet's picture of its coins has moved on": begins at 1; rises when the session is wiped and when a
// payment is recorded. Any thread may read it.
std::uint64_t qv_clasp_generation();
void qv_clasp_raise_generation();
