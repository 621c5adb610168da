#include "records/vault_lookup.h"

#include <limits>

#include "base/amounts.h"

namespace {

// False for what is no amount: a negative term, or a sum beyond 63 bits.
bool add_amount(std::int64_t& sum, std::int64_t sats) {
    if (sats < 0 || sum > std::numeric_limits<std::int64_t>::max() - sats) return false;
    sum += sats;
    return true;
}

bool read_address(const std::string& address, const AddressReader& read, std::int64_t& sum_inout,
                  std::string& error_out) {
    if (address.size() < 25 || address.size() > 35) {
        error_out = "address looks wrong.";
        return false;
    }
    std::vector<std::int64_t> coins;
    if (!read(address, coins, error_out)) return false;
    error_out.clear();
    for (const std::int64_t sats : coins) {
        if (!add_amount(sum_inout, sats)) return false;
    }
    return true;
}

}  // namespace

VaultLookupResult look_up_vault(const std::vector<std::string>& addresses, const AddressReader& read) {
    std::int64_t sum = 0;
    for (const std::string& address : addresses) {
        std::string error;
        if (!read_address(address, read, sum, error))
            return {-1, address + " - " + (error.empty() ? "lookup failed" : error)};
    }
    return {sum, ""};
}

std::string vault_value_line(const VaultLookupResult& result) {
    if (result.sats >= 0) return "Vault Value: " + format_bsv(result.sats) + " BSV";
    const std::string failed = "Vault Value: lookup failed";
    return result.detail.empty() ? failed : failed + " (" + result.detail + ")";
}
