// Turning a handle, a paymail or a 1-address into an address, and an address into the paymail that it belongs
// to. Only the family's own domain is served. Functions here may block on the network; none holds the wallet
// mutex then.
#pragma once

#include <string>

#include "wallet/wallet_session.h"

// No network. An address that decodes, or one that the local registry knows, goes to `address_out`; a name
// that has to be asked for goes to `alias_out` with no error; otherwise false with the error text.
bool qv_clasp_parse_dest(const std::string& dest, std::string& address_out, std::string& alias_out,
                         std::string& error_out);

// Asks the family's host, then the local resolver. Empty, with the error text, if neither gives an address.
std::string qv_clasp_resolve_alias(const std::string& alias, std::string& error_out);

// The two together. `lock` is the caller's only hold on the wallet mutex: it is released around the network
// call and taken back, and the wallet may have changed meanwhile.
std::string qv_clasp_resolve_dest(WalletLock& lock, const std::string& dest, std::string& error_out);

// Asks the family's host whose address this is. True if there is an alias; `alias_out` and `pubkey_out` are
// in lower case; `kind_out` tells "ordinal" and "bn" addresses from payment addresses.
bool qv_clasp_lookup_holder(const std::string& address, std::string& alias_out, std::string& pubkey_out,
                            std::string& address_out, std::string& kind_out);
