// The status report: is a wallet connected, at what address, with how much BSV. It also keeps the session up
// to date: scans the receive chain, reconciles the document, refreshes the coins, keeps the paymail in step.
//
// Blocks on the network, always without the wallet mutex. Order of locks: scan mutex, then wallet mutex. No
// failure is reported by a text: a read that fails leaves the balance unknown.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "clasp/receive_scan.h"
#include "clasp/status_record.h"

// Fills the result as far as the report came. One that was overtaken by a payment or a switch of the wallet
// ends with `connected` set, `balance_known` unset and `balance_sats` 0, which is no balance.
void qv_clasp_status(QvClaspStatus& status_out);

// The addresses that a report watches: in a mnemonic wallet the receive chain up to its counter, the identity
// address, and those that hold remembered coins; in a legacy wallet the one address. Callers hold the wallet
// mutex.
std::vector<std::string> status_addresses();
// The send guard: whether a report reads the address from the chain. A stale address always; a fresh one not
// within 20 seconds of a payment, since a service that has not seen the payment would bring the spent coins
// back. Callers hold the wallet mutex.
bool status_reads_address(const std::string& address);
