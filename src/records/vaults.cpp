#include "records/vaults.h"

#include <algorithm>

#include "base/amounts.h"
#include "base/json_file.h"
#include "base/text.h"
#include "records/record_files.h"

namespace {

bool add_once(std::vector<std::string>& list, const std::string& text) {
    if (std::find(list.begin(), list.end(), text) != list.end()) return false;
    list.push_back(text);
    return true;
}

Vault vault_from_json(const Json& row) {
    Vault vault;
    vault.name = json_text(row, "name");
    const Json& addresses = json_member(row, "addresses");
    if (!addresses.is_array()) return vault;
    for (const Json& address : addresses) {
        if (address.is_string()) add_once(vault.addresses, address.get_ref<const std::string&>());
    }
    return vault;
}

std::string not_an_address(const std::string& piece) {
    return "Not a payment longcode: " + piece;
}

std::string split_figures(std::int64_t value_sats, std::uint64_t total, const VaultBoard& board) {
    const std::uint64_t in_market = read_lot_text_lenient(board.in_market_lots);
    const std::int64_t would_pay =
        pro_rata_sats(value_sats, std::to_string(in_market), std::to_string(total));
    return "If this vault were the dividend pot for " +
           (board.token_name.empty() ? board.token_id : board.token_name) +
           ":\r\nWould pay out (in-market): " + format_bsv(would_pay) +
           " BSV\r\nRetained (this wallet's reserve lots): " + format_bsv(value_sats - would_pay) +
           " BSV\r\nFloat " + board.in_market_lots + " / total " + board.total_lots +
           " lots. Information only - this does not send.";
}

}  // namespace

std::vector<Vault> load_vaults() {
    std::vector<Vault> vaults;
    Json document;
    if (!read_json_file(vaults_file_path(), document)) return vaults;
    const Json& rows = json_member(document, "vaults");
    if (!rows.is_array()) return vaults;
    for (const Json& row : rows) {
        if (row.is_object()) vaults.push_back(vault_from_json(row));
    }
    return vaults;
}

void save_vaults(const std::vector<Vault>& vaults) {
    Json rows = Json::array();
    for (const Vault& vault : vaults) rows.push_back({{"name", vault.name}, {"addresses", vault.addresses}});
    write_text_file(vaults_file_path(), dump_json({{"vaults", rows}}, 2));
}

std::size_t find_vault(const std::vector<Vault>& vaults, std::string_view name) {
    for (std::size_t i = 0; i < vaults.size(); ++i) {
        if (vaults[i].name == name) return i;
    }
    return NO_VAULT;
}

bool is_vault_address(std::string_view text) {
    if (text.size() < 26 || text.size() > 35) return false;
    if (text[0] != '1' && text[0] != '3') return false;
    return std::all_of(text.begin(), text.end(), is_ascii_alnum);
}

std::vector<std::string> split_addresses(std::string_view pasted) {
    std::vector<std::string> pieces;
    while (!pasted.empty()) {
        const std::size_t end = std::min(pasted.find_first_of("\n\r ,;"), pasted.size());
        const std::string piece(trim(pasted.substr(0, end), " \t", " \t\r"));
        if (!piece.empty()) add_once(pieces, piece);
        pasted.remove_prefix(std::min(end + 1, pasted.size()));
    }
    return pieces;
}

VaultEdit save_vault(std::vector<Vault>& vaults, std::string_view name_text,
                     std::string_view addresses_text) {
    const std::string name = trim_text(name_text);
    const std::vector<std::string> addresses = split_addresses(addresses_text);
    if (name.empty()) return {false, "Give the vault a name."};
    if (addresses.empty()) return {false, "Paste at least one 1... address."};
    for (const std::string& address : addresses) {
        if (!is_vault_address(address)) return {false, not_an_address(address)};
    }
    std::size_t place = find_vault(vaults, name);
    if (place == NO_VAULT) {
        place = vaults.size();
        vaults.push_back({name, {}});
    }
    vaults[place].addresses = addresses;
    return {true, "Vault saved. Watch-only - BA will not spend these addresses.", place};
}

VaultEdit add_vault_addresses(std::vector<Vault>& vaults, std::size_t selected, std::string_view pasted) {
    if (selected >= vaults.size()) return {false, "Pick a vault first, or Create Vault."};
    const std::vector<std::string> pieces = split_addresses(pasted);
    if (pieces.empty()) return {false, "Paste a 1... payment longcode to add.", selected};
    bool added = false;
    for (const std::string& piece : pieces) {
        if (!is_vault_address(piece)) return {false, not_an_address(piece), selected};
        if (add_once(vaults[selected].addresses, piece)) added = true;
    }
    if (!added) return {false, "That address is already on this vault.", selected};
    return {true, "Address added. Watch-only - BA will not spend it.", selected};
}

std::string vault_split_text(std::int64_t value_sats, const VaultBoard& board) {
    if (value_sats < 0) return "Look up Vault Value first (open or pick a vault).";
    if (!board.loaded || board.total_lots.empty() || board.total_lots == "0")
        return "Snapshot a token on the main window first. The split uses that token's in-market vs reserve "
               "lots.";
    std::uint64_t total = 0;
    if (!read_lot_text_strict(board.total_lots, total) || total == 0)
        return "Token lot totals are too large to split in this build.";
    return split_figures(value_sats, total, board);
}
