// The parts of a wallet document as records: counters, remembered ordinals and contacts, read from any JSON
// and written back. Pure.
#pragma once

#include <cstdint>
#include <vector>

#include "base/json_file.h"
#include "wallet/wallet_session.h"

// A counter of a chain: an integer from 0 to the highest index that is not a hardened one. False, with
// `counter` untouched, for everything else.
bool read_counter(const Json& value, std::uint32_t& counter);

// The rows of `ord_owned` of a document; those without an origin are left out.
std::vector<LocalOrd> read_ord_owned(const Json& document);
Json ord_owned_rows(const std::vector<LocalOrd>& rows);

// The address book, normalised; rows that lead nowhere are left out.
std::vector<QvClaspContact> read_contacts(const Json& document);
Json contact_rows(const std::vector<QvClaspContact>& contacts);
