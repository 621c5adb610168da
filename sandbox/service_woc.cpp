#include "sandbox/service_woc.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "base/hex.h"
#include "base/text.h"
#include "sandbox/keys.h"
#include "sandbox/service_broadcast.h"
#include "sandbox/service_index.h"
#include "sandbox/service_reply.h"
#include "sandbox/service_woc_forms.h"

namespace sandbox {

namespace {

constexpr std::size_t MOST_ADDRESSES = 20;
constexpr std::size_t HISTORY_ROWS = 100;
// How many unmined transactions of an address the lists of spent coins look back over.
constexpr std::size_t LISTED_MEMPOOL_SPENDS = 4;
constexpr std::size_t COUNTED_MEMPOOL_SPENDS = 400;

ServiceReply rows_reply(const std::string& address, Json rows, bool bare) {
    return json_reply(bare ? std::move(rows) : around_rows(address, std::move(rows)));
}

// Newest blocks are still in both of the service's lists for some addresses.
bool listed_twice(const std::string& address, const Coin& coin, int chain_height) {
    return coin.height == chain_height && form_of(address, 2) == 1;
}

ServiceReply all_unspent(const ServiceContext& context, const std::string& address) {
    const int height = context.chain.height();
    Json rows = Json::array();
    for (const Coin& coin : indexed_coins(context, address)) {
        if (listed_twice(address, coin, height)) {
            Coin before = coin;
            before.height = 0;
            rows.push_back(unspent_row(before, false));
        }
        rows.push_back(unspent_row(coin, false));
    }
    if (context.index_lag == 0) {
        for (const Coin& coin : spent_in_mempool(context, address, LISTED_MEMPOOL_SPENDS)) {
            if (coin.height > 0) rows.push_back(unspent_row(coin, true));
        }
    }
    return rows_reply(address, std::move(rows), false);
}

ServiceReply unspent_of(const ServiceContext& context, const std::string& address, bool unconfirmed,
                        bool confirmed) {
    const bool bare = confirmed && unconfirmed && form_of(address, 3) != 0;
    const bool renamed = !confirmed && form_of(address, 2) == 1;
    Json rows = Json::array();
    for (const Coin& coin : indexed_coins(context, address)) {
        if (coin.height > 0 ? !confirmed : !unconfirmed) continue;
        rows.push_back(bare      ? short_unspent_row(coin)
                       : renamed ? renamed_unspent_row(coin)
                                 : unspent_row(coin, false));
    }
    return rows_reply(address, std::move(rows), bare);
}

// The newest `limit` transactions of an address that are mined or not as asked, oldest first.
std::vector<Transaction> history_of(const ServiceContext& context, const std::string& address,
                                    bool unconfirmed, bool confirmed, std::size_t limit) {
    std::vector<Transaction> found;
    const std::vector<std::string> txids = context.chain.history(address);
    for (auto txid = txids.rbegin(); txid != txids.rend() && found.size() < limit; ++txid) {
        std::optional<Transaction> tx = context.chain.find(*txid);
        if (tx && (tx->height > 0 ? confirmed : unconfirmed)) found.push_back(std::move(*tx));
    }
    std::reverse(found.begin(), found.end());
    return found;
}

ServiceReply unconfirmed_history(const ServiceContext& context, const std::string& address,
                                 std::size_t limit) {
    const bool bare = form_of(address, 3) == 2;
    Json rows = Json::array();
    for (const Transaction& tx : history_of(context, address, true, false, limit)) {
        Json row{{"tx_hash", tx.txid}};
        if (bare) row["height"] = 0;
        rows.push_back(std::move(row));
    }
    return rows_reply(address, std::move(rows), bare);
}

ServiceReply confirmed_history(const ServiceContext& context, const std::string& address, std::size_t limit) {
    if (context.chain.history(address).empty()) return text_reply("Not Found", 404);
    Json rows = Json::array();
    for (const Transaction& tx : history_of(context, address, false, true, limit)) {
        rows.push_back({{"tx_hash", tx.txid}, {"height", tx.height}});
    }
    return rows_reply(address, std::move(rows), false);
}

ServiceReply whole_history(const ServiceContext& context, const std::string& address, std::size_t limit) {
    Json rows = Json::array();
    for (const Transaction& tx : history_of(context, address, true, true, limit)) {
        rows.push_back({{"tx_hash", tx.txid}, {"height", tx.height}});
    }
    return rows_reply(address, std::move(rows), true);
}

ServiceReply answer_address(const ServiceContext& context, const ServiceRequest& request,
                            const std::string& address, const std::string& what) {
    Hash160 hash160{};
    if (!hash160_of_address(address, hash160)) return empty_reply(400);
    const std::size_t limit = query_number(request, "limit", HISTORY_ROWS);
    if (what == "unspent/all") return all_unspent(context, address);
    if (what == "unspent") return unspent_of(context, address, true, true);
    if (what == "unconfirmed/unspent") return unspent_of(context, address, true, false);
    if (what == "confirmed/unspent") return unspent_of(context, address, false, true);
    if (what == "unconfirmed/history") return unconfirmed_history(context, address, limit);
    if (what == "confirmed/history") return confirmed_history(context, address, limit);
    if (what == "history") return whole_history(context, address, limit);
    return empty_reply(404);
}

// Whole transactions come bare from one of the service's machines and as a JSON text from another.
ServiceReply hex_reply(const Transaction& tx, unsigned bare_form) {
    const std::string hex = qv_clasp_hex_encode(tx.raw);
    return text_reply(form_of(tx.txid, 2) == bare_form ? hex : "\"" + hex + "\"\n");
}

ServiceReply spent_reply(const ServiceContext& context, const Transaction& tx, const std::string& vout_text) {
    unsigned long long vout = 0;
    if (!parse_u64(vout_text, vout)) return empty_reply(400);
    const std::optional<std::string> spender =
        context.chain.spender(tx.txid, static_cast<std::uint32_t>(std::min(vout, 0xffffffffULL)));
    const std::optional<Transaction> spending = spender ? context.chain.find(*spender) : std::nullopt;
    if (!spending) return empty_reply(404);
    const auto input = std::find_if(
        spending->inputs.begin(), spending->inputs.end(),
        [&](const TxInput& candidate) { return candidate.txid == tx.txid && candidate.vout == vout; });
    return json_reply({{"txid", *spender},
                       {"vin", input - spending->inputs.begin()},
                       {"status", spending->height > 0 ? "confirmed" : "unconfirmed"}});
}

ServiceReply answer_tx(const ServiceContext& context, const std::vector<std::string>& parts) {
    // parts: "tx", the id, and what is asked of it.
    if (!is_hex64(parts[1])) return text_reply("txid must be 64 hex characters in length", 400);
    const std::optional<Transaction> tx = context.chain.find(ascii_lower(parts[1]));
    const bool spend_asked = parts.size() == 4 && parts[3] == "spent";
    if (!tx) return empty_reply(spend_asked ? 400 : 404);
    if (parts.size() == 2) return json_reply(decoded_transaction(*tx, context.chain.height(), false));
    if (spend_asked) return spent_reply(context, *tx, parts[2]);
    if (parts.size() != 3) return empty_reply(404);
    if (parts[2] == "hex") return hex_reply(*tx, 0);
    if (parts[2] == "raw") return hex_reply(*tx, 1);
    if (parts[2] == "decoded") return json_reply(decoded_transaction(*tx, context.chain.height(), true));
    return empty_reply(404);
}

Json balance_row(const ServiceContext& context, const std::string& address, bool flat) {
    std::int64_t confirmed = 0;
    std::int64_t unconfirmed = 0;
    for (const Coin& coin : indexed_coins(context, address))
        (coin.height > 0 ? confirmed : unconfirmed) += coin.sats;
    // A mined coin counts as confirmed until its spend is mined, and against the unconfirmed figure
    // meanwhile.
    for (const Coin& coin : spent_in_mempool(context, address, COUNTED_MEMPOOL_SPENDS)) {
        if (coin.height == 0) continue;
        confirmed += coin.sats;
        unconfirmed -= coin.sats;
    }
    if (flat)
        return {{"address", address}, {"confirmed", confirmed}, {"unconfirmed", unconfirmed}, {"error", ""}};
    return {{"address", address}, {"balance", {{"confirmed", confirmed}, {"unconfirmed", unconfirmed}}}};
}

ServiceReply balances(const ServiceContext& context, const std::string& body) {
    Json asked;
    if (!parse_json(body, asked) || !json_member(asked, "addresses").is_array()) return empty_reply(400);
    const Json& addresses = json_member(asked, "addresses");
    if (addresses.size() > MOST_ADDRESSES) return text_reply("max of 20 addresses per request", 400);
    Json rows = Json::array();
    const std::string first =
        addresses.empty() || !addresses[0].is_string() ? "" : addresses[0].get<std::string>();
    const unsigned form = form_of(first, 3);
    for (const Json& address : addresses) {
        if (!address.is_string()) return empty_reply(400);
        rows.push_back(balance_row(context, address.get<std::string>(), form == 1));
    }
    return json_reply(form == 2 ? Json{{"value", std::move(rows)}} : rows);
}

ServiceReply broadcast(ServiceContext& context, const ServiceRequest& request) {
    Json asked;
    parse_json(request.body, asked);
    const Broadcast result =
        take_broadcast(context.chain, json_text(asked, "txhex"), request.broadcast_fault);
    switch (result.end) {
        case BroadcastEnd::Taken:
            return text_reply(form_of(result.txid, 3) == 0 ? result.txid : "\"" + result.txid + "\"\n");
        case BroadcastEnd::Failed: {
            ServiceReply reply = text_reply("<html>bad gateway</html>", 502);
            reply.type = "text/html";
            return reply;
        }
        case BroadcastEnd::RefusedAsSuccess:
            return text_reply("\"" + refusal_text(result.code, result.reason) + "\"\n");
        default:
            return text_reply("\"" + refusal_text(result.code, result.reason) + "\"\n", 400);
    }
}

ServiceReply page_of(const ServiceContext& context, const std::vector<std::string>& parts) {
    const bool known = parts.size() == 2 && parts[0] == "tx" && context.chain.find(ascii_lower(parts[1]));
    ServiceReply reply =
        text_reply(known ? "<html><body><h1>Transaction</h1><p>" + parts[1] + "</p></body></html>"
                         : "<html><body>Not found</body></html>",
                   known ? 200 : 404);
    reply.type = "text/html";
    return reply;
}

}  // namespace

ServiceReply answer_woc(ServiceContext& context, const ServiceRequest& request) {
    std::string rest;
    if (!path_after(request.path, WOC_API_PATH, rest)) return page_of(context, path_parts(request.path));
    if (request.method == "POST") {
        if (rest == "/tx/raw") return broadcast(context, request);
        if (rest == "/addresses/balance") return balances(context, request.body);
        return empty_reply(404);
    }
    const std::vector<std::string> parts = path_parts(rest);
    if (parts.size() >= 2 && parts[0] == "tx") return answer_tx(context, parts);
    if (parts.size() >= 3 && parts[0] == "address") {
        const std::string what = parts.size() > 3 ? parts[2] + "/" + parts[3] : parts[2];
        return answer_address(context, request, parts[1], what);
    }
    return empty_reply(404);
}

}  // namespace sandbox
