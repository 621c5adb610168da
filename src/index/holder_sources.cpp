#include "index/holder_sources.h"

#include <algorithm>
#include <unordered_set>

#include "base/amounts.h"
#include "base/decimal_text.h"
#include "base/hex.h"
#include "base/json_file.h"
#include "base/settings.h"
#include "index/inscription.h"
#include "net/http_client.h"
#include "wallet/address.h"

namespace {

constexpr int HOLDERS_TIMEOUT_S = 25;

std::string first_text(const Json& element, std::initializer_list<const char*> keys) {
    for (const char* key : keys) {
        std::string text = json_text(element, key);
        if (!text.empty()) return text;
    }
    return "";
}

// The owner as an address with its hash; false for a holder that is known by some other script only.
bool read_owner(const Json& element, HolderTxo& row) {
    row.owner = first_text(element, {"address", "owner"});
    if (row.owner.starts_with('1') && qv_clasp_address_to_hash160(row.owner, row.owner_hash)) return true;
    const Bytes hash = qv_clasp_hex_decode(first_text(element, {"pkhash", "pkHash", "lock"}));
    if (hash.size() != row.owner_hash.size()) return false;
    std::copy(hash.begin(), hash.end(), row.owner_hash.begin());
    row.owner = qv_clasp_address_from_hash160(row.owner_hash);
    return true;
}

// An `amt` that is a text ends the search, also an empty one.
std::string read_lots(const Json& element) {
    std::string amount = read_amt(element);
    if (amount.empty() && !json_member(element, "amt").is_string()) amount = json_text(element, "balance");
    return dec_norm(amount);
}

std::unordered_set<std::string> owners_of(const std::vector<HolderTxo>& rows) {
    std::unordered_set<std::string> owners;
    for (const HolderTxo& row : rows) owners.insert(row.owner);
    return owners;
}

}  // namespace

void parse_holders(const std::string& body, std::vector<HolderTxo>& rows_inout) {
    Json answer;
    if (!parse_json(body, answer)) return;
    const Json& list = answer.is_array() ? answer : json_member(answer, "holders");
    if (!list.is_array()) return;
    std::unordered_set<std::string> seen = owners_of(rows_inout);
    for (const Json& element : list) {
        HolderTxo row;
        if (!read_owner(element, row) || seen.count(row.owner) > 0) continue;
        row.lots = read_lots(element);
        if (row.lots.empty() || row.lots == "0") continue;
        seen.insert(row.owner);
        rows_inout.push_back(std::move(row));
    }
}

void qv_clasp_fetch_holders(const std::string& token_id, std::vector<HolderTxo>& rows_inout) {
    if (token_id.size() < TOKEN_ID_LENGTH) return;
    std::string body;
    std::string error;
    const std::string url = settings().ordinals_api_base + "/bsv20/id/" + token_id + "/holders";
    if (qv_clasp_http_get(url, body, error, HOLDERS_TIMEOUT_S)) parse_holders(body, rows_inout);
}

std::vector<HolderTxo> merge_holder_rows(const std::vector<HolderTxo>& chain_rows,
                                         const std::vector<HolderTxo>& index_rows) {
    std::vector<HolderTxo> merged = chain_rows;
    std::unordered_set<std::string> seen = owners_of(chain_rows);
    for (const HolderTxo& row : index_rows) {
        if (seen.insert(row.owner).second) merged.push_back(row);
    }
    return merged;
}

void reconcile_deploy_rows(std::vector<HolderTxo>& rows_inout) {
    const auto is_deploy = [](const HolderTxo& row) { return is_deploy_op(row.op); };
    std::string deployed = "0";
    std::string moved = "0";
    for (const HolderTxo& row : rows_inout) {
        std::string& sum = is_deploy(row) ? deployed : moved;
        sum = dec_add(sum, row.lots);
    }
    const auto first = std::find_if(rows_inout.begin(), rows_inout.end(), is_deploy);
    if (first == rows_inout.end() || moved == "0") return;
    const bool all_moved = dec_cmp(moved, deployed) >= 0;
    if (!all_moved) first->lots = dec_sub(deployed, moved);
    const auto keep_until = all_moved ? first : first + 1;
    rows_inout.erase(std::remove_if(keep_until, rows_inout.end(), is_deploy), rows_inout.end());
}
