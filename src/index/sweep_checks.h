// Which rows of a sweep are no longer there. A row goes only on evidence: an address that answered without
// it, an output that this program has spent, or the chain's own answer; a token row that cannot be settled
// stays.
//
// Each check comes in two halves: the questions to the chain, gathered with the wallet mutex held and asked
// without it, and the verdict. `owned` is touched with the mutex held only.
#pragma once

#include "index/sweep_state.h"

// Pictures and art that are not in the listing of an address that answered. What the wallet made itself is
// not dropped on the indexer's word: the chain is asked, and a row stays if it is unspent or not there yet.
std::vector<SpendQuestion> questions_about_art(const OrdinalSweep& sweep, std::vector<LocalOrd>& owned);
void drop_vanished_art(OrdinalSweep& sweep, std::vector<LocalOrd>& owned);

// All tokens, rows and remembered ones, when no token listing came back.
std::vector<SpendQuestion> questions_about_all_tokens(const OrdinalSweep& sweep,
                                                      const std::vector<LocalOrd>& owned);
// Spent rows go, and remembered tokens with them; one that this wallet minted is remembered for good, as its
// right to the token hangs on it.
void drop_spent_tokens(OrdinalSweep& sweep, std::vector<LocalOrd>& owned);

// Token rows that the indexer does not list.
std::vector<SpendQuestion> questions_about_unlisted(const OrdinalSweep& sweep);
// Token rows that are hidden, spent by this program, or spent on the chain.
void drop_gone_tokens(OrdinalSweep& sweep, std::vector<LocalOrd>& owned);
