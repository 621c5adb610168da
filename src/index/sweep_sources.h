// Where a sweep looks: the indexer's two listings of every watch address and, when the indexer is silent, the
// chain itself. Blocks on the network, without the wallet mutex. A request that fails makes the result
// shorter, never wrong.
#pragma once

#include "index/sweep_state.h"

// Asks the indexer about all watch addresses at once.
void ask_indexer(OrdinalSweep& sweep);
// Reads the token listings: their figures and outpoints, what they found, and bodies for the content cache.
void take_token_listings(OrdinalSweep& sweep);
// Neither listing came back for any address.
bool indexer_silent(const OrdinalSweep& sweep);
// Follows what the wallet knows of its tokens over the chain, to the outputs that it holds now.
void walk_owned_tokens(OrdinalSweep& sweep);

struct WalkStart {
    std::string outpoint;
    bool climb = false;
};
// Where the walks begin, each place once: at every output that is recorded under a token's id, or at an
// origin on its own, from which the walk climbs to the deploy. Only content that may be a token's is
// followed.
std::vector<WalkStart> walk_starts(const std::vector<LocalOrd>& known);
