// The chain service behind the look-up of a vault.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// The values of the unspent outputs of an address, unconfirmed ones included. False, with the reason, if the
// service did not answer. Blocks on the network; any thread; the wallet mutex is not taken.
bool read_address_coins(const std::string& address, std::vector<std::int64_t>& sats_out,
                        std::string& error_out);
