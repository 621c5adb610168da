// Random cases for an independent implementation, and the judgement of what it sends back. Each case is one
// JSON object a line. "ours" are made by the product's own code from a seed (only the nonces of signatures
// differ from run to run); "theirs" are signed elsewhere, good ones and damaged twins.
#pragma once

#include <cstdint>
#include <iosfwd>

namespace pedigree {

// Prints wallets with their derived keys, signed messages, and `transactions` signed transactions. False if
// the product itself failed to make one.
bool print_ours(std::ostream& out, std::uint64_t seed, int transactions);
// Reads the other side's cases, says on `out` how many of each kind agree, and each that does not.
bool check_theirs(std::istream& in, std::ostream& out);

}  // namespace pedigree
