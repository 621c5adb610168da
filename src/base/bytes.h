// The byte sequences that cross borders in this system.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

using Bytes = std::vector<std::uint8_t>;
using Hash160 = std::array<std::uint8_t, 20>;
using Hash256 = std::array<std::uint8_t, 32>;
