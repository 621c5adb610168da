// The value of a vault: what the unspent outputs of its addresses add up to, unconfirmed ones included. It
// reads through a function of the caller's and touches nothing else, so that it runs on a worker thread with
// a copy of the addresses. Blocks as long as the reader does.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// Reads the values of an address's unspent outputs. False, with the reason, if no service answered. Called on
// the thread of the look-up.
using AddressReader = std::function<bool(const std::string& address, std::vector<std::int64_t>& sats_out,
                                         std::string& error_out)>;

struct VaultLookupResult {
    std::int64_t sats = -1;  // -1 after a failure
    std::string detail;      // the address that failed, " - ", and why
};

inline constexpr const char* VAULT_LOOKING_UP = "Vault Value: looking up (0-conf)...";
inline constexpr const char* VAULT_NO_VALUE = "Vault Value: -";

// Ends at the first address that fails. No addresses give 0.
VaultLookupResult look_up_vault(const std::vector<std::string>& addresses, const AddressReader& read);

// The value line: "Vault Value: 0.00000546 BSV", or "Vault Value: lookup failed" with the detail in brackets.
std::string vault_value_line(const VaultLookupResult& result);
