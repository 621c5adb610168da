#include "sandbox/service_ordinals.h"

#include <openssl/sha.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/hex.h"
#include "base/text.h"
#include "sandbox/keys.h"
#include "sandbox/scripts.h"
#include "sandbox/service_index.h"
#include "sandbox/service_reply.h"

namespace sandbox {

namespace {

// The place in a block comes as a number in one answer and as text in another.
Json place_in_block(const Coin& coin) {
    const unsigned place = form_of(coin.txid, 9000);
    if (form_of(coin.txid, 2) == 0) return place;
    return std::to_string(place);
}

Json height_of(const Coin& coin) {
    if (coin.height > 0) return coin.height;
    return nullptr;
}

ServiceReply not_found() {
    return json_reply({{"message", "Not Found"}}, 404);
}

Json inscription_json(const ReadScript& script) {
    Hash256 hash{};
    SHA256(script.body.data(), script.body.size(), hash.data());
    Json insc{
        {"file",
         {{"hash", qv_clasp_hex_encode(hash)}, {"size", script.body.size()}, {"type", script.content_type}}}};
    Json body;
    const std::string text(script.body.begin(), script.body.end());
    if (parse_json(text, body) && body.is_object()) {
        insc["json"] = std::move(body);
    } else if (script.content_type.starts_with("text/") && is_utf8(text)) {
        insc["text"] = text;
    }
    return insc;
}

// The token under "bsv20", under "bsv21", or only inside the inscription.
Json txo_data(const Coin& coin, const ReadScript& script) {
    if (!script.inscribed) return nullptr;
    Json data{{"types", Json::array({"insc"})}, {"insc", inscription_json(script)}};
    TokenOutput token;
    const unsigned form = form_of(outpoint_text(coin), 4);
    if (!read_token_output(coin, token) || form == 3) return data;
    Json record = token.record;
    record["id"] = token.token_id;
    record["amt"] = token.amt();
    record["status"] = 1;
    data["types"].push_back("bsv20");
    data[form == 2 ? "bsv21" : "bsv20"] = std::move(record);
    return data;
}

Json txo_origin(const Coin& coin, const ReadScript& script) {
    // The index gives a number of its own to single things, and none to tokens, which have no origin there.
    if (!script.inscribed || script.token.is_object()) return nullptr;
    const std::string outpoint = outpoint_text(coin);
    if (form_of(outpoint, 2) == 0) return outpoint;
    return {{"outpoint", outpoint}, {"nonce", 1}, {"num", std::to_string(form_of(outpoint, 100000))}};
}

Json txo_row(const Coin& coin, const std::string& owner) {
    const ReadScript script = read_script(coin.script);
    return {{"txid", coin.txid},
            {"vout", coin.vout},
            {"outpoint", outpoint_text(coin)},
            {"satoshis", coin.sats},
            {"accSats", "0"},
            {"height", height_of(coin)},
            {"idx", place_in_block(coin)},
            {"owner", owner},
            {"spend", ""},
            {"origin", txo_origin(coin, script)},
            {"data", txo_data(coin, script)}};
}

// Decimals as the record has them, which is a number in some and text in others; null where it has none.
Json decimals_of(const TokenOutput& output) {
    const Json& dec = json_member(output.record, "dec");
    if (dec.is_string() || dec.is_number_integer()) return dec;
    return nullptr;
}

Json text_or_null(const Json& record, const char* key) {
    const Json& value = json_member(record, key);
    return value.is_string() ? value : Json(nullptr);
}

Json token_row(const TokenOutput& output) {
    return {{"txid", output.coin.txid},
            {"vout", output.coin.vout},
            {"outpoint", outpoint_text(output.coin)},
            {"height", height_of(output.coin)},
            {"idx", place_in_block(output.coin)},
            {"op", output.op()},
            {"amt", output.amt()},
            {"status", 1},
            {"reason", nullptr},
            {"listing", false},
            {"owner", output.owner},
            {"spend", ""},
            {"spendHeight", nullptr},
            {"spendIdx", nullptr},
            {"tick", nullptr},
            {"id", output.token_id},
            {"sym", text_or_null(output.record, "sym")},
            {"dec", decimals_of(output)},
            {"icon", text_or_null(output.record, "icon")},
            {"price", "0"},
            {"pricePer", "0"},
            {"payout", nullptr},
            {"script", base64(output.coin.script)},
            {"sale", false}};
}

Json page_of(Json rows, const ServiceRequest& request) {
    const std::size_t offset = std::min(query_number(request, "offset", 0), rows.size());
    const std::size_t count = std::min(query_number(request, "limit", rows.size()), rows.size() - offset);
    rows.erase(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(offset));
    rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(count), rows.end());
    return rows;
}

ServiceReply address_outputs(const ServiceContext& context, const ServiceRequest& request,
                             const std::string& address) {
    Json rows = Json::array();
    for (const Coin& coin : indexed_coins(context, address)) rows.push_back(txo_row(coin, address));
    return json_reply(page_of(std::move(rows), request));
}

ServiceReply address_tokens(const ServiceContext& context, const ServiceRequest& request,
                            const std::string& address) {
    Json rows = Json::array();
    for (const Coin& coin : indexed_coins(context, address)) {
        TokenOutput output;
        if (read_token_output(coin, output)) rows.push_back(token_row(output));
    }
    return json_reply(page_of(std::move(rows), request));
}

ServiceReply token_page(const ServiceContext& context, const std::string& token_id) {
    const std::optional<TokenOutput> deploy = find_deploy(context, token_id);
    if (!deploy) return not_found();
    return json_reply({{"txid", deploy->coin.txid},
                       {"vout", deploy->coin.vout},
                       {"height", height_of(deploy->coin)},
                       {"idx", place_in_block(deploy->coin)},
                       {"op", deploy->op()},
                       {"id", token_id},
                       {"amt", deploy->amt()},
                       {"sym", text_or_null(deploy->record, "sym")},
                       {"name", text_or_null(deploy->record, "name")},
                       {"dec", decimals_of(*deploy)},
                       {"icon", text_or_null(deploy->record, "icon")},
                       {"status", 1},
                       {"included", true}});
}

// An owner by address, under one of two names, or by the hash of his key.
Json holder_row(const std::string& address, const std::string& lots) {
    Json row{{"amt", lots}};
    Hash160 hash160{};
    unsigned long long small = 0;
    if (form_of(lots + address, 8) == 0 && parse_u64(lots, small)) row["amt"] = small;
    const unsigned form = form_of(address, 8);
    if (form == 6) {
        row["owner"] = address;
    } else if (form == 7 && hash160_of_address(address, hash160)) {
        row["pkhash"] = qv_clasp_hex_encode(hash160);
    } else {
        row["address"] = address;
    }
    return row;
}

ServiceReply token_holders(ServiceContext& context, const std::string& token_id) {
    if (!find_deploy(context, token_id)) return json_reply(Json::array());
    Json rows = Json::array();
    for (const auto& [address, lots] : token_owners(context, token_id))
        rows.push_back(holder_row(address, lots));
    if (context.turn++ % 2 == 0) return json_reply(rows);
    return json_reply({{"holders", std::move(rows)}});
}

ServiceReply content_of(const ServiceContext& context, const std::string& origin) {
    const std::optional<Coin> coin = find_output(context, origin);
    if (!coin) return not_found();
    const ReadScript script = read_script(coin->script);
    if (!script.inscribed) return json_reply({{"error", "no inscription"}}, 404);
    ServiceReply reply;
    reply.body.assign(script.body.begin(), script.body.end());
    reply.type = script.content_type;
    return reply;
}

}  // namespace

ServiceReply answer_ordinals(ServiceContext& context, const ServiceRequest& request) {
    std::vector<std::string> parts = path_parts(request.path);
    if (request.method != "GET") return not_found();
    if (parts.size() == 2 && parts[0] == "content") return content_of(context, parts[1]);
    if (parts.empty() || parts[0] != "api") return not_found();
    parts.erase(parts.begin());
    if (parts.size() == 4 && parts[0] == "txos" && parts[1] == "address" && parts[3] == "unspent") {
        return address_outputs(context, request, parts[2]);
    }
    if (parts.size() == 3 && parts[0] == "files" && parts[1] == "inscriptions")
        return content_of(context, parts[2]);
    if (parts.size() < 3 || parts[0] != "bsv20") return not_found();
    if (parts.size() == 3 && parts[1] == "id") return token_page(context, parts[2]);
    if (parts.size() == 4 && parts[1] == "id" && parts[3] == "holders")
        return token_holders(context, parts[2]);
    if (parts.size() == 3 && parts[2] == "unspent") return address_tokens(context, request, parts[1]);
    return not_found();
}

}  // namespace sandbox
