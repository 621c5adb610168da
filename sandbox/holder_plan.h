// The people of the world: who holds the token, on which addresses, and what the directory says of them.
// Deterministic for the state of the random generator.
#pragma once

#include <random>
#include <string>
#include <vector>

#include "sandbox/world.h"

namespace sandbox {

using Random = std::mt19937_64;

KeyPair random_key(Random& random);

// One output of the token, as it is to be made.
struct PlannedOutput {
    Hash160 owner{};
    std::uint64_t lots = 0;
};
struct HolderPlan {
    Holder holder;
    std::vector<PlannedOutput> outputs;
};

// Up to this many holders a few addresses hold more than one output. In a larger world a reader that walks
// the chain for a limited number of steps would see a part of such an address only, and the board could not
// be told beforehand.
inline constexpr int SMALL_WORLD = 60;

// The holder of a number, of one of the kinds in turn; puts what is known of it into the directory.
HolderPlan plan_holder(int number, const WorldOptions& options, Random& random, Directory& directory);
// The wallet's own part of `lots`, on its current ordinal address, and of `among_coins` on a receive address.
std::vector<HolderPlan> plan_reserve(const Wallet& wallet, std::uint64_t lots, std::uint64_t among_coins,
                                     const WorldOptions& options);

}  // namespace sandbox
