// Finding coins that other programs have received further up the receive chain of the wallet, by asking the
// chain service for the balances of addresses beyond the counter.
//
// One scan at a time: the scan mutex is held to the end of a scan, and the wallet mutex, taken after it,
// never across the network. A wallet that is switched during a scan is left alone.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

using ReceiveRow = std::pair<std::uint32_t, std::string>;  // index and address

// Looks up to 400 addresses beyond the counter that no earlier scan of this session has looked at, and raises
// the counter, in the session and in the document, to the highest one with a balance. Blocks on the network.
void qv_clasp_scan_receive();
// One batch; raises `highest` to the highest index with a confirmed or an incoming unconfirmed balance.
// False, with `highest` unchanged, if the call failed or its answer has another form. Blocks on the network.
bool qv_clasp_probe_addresses(const std::vector<ReceiveRow>& rows, std::uint32_t& highest_inout);
