// Vaults: named, watch-only lists of addresses of the bound wallet, whose coins are added up and never spent.
// The rules of saving and adding work on the list in memory; whoever calls them writes it, if they say so.
// The file is rewritten whole, and neither reading nor writing reports a failure. Window's thread only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct Vault {
    std::string name;
    std::vector<std::string> addresses;  // each once
};

inline constexpr std::size_t NO_VAULT = static_cast<std::size_t>(-1);

std::vector<Vault> load_vaults();
void save_vaults(const std::vector<Vault>& vaults);
// The place of the vault of exactly this name, NO_VAULT if there is none.
std::size_t find_vault(const std::vector<Vault>& vaults, std::string_view name);

// 26 to 35 ASCII letters and digits, the first "1" or "3". No checksum.
bool is_vault_address(std::string_view text);
// The pieces between line breaks, blanks, commas and semicolons, each once, in order.
std::vector<std::string> split_addresses(std::string_view pasted);

// What became of a save or an add.
struct VaultEdit {
    bool changed = false;  // the list is to be written
    std::string text;      // to show
    std::size_t selected = NO_VAULT;
};
// Gives the vault of this name these addresses, or appends a new vault. Refused, with nothing changed: no
// name, no addresses, an address that fails the test.
VaultEdit save_vault(std::vector<Vault>& vaults, std::string_view name_text, std::string_view addresses_text);
// Adds addresses to the vault at `selected`. A piece that fails the test ends it; those before it stay in
// `vaults`, to be written with the next change.
VaultEdit add_vault_addresses(std::vector<Vault>& vaults, std::size_t selected, std::string_view pasted);

// What the split of a vault needs of a board.
struct VaultBoard {
    bool loaded = false;
    std::string token_id;
    std::string token_name;
    std::string total_lots;
    std::string in_market_lots;
};
// What the value would pay the board's float, for information only; `value_sats` is negative if it is not
// known. The reserve counts in, exclusions do not: it is not the split of a round. Lines end in "\r\n".
std::string vault_split_text(std::int64_t value_sats, const VaultBoard& board);
