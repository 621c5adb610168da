// What an index by address or by token says of the chain. An index may lag: it then shows the unspent outputs
// as they were some transactions ago, while the transactions themselves are always up to date.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/json_file.h"
#include "sandbox/service_context.h"

namespace sandbox {

// Unspent outputs of an address, in no settled order.
std::vector<Coin> indexed_coins(const ServiceContext& context, const std::string& address);
// Outputs of an address that unmined ones among its newest `most` transactions have spent.
std::vector<Coin> spent_in_mempool(const ServiceContext& context, const std::string& address,
                                   std::size_t most);

// A token record in an output.
struct TokenOutput {
    Coin coin;
    std::string owner;  // empty if no address can spend it
    std::string token_id;
    std::string content_type;
    Json record;  // the BSV-20 object of the inscription
    std::string amt() const;
    std::string op() const;
};
// False for an output without a token record that names its token.
bool read_token_output(const Coin& coin, TokenOutput& output);
// The deploy of a token, if the id names one.
std::optional<TokenOutput> find_deploy(const ServiceContext& context, const std::string& token_id);
// Owners of a token with all their lots, most lots first.
std::vector<std::pair<std::string, std::string>> token_owners(const ServiceContext& context,
                                                              const std::string& token_id);

std::string outpoint_text(const Coin& coin);
// The output that an outpoint text names, spent or not.
std::optional<Coin> find_output(const ServiceContext& context, const std::string& outpoint);
Coin coin_of(const Transaction& tx, std::size_t vout);
// The address of a script that one signature spends; empty for others.
std::string script_address(const Bytes& script);

}  // namespace sandbox
