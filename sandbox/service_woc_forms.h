// The rows and documents of the chain service's answers. Pure.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/json_file.h"
#include "sandbox/chain.h"

namespace sandbox {

// One row of "/unspent/all" and its relatives, in the long form or in the older one of four keys.
Json unspent_row(const Coin& coin, bool spent_in_mempool);
Json short_unspent_row(const Coin& coin);
// An unconfirmed row under the names "txid" and "vout".
Json renamed_unspent_row(const Coin& coin);

// The object around rows of an address: the address, the hash of its script, the rows under "result", an
// error text.
Json around_rows(const std::string& address, Json rows);

// A whole transaction as the service decodes it. The older form has the amount in BSV and the addresses in an
// array, the other one satoshis and a single address.
Json decoded_transaction(const Transaction& tx, int chain_height, bool satoshi_form);

// How the service passes on a node's refusal; a code of 0 is none.
std::string refusal_text(int code, std::string_view reason);

}  // namespace sandbox
