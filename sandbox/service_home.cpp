#include "sandbox/service_home.h"

#include <algorithm>
#include <string>
#include <vector>

#include "base/hex.h"
#include "base/text.h"
#include "sandbox/keys.h"
#include "sandbox/service_broadcast.h"
#include "sandbox/service_reply.h"

namespace sandbox {

namespace {

constexpr std::size_t IDENTITY_FEED_ROWS = 12;
constexpr const char* DEFAULT_ROLE = "default";

ServiceReply error_reply(int status, const std::string& text) {
    return json_reply({{"error", text}}, status);
}

Json text_or_null(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}

ServiceReply submit(ServiceContext& context, const ServiceRequest& request) {
    Json asked;
    parse_json(request.body, asked);
    const Broadcast result =
        take_broadcast(context.chain, json_text(asked, "txhex"), request.broadcast_fault);
    switch (result.end) {
        case BroadcastEnd::Taken:
        case BroadcastEnd::Known:
            return json_reply({{"ok", true}, {"txid", result.txid}});
        case BroadcastEnd::Refused:
        case BroadcastEnd::RefusedAsSuccess:
            return json_reply({{"ok", false}, {"error", result.reason}});
        case BroadcastEnd::Unparsed:
            return json_reply({{"ok", false}, {"error", "bad txhex"}}, 400);
        case BroadcastEnd::Failed:
            break;
    }
    return json_reply({{"ok", false}, {"error", "upstream failed"}}, 502);
}

ServiceReply identity_feed(const ServiceContext& context, const ServiceRequest& request) {
    const std::size_t limit = query_number(request, "limit", IDENTITY_FEED_ROWS);
    const std::vector<std::string> history = context.chain.history(context.oracle_address);
    const std::size_t count = std::min(limit, history.size());
    const std::vector<std::string> newest(history.rbegin(),
                                          history.rbegin() + static_cast<std::ptrdiff_t>(count));
    return json_reply({{"txids", newest}});
}

ServiceReply holder_of(const ServiceContext& context, const std::string& address) {
    Paymail row;
    std::string kind;
    if (!context.directory.by_address(address, row, kind)) {
        // Unknown addresses are refused by one of its machines and answered without a name by another.
        if (form_of(address, 2) == 0) return error_reply(404, "unknown address");
        return json_reply({{"alias", nullptr}, {"pubkey", nullptr}, {"address", nullptr}, {"kind", nullptr}});
    }
    return json_reply({{"alias", text_or_null(row.alias)},
                       {"pubkey", text_or_null(row.pubkey)},
                       {"address", text_or_null(row.address)},
                       {"ordAddress", text_or_null(row.ord_address)},
                       {"avatar", text_or_null(row.avatar)},
                       {"kind", kind}});
}

ServiceReply quota_of(const ServiceContext& context, const std::string& pubkey) {
    const std::string role = context.directory.role(ascii_lower(pubkey));
    return json_reply({{"pubkey", ascii_lower(pubkey)}, {"role", role.empty() ? DEFAULT_ROLE : role}});
}

ServiceReply claim(ServiceContext& context, const ServiceRequest& request) {
    Json body;
    if (!parse_json(request.body, body)) return error_reply(400, "claim is not JSON");
    const std::string error = context.directory.claim(body);
    if (!error.empty()) return error_reply(contains(error, "taken") ? 409 : 400, error);
    return json_reply({{"ok", true}, {"alias", json_text(body, "alias")}});
}

// What is wrong with a receipt; empty if the signer of its transaction id is who it says.
std::string check_receipt(const Json& receipt, std::string& txid) {
    Transaction tx;
    if (!parse_transaction(qv_clasp_hex_decode(json_text(receipt, "hex")), tx))
        return "hex is no transaction";
    txid = tx.txid;
    const Json& metadata = json_member(receipt, "metadata");
    if (json_text(receipt, "reference").empty()) return "no reference";
    const Bytes signature = from_base64(json_text(metadata, "signature"));
    if (signature.size() != 65) return "signature is not 65 bytes in base 64";
    const Bytes signer = recover_pub(message_digest(txid), signature);
    if (signer.empty()) return "signature recovers no key";
    if (qv_clasp_hex_encode(signer) != ascii_lower(json_text(metadata, "pubkey")))
        return "signed by another key";
    return "";
}

ServiceReply receipt(ServiceContext& context, const ServiceRequest& request) {
    Json body;
    if (!parse_json(request.body, body)) return error_reply(400, "receipt is not JSON");
    std::string txid;
    const std::string error = check_receipt(body, txid);
    if (!error.empty()) return error_reply(400, error);
    const std::string note = json_text(json_member(body, "metadata"), "note");
    context.receipts.add(std::move(body));
    return json_reply({{"txid", txid}, {"note", note}});
}

ServiceReply answer_post(ServiceContext& context, const ServiceRequest& request) {
    if (request.path == "/oi/submit") return submit(context, request);
    if (request.path == "/api/paymail/claim") return claim(context, request);
    if (request.path == "/receipt") return receipt(context, request);
    return error_reply(404, "no such path");
}

}  // namespace

bool answer_alias(const ServiceContext& context, const ServiceRequest& request, ServiceReply& reply) {
    std::string handle;
    if (request.method != "GET" || !path_after(request.path, "/api/bsvalias/address/", handle)) return false;
    const std::size_t at = handle.find('@');
    Paymail row;
    const bool domain_fits = at == std::string::npos || handle.substr(at + 1) == context.home_domain;
    if (!domain_fits || !context.directory.by_alias(ascii_lower(handle.substr(0, at)), row) ||
        row.address.empty()) {
        reply = error_reply(404, "unknown name");
    } else {
        reply = json_reply(
            {{"address", row.address}, {"alias", row.alias}, {"pubkey", text_or_null(row.pubkey)}});
    }
    return true;
}

ServiceReply answer_home(ServiceContext& context, const ServiceRequest& request) {
    if (request.method == "POST") return answer_post(context, request);
    ServiceReply reply;
    if (answer_alias(context, request, reply)) return reply;
    std::string rest;
    if (request.path == "/oi/oracle/ident/txids") return identity_feed(context, request);
    if (path_after(request.path, "/api/paymail/address/", rest)) return holder_of(context, rest);
    if (path_after(request.path, "/api/paymail/quota/", rest)) return quota_of(context, rest);
    return error_reply(404, "no such path");
}

}  // namespace sandbox
