#include "index/token_walk.h"

#include <functional>
#include <unordered_set>
#include <utility>

#include "base/amounts.h"
#include "base/decimal_text.h"
#include "index/chain_view.h"
#include "index/inscription.h"
#include "index/own_addresses.h"
#include "wallet/address.h"

namespace {

constexpr std::size_t MOST_TOKEN_POPS = 256;
constexpr std::size_t MOST_OWNED_POPS = 48;

// A token output that the walk has reached.
struct WalkOutput {
    std::string outpoint;  // as it stood on the stack
    std::string txid;
    std::uint32_t vout = 0;
    Hash160 owner_hash{};
    Bsv20Meta meta;
    std::string token_id;  // what the record names; may be empty
};

struct TokenWalk {
    std::vector<std::string> stack;
    std::unordered_set<std::string> visited;
    std::string root;  // the deploy that all outputs must belong to; empty until one is named
    bool climb = true;
};

bool foreign(const TokenWalk& walk, const std::string& token_id) {
    return !walk.root.empty() && !token_id.empty() && token_id != walk.root;
}

bool read_walk_output(const std::string& outpoint, WalkOutput& output) {
    output.outpoint = outpoint;
    if (!parse_outpoint(outpoint, output.txid, output.vout)) return false;
    const std::shared_ptr<const Json> tx = qv_clasp_shared_tx(output.txid);
    const Json* outputs = tx_outputs(tx);
    if (outputs == nullptr || output.vout >= outputs->size()) return false;
    std::string own_outpoint;
    if (!read_ord_output((*outputs)[output.vout], output.txid, output.vout, output.owner_hash, output.meta,
                         own_outpoint)) {
        return false;
    }
    output.token_id = token_id_of(output.meta, own_outpoint);
    return true;
}

// The first record that names a token settles the root; from a later output the walk climbs to the deploy.
void follow_token_id(TokenWalk& walk, const WalkOutput& output) {
    if (output.token_id.empty()) return;
    if (walk.root.empty()) walk.root = output.token_id;
    if (walk.climb && output.token_id != output.outpoint && walk.visited.count(output.token_id) == 0) {
        walk.stack.push_back(output.token_id);
    }
}

// An output whose record names no token belongs to this one by the spend alone.
void push_outputs_of(TokenWalk& walk, const std::string& spender) {
    const std::shared_ptr<const Json> tx = qv_clasp_shared_tx(spender);
    const Json* outputs = tx_outputs(tx);
    if (outputs == nullptr) return;
    for (std::size_t place = 0; place < outputs->size(); ++place) {
        const Json& entry = (*outputs)[place];
        Hash160 owner_hash{};
        Bsv20Meta meta;
        std::string outpoint;
        if (!read_ord_output(entry, spender, vout_index(entry, place), owner_hash, meta, outpoint)) continue;
        if (!foreign(walk, token_id_of(meta, outpoint))) walk.stack.push_back(outpoint);
    }
}

using TakeHolding = std::function<void(const WalkOutput&, const std::string& root)>;

void step(TokenWalk& walk, const std::string& outpoint, const TakeHolding& take) {
    if (outpoint.empty() || !walk.visited.insert(outpoint).second) return;
    WalkOutput output;
    if (!read_walk_output(outpoint, output)) return;
    // An id that was typed with zeros before its number is the same output.
    const std::string plain = outpoint_text(output.txid, output.vout);
    if (plain != outpoint && !walk.visited.insert(plain).second) return;
    follow_token_id(walk, output);
    if (foreign(walk, output.token_id)) return;
    std::string spender;
    const SpendStatus status = qv_clasp_spend_status(output.txid, output.vout, spender);
    if (status == SpendStatus::Unspent) take(output, walk.root);
    if (status == SpendStatus::Spent) push_outputs_of(walk, spender);
}

void run_walk(const std::string& start, std::size_t most_pops, bool climb, std::uint64_t generation,
              const TakeHolding& take) {
    if (start.size() < TOKEN_ID_LENGTH) return;
    TokenWalk walk;
    walk.climb = climb;
    walk.stack.push_back(start);
    for (std::size_t pops = 0; pops < most_pops && !walk.stack.empty(); ++pops) {
        if (generation_moved(generation)) return;
        const std::string outpoint = std::move(walk.stack.back());
        walk.stack.pop_back();
        step(walk, outpoint, take);
    }
}

}  // namespace

void qv_clasp_trace_token_rows(const std::string& token_id, std::vector<HolderTxo>& rows,
                               std::uint64_t generation) {
    run_walk(token_id, MOST_TOKEN_POPS, true, generation, [&](const WalkOutput& output, const std::string&) {
        HolderTxo row;
        row.outpoint = output.outpoint;
        row.txid = output.txid;
        row.vout = output.vout;
        row.lots = dec_norm(output.meta.amt);
        row.op = output.meta.op;
        row.name = output.meta.name;
        row.icon = output.meta.icon;
        row.owner = qv_clasp_address_from_hash160(output.owner_hash);
        row.owner_hash = output.owner_hash;
        rows.push_back(std::move(row));
    });
}

void qv_clasp_trace_owned(const std::string& origin, const std::vector<std::string>& watch,
                          std::vector<LocalOrd>& found_inout, bool climb, std::uint64_t generation) {
    const AddressesByHash watched = addresses_by_hash(watch);
    run_walk(origin, MOST_OWNED_POPS, climb, generation,
             [&](const WalkOutput& output, const std::string& root) {
                 const auto owner = watched.find(output.owner_hash);
                 if (owner == watched.end()) return;
                 LocalOrd ord = token_ord(output.txid, output.vout, output.meta, owner->second);
                 ord.token_id = output.token_id.empty() ? root : output.token_id;
                 found_inout.push_back(std::move(ord));
             });
}
