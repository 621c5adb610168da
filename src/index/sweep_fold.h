// The last touch on a sweep's rows: one row a token, and the snapshot of what was found. Pure.
#pragma once

#include "index/sweep_state.h"

// What the snapshot file keeps of the rows.
OrdSnapshot snapshot_of(const std::vector<QvClaspOrdRow>& rows);
// A token row without an amount says nothing beside one of the same token that has one.
void drop_amountless(std::vector<QvClaspOrdRow>& rows);
// Rows of one token become one, at the place of the first: amounts add up, outputs are collected, blanks are
// filled. Every other row keeps its own output as its only one.
void fold_tokens(std::vector<QvClaspOrdRow>& rows);
