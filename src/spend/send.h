// The one entry for paying out satoshis. Takes the wallet mutex and holds it to the end, except for the coin
// reads, so the caller must not hold it already. Blocks on the network; call it on a worker thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Pays `sats` to a P2PKH address. `memo`, if not empty, becomes the data of an output. At most three
// transactions are tried; before one is rebuilt or given up, the chain is asked for the last one. "success: "
// and the txid, or a text that begins with "error: ".
std::string qv_clasp_send(const std::string& dest, std::int64_t sats, const std::string& memo);
// The text says that some input is already taken.
bool is_conflict_text(std::string_view text);

// After a success the library reports the payment and the balance it leaves through the event sink, but only
// where the process's standard output is no terminal. For tests: replaces that question; nullptr puts it
// back.
void set_terminal_probe(bool (*is_terminal)());

// The miner fee of one such send as things stand now, the same as building it would give; it sends nothing.
// -1 without a wallet, -2 without coins that could be read. Every P2PKH destination costs the same, so `dest`
// may be empty or unreadable. Calls within five seconds share one read of the coins, as long as wallet and
// generation stay. Takes the wallet mutex, which the caller must not hold, and gives it up for the coin read.
std::int64_t qv_clasp_estimate_send_fee(const std::string& dest, std::int64_t sats);
