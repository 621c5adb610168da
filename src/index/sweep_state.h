// What one sweep of the wallet's 1-sat outputs carries from step to step, and the few questions that several
// steps ask of it. The record belongs to the sweep's own thread; the pools write into slots of their own.
// Outpoints are compared in lower case; the sets here hold them so.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "base/json_file.h"
#include "index/chain_view.h"
#include "index/ordinal_row.h"
#include "index/ordinal_snapshot.h"
#include "wallet/wallet_session.h"

using TextSet = std::unordered_set<std::string>;

// What the indexer said of one watch address.
struct AddressSweep {
    std::string address;
    std::string txo_body;
    Json bsv20_list;
    bool txo_ok = false;
    bool bsv20_ok = false;
};

struct TokenFigures {
    std::string amt;
    std::string dec;
};

struct OrdinalSweep {
    // The wallet that is swept, as it was at the start.
    std::string scope_key;
    std::uint64_t generation = 0;
    std::string identity_pub;  // lower case
    std::vector<std::string> watch;
    OrdSnapshot snapshot;

    // What the indexer said.
    std::vector<AddressSweep> addresses;
    bool token_listing = false;                             // a token listing came back for some address
    std::unordered_map<std::string, TokenFigures> figures;  // of the listed tokens, by outpoint
    TextSet indexed;   // token outpoints listed now, or when their address last answered
    TextSet listed;    // outpoints of the listing of all outputs
    TextSet answered;  // addresses whose listing of all outputs was read

    std::vector<LocalOrd> found;  // token outputs that this sweep has seen
    std::vector<QvClaspOrdRow> rows;
    std::unordered_map<std::string, SpendStatus> spends;  // asked in this sweep, by outpoint
    bool owned_changed = false;                           // `ord_owned` is to be saved
};

inline constexpr const char* TOKEN_TYPE = "application/bsv-20";

// The output's outpoint in lower case: the key of the sets above.
std::string outpoint_key_of(const std::string& txid, std::uint32_t vout);
std::string outpoint_key_of(const QvClaspOrdRow& row);
std::string outpoint_key_of(const LocalOrd& ord);

// The type or a token id tells it.
bool is_token(const QvClaspOrdRow& row);
bool is_token(const LocalOrd& ord);
bool is_token_type(const std::string& type);
bool is_image_type(const std::string& type);

// Takes the text if the slot is empty; true if it did.
bool fill_blank(std::string& slot, const std::string& text);
// Takes a text that is not empty and differs; true if it did.
bool take_newer(std::string& slot, const std::string& text);

// Finds remembered ordinals by their origin, in any case. Valid until the list changes.
class OwnedByOrigin {
 public:
    explicit OwnedByOrigin(std::vector<LocalOrd>& owned);
    // Null if the wallet does not remember it.
    LocalOrd* find(const std::string& origin) const;

 private:
    std::unordered_map<std::string, LocalOrd*> by_origin_;
};

// The wallet is still the one that the sweep began with. Callers hold the wallet mutex.
bool same_wallet(const OrdinalSweep& sweep);
// Runs step(session) with the wallet mutex held; false, without running it, if the wallet has changed.
template <typename Step>
bool with_wallet(const OrdinalSweep& sweep, Step&& step) {
    const WalletLock lock = qv_clasp_lock_wallet();
    if (!same_wallet(sweep)) return false;
    step(qv_clasp_session());
    return true;
}
// Writes the document if the sweep has changed what it remembers. Callers hold the wallet mutex.
void save_owned(OrdinalSweep& sweep);

struct SpendQuestion {
    std::string txid;
    std::uint32_t vout = 0;
};
// Asks the chain about outputs that this sweep has not asked about yet; the answers go to `spends`. One that
// is no outpoint stays unknown without a request. Blocks on the network, without the wallet mutex.
void check_spends(OrdinalSweep& sweep, const std::vector<SpendQuestion>& questions, std::size_t threads);
// What the chain said of the output; unknown if it was not asked.
SpendStatus spend_answer(const OrdinalSweep& sweep, const std::string& outpoint_key);
