// The spendable balance as the records have it, and a figure that does not jump around a payment. Callers
// hold the wallet mutex unless stated. No network.
#pragma once

#include <cstdint>

// The sum over cached and pending coins, each outpoint once; -1 if nothing is known.
std::int64_t qv_clasp_balance_estimate();
// After a send: takes note of it and returns the balance to show.
std::int64_t qv_clasp_note_spend(std::int64_t fresh_total, std::int64_t spent_sats);
// The last balance shown, from memory or from the face file; -1 if unknown. Takes the wallet mutex itself.
std::int64_t qv_clasp_cached_balance();
// Stores a balance as the one shown, in memory and in the face file.
void qv_clasp_show_balance(std::int64_t sats);
