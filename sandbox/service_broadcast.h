// Taking a transaction from a request, as the three services do that pass one on to the network, failures on
// order included. Each of them has its own words for what this finds.
#pragma once

#include <string>
#include <string_view>

#include "sandbox/chain.h"

namespace sandbox {

enum class BroadcastEnd {
    Taken,             // on the network now
    Known,             // it was there before
    Refused,           // the network's words are in `reason`
    RefusedAsSuccess,  // the same, under a status of success where the service has another for refusals
    Unparsed,          // no transaction
    Failed,            // the service fails to say what happened
};
struct Broadcast {
    BroadcastEnd end = BroadcastEnd::Failed;
    std::string txid;    // empty if unparsed
    std::string reason;  // the network's words
    int code = 0;        // the node's number for them; 0 is none
};

inline constexpr std::string_view CONFLICT_WORDS = "txn-mempool-conflict";
inline constexpr std::string_view MISSING_WORDS = "Missing inputs";

Broadcast take_broadcast(Chain& chain, std::string_view raw_hex, std::string_view fault);

}  // namespace sandbox
