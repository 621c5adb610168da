// The status report: is a wallet connected, at what address, with how much BSV. It also keeps the session up to date:
// scans the receive chain, reconciles the document, refreshes the coins, keeps the paymail in step. Blocks on the
// network, without the wallet mutex. Order of locks: scan mutex, then wallet mutex.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "clasp/status_record.h"

void qv_clasp_status(QvClaspStatus& status_out);

// Finds coins received further up the receive chain, and raises the counter.
void qv_clasp_scan_receive();
// One batch of index and address; raises `highest` to the highest index with a balance. False if the call failed.
bool qv_clasp_probe_addresses(const std::vector<std::pair<std::uint32_t, std::string>>& rows,
                              std::uint32_t& highest_inout);
