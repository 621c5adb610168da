#include "sandbox/service_control.h"

#include <cstdio>
#include <string>
#include <utility>

#include "base/hex.h"
#include "sandbox/service_index.h"
#include "sandbox/service_reply.h"

namespace sandbox {

namespace {

ServiceReply refusal(const std::string& sentence) {
    return json_reply({{"error", sentence}}, 400);
}

ServiceReply done() {
    return json_reply({{"ok", true}});
}

Json chain_transaction(const ServiceContext& context, const Transaction& tx) {
    Json row{{"txid", tx.txid}, {"height", tx.height}, {"time", tx.time}, {"size", tx.raw.size()}};
    row["inputs"] = Json::array();
    std::int64_t in_sats = 0;
    std::int64_t out_sats = 0;
    for (const TxInput& input : tx.inputs) {
        const auto funding = context.chain.find(input.txid);
        const bool known = funding && input.vout < funding->outputs.size();
        const Coin coin = known ? coin_of(*funding, input.vout) : Coin{};
        in_sats += coin.sats;
        row["inputs"].push_back({{"txid", input.txid},
                                 {"vout", input.vout},
                                 {"sats", coin.sats},
                                 {"address", script_address(coin.script)}});
    }
    row["outputs"] = Json::array();
    for (const TxOutput& output : tx.outputs) {
        out_sats += output.sats;
        row["outputs"].push_back({{"sats", output.sats},
                                  {"address", script_address(output.script)},
                                  {"script", qv_clasp_hex_encode(output.script)}});
    }
    // Money made at the start has no inputs, and so no fee.
    row["fee"] = tx.inputs.empty() ? 0 : in_sats - out_sats;
    return row;
}

ServiceReply show_chain(const ServiceContext& context) {
    Json rows = Json::array();
    for (const Transaction& tx : context.chain.all()) rows.push_back(chain_transaction(context, tx));
    return json_reply({{"height", context.chain.height()}, {"transactions", std::move(rows)}});
}

Json wallet_document(const Wallet& wallet) {
    return {{"id", wallet.id},
            {"name", wallet.name},
            {"document", wallet.document},
            {"address", wallet.receive(wallet.receive_index).address}};
}

ServiceReply show_world(const ServiceContext& context) {
    const World& world = context.world;
    Json holders = Json::array();
    for (const Holder& holder : world.holders) {
        holders.push_back({{"kind", holder.kind},
                           {"who", holder.who},
                           {"dest", holder.dest},
                           {"lots", holder.lots},
                           {"pubkey", holder.pubkey},
                           {"owners", holder.owners}});
    }
    return json_reply({{"token_id", world.token_id},
                       {"token_name", world.token_name},
                       {"total_lots", world.total_lots},
                       {"reserve_lots", world.reserve_lots},
                       {"in_market_lots", world.in_market_lots},
                       {"holders", std::move(holders)},
                       {"wallets", {wallet_document(world.main_wallet), wallet_document(world.other_wallet)}},
                       {"fee_address", context.fee_address},
                       {"home_domain", context.home_domain},
                       {"folder", world.options.folder}});
}

ServiceReply show_requests(const ServiceContext& context) {
    Json rows = Json::array();
    for (const SeenRequest& seen : context.requests.all()) {
        rows.push_back({{"service", seen.service}, {"method", seen.method}, {"path", seen.path}});
    }
    return json_reply({{"requests", std::move(rows)}});
}

// The whole number of a member, if it is one from `least` to `most` or is not there.
bool read_count(const Json& body, const char* key, std::int64_t least, std::int64_t most, int& value) {
    if (!body.contains(key)) return true;
    std::int64_t count = 0;
    if (!json_whole(json_member(body, key), count) || count < least || count > most) return false;
    value = static_cast<int>(count);
    return true;
}

ServiceReply order_fault(ServiceContext& context, const Json& body) {
    constexpr int MOST_TIMES = 1'000'000;
    constexpr int MOST_MS = 600'000;
    const std::string failure = json_text(body, "failure");
    if (failure == "none") {
        context.faults.clear();
        return done();
    }
    const std::string service = json_text(body, "service");
    if (!is_service_name(service)) return refusal("There is no service \"" + service + "\".");
    if (!is_failure_name(failure)) return refusal("There is no failure \"" + failure + "\".");
    Fault fault{failure, json_text(body, "path")};
    if (!read_count(body, "times", -1, MOST_TIMES, fault.times) || fault.times == 0) {
        return refusal("\"times\" is a count from 1, or -1 for ever.");
    }
    if (!read_count(body, "slow_ms", 0, MOST_MS, fault.slow_ms)) {
        return refusal("\"slow_ms\" is a count of milliseconds, 600000 at most.");
    }
    context.faults.set(service, fault);
    return done();
}

ServiceReply set_lag(ServiceContext& context, const Json& body) {
    int transactions = -1;
    if (!read_count(body, "transactions", 0, 1'000'000, transactions) || transactions < 0) {
        return refusal("\"transactions\" is a count.");
    }
    context.index_lag = static_cast<std::size_t>(transactions);
    return done();
}

ServiceReply set_version(ServiceContext& context, const Json& body) {
    int thousandths = -1;
    if (!read_count(body, "thousandths", 0, 1'000'000, thousandths) || thousandths < 0) {
        return refusal("\"thousandths\" is a count.");
    }
    context.page_version = thousandths;
    return done();
}

ServiceReply set_approval(ServiceContext& context, const Json& body) {
    if (!json_member(body, "wallet_id").is_string()) return refusal("\"wallet_id\" is a text.");
    context.approval.set(json_text(body, "wallet_id"));
    return done();
}

ServiceReply answer_order(ServiceContext& context, const ServiceRequest& request) {
    if (request.path == "/sandbox/mine") return json_reply({{"height", context.chain.mine()}});
    if (request.path == "/sandbox/requests") {
        context.requests.clear();
        return done();
    }
    Json body;
    if (!parse_json(request.body, body) || !body.is_object())
        return refusal("The body is not a JSON object.");
    if (request.path == "/sandbox/fault") return order_fault(context, body);
    if (request.path == "/sandbox/lag") return set_lag(context, body);
    if (request.path == "/sandbox/approve") return set_approval(context, body);
    if (request.path == "/sandbox/version") return set_version(context, body);
    return json_reply({{"error", "no such path"}}, 404);
}

}  // namespace

ServiceReply answer_control(ServiceContext& context, const ServiceRequest& request) {
    if (request.method == "POST") return answer_order(context, request);
    if (request.path == "/sandbox/chain") return show_chain(context);
    if (request.path == "/sandbox/world") return show_world(context);
    if (request.path == "/sandbox/requests") return show_requests(context);
    if (request.path == "/sandbox/receipts") return json_reply({{"receipts", context.receipts.all()}});
    return json_reply({{"error", "no such path"}}, 404);
}

ServiceReply answer_update_page(const ServiceContext& context, const ServiceRequest& request) {
    if (request.path != UPDATE_PAGE_PATH) return empty_reply(404);
    char version[32];
    std::snprintf(version, sizeof version, "%.3f", context.page_version.load() / 1000.0);
    ServiceReply reply = text_reply(
        "<!DOCTYPE html>\n<html><head><title>Download</title></head><body>\n<h1>The Bursaria</h1>\n"
        "<p>Dividends for the holders of a token.</p>\n<h2>Current&nbsp;Build</h2>\n<p>Version: <b>" +
        std::string(version) + "</b></p>\n</body></html>\n");
    reply.type = "text/html";
    return reply;
}

}  // namespace sandbox
