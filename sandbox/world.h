// A ready-made world on the chain: two wallets of the family under a data folder, money, one token with
// holders of every kind, and a directory of paymail names. Deterministic for a seed.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "base/json_file.h"
#include "sandbox/chain.h"
#include "sandbox/keys.h"

namespace sandbox {

struct WorldOptions {
    std::string folder;  // the per-user data folder; the family's folder "Quorvelle" is made inside it
    int holders = 25;
    std::uint64_t seed = 1;
    std::string home_domain = "localhost";
    std::int64_t wallet_sats = 500'000'000;  // spread over a few coins of the main wallet
    bool write_files = true;                 // wallet documents and the registry
    bool token_among_coins = false;  // one more piece of the reserve lies on a receive address, like a coin
};

struct Wallet {
    std::string id;  // the wallet id, the folder name
    std::string name;
    std::string mnemonic;
    std::string document;             // path of its document
    std::uint32_t receive_index = 0;  // `recv[1]` and `show`
    std::uint32_t ordinal_index = 0;  // `recv[5]`
    std::string paymail;              // bare, may be empty
    KeyPair receive(std::uint32_t index) const;
    KeyPair ordinal(std::uint32_t index) const;
    KeyPair identity() const;
    KeyPair bn() const;
};

// How a holder can be paid, as the board should show it.
struct Holder {
    std::string kind;    // "address", "paymail", "two addresses", "token address", "dust", "reserve"
    std::string who;     // what the board shows
    std::string dest;    // where a payment must go; empty if it cannot be paid
    std::string lots;    // all its lots together
    std::string pubkey;  // identity key, where one is published
    std::vector<std::string> owners;  // addresses that hold the token's outputs
    std::vector<KeyPair> keys;        // their keys, in the same order
};

// The names that the family's host knows, with everything that its endpoints answer.
struct Paymail {
    std::string alias;
    std::string pubkey;
    std::string address;      // payment address
    std::string ord_address;  // may be empty
    std::string bn_address;   // may be empty
    std::string avatar;
    bool pays_by_name_only = false;  // the look-up of an address does not tell the payment address
};
// Thread-safe.
class Directory {
 public:
    void put(const Paymail& row);
    bool by_alias(const std::string& alias, Paymail& row) const;
    // The row of an address, with the kind of that address: "payment", "ordinal" or "bn". A row without an
    // alias is a token address of which nothing else is known.
    bool by_address(const std::string& address, Paymail& row, std::string& kind) const;
    void set_role(const std::string& pubkey, const std::string& role);
    std::string role(const std::string& pubkey) const;
    // Checks a claim's form and signature and stores it; empty on success, else the error text. A name that
    // another key holds is refused.
    std::string claim(const Json& body);
    std::size_t claims() const;

 private:
    void store(const Paymail& row);  // with the mutex held

    mutable std::mutex mutex_;
    std::map<std::string, Paymail> rows_;
    std::map<std::string, std::pair<std::string, std::string>> by_address_;  // to the row's key and the kind
    std::map<std::string, std::string> roles_;
    std::size_t claims_ = 0;
};

struct World {
    WorldOptions options;
    Wallet main_wallet;   // minted the token and keeps a reserve of it
    Wallet other_wallet;  // has money and nothing else
    std::string token_id;
    std::string token_name;
    // As the rows of the board: the market before the reserve, more lots first, equal lots by `who`.
    std::vector<Holder> holders;
    std::string total_lots;
    std::string reserve_lots;
    std::string in_market_lots;
    std::int64_t other_sats = 0;  // what the other wallet has
};

// Builds the world on the chain and, if asked, its files. The token is minted and handed out in real, signed
// transactions of a key that pays all fees, so the main wallet has exactly `wallet_sats`. All is mined at the
// end.
World make_world(const WorldOptions& options, Chain& chain, Directory& directory);

// Answers the wallet program's side of the handshake once: every request in "/connect" that has no reply yet
// gets one that names `wallet_id`, or a refusal if it is empty. Returns how many were answered. A request
// that is not whole yet is left for the next call.
int answer_connects(const std::string& family_folder, const std::string& wallet_id);

}  // namespace sandbox
