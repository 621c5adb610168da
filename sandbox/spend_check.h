// The judgement of a transaction apart from the chain that it stands on: its own form, and whether each input
// may spend the output that it names. Every answer is the node's own words for the first fault, empty if
// there is none. Pure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "sandbox/chain.h"
#include "sandbox/sighash.h"

namespace sandbox {

inline constexpr std::int64_t MAX_SATS = 2'100'000'000'000'000;
inline constexpr std::size_t MAX_TRANSACTION_SIZE = 10'000'000;

// Version, counts, sizes, values and duplicate inputs.
std::string check_form(const Transaction& tx);
// The script of one input: exactly a signature and a public key, over the whole script of the spent output.
std::string check_input(const Transaction& tx, const SighashParts& parts, std::size_t input,
                        const TxOutput& spent);

// The number that a node puts in front of a refusal; 0 where it puts none.
int reject_code(const std::string& reason);

}  // namespace sandbox
