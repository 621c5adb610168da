// How the sources of a sweep become one list of rows. The indexer decides what exists now; what the wallet
// remembers, and the last snapshot, keep entries alive while it is silent. A blank is filled, a value stays;
// only the figures of a remembered token follow the newer sweep. What is hidden stays hidden and untouched.
// Pure but for the art tags.
#pragma once

#include "index/sweep_state.h"

// The token outputs that this sweep found, into the remembered ordinals and the rows.
void merge_found(OrdinalSweep& sweep, std::vector<LocalOrd>& owned);
// The indexer's listings of all outputs, into the rows.
void merge_listings(OrdinalSweep& sweep, std::vector<LocalOrd>& owned);
// What the wallet remembers and no source named and, with the indexer silent, what the last snapshot held.
void add_remembered(OrdinalSweep& sweep, std::vector<LocalOrd>& owned);
// The three, and the art tags. Callers hold the wallet mutex.
void merge_sources(OrdinalSweep& sweep, std::vector<LocalOrd>& owned);
