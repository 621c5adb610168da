#include "paymail/paymail_claim.h"

#include "base/clock.h"
#include "base/json_file.h"
#include "base/ranked_mutex.h"
#include "base/settings.h"
#include "base/sinks.h"
#include "base/text.h"
#include "net/http_client.h"
#include "wallet/binds.h"
#include "wallet/name_registry.h"
#include "wallet/session_keys.h"
#include "wallet/wallet_document.h"
#include "wallet/wallet_registry.h"
#include "wallet/wallet_session.h"

namespace {

constexpr unsigned CLAIM_TIMEOUT_S = 25;
constexpr int CLAIM_TRIES = 4;

// The last claim that the host took. It outlives a session, since the host remembers as well, and it is never
// destroyed, since a worker may still run when the process ends.
struct ClaimMemory {
    RankedMutex<LockRank::Leaf> mutex;
    std::string last_key;
};
ClaimMemory& claim_memory() {
    static auto& memory = *new ClaimMemory;
    return memory;
}

bool has_bn_key(const PaymailClaim& claim) {
    return !claim.bn_pub.empty() && !claim.bn_address.empty();
}

// A wallet whose second key cannot be derived claims without it.
void add_bn_key(PaymailClaim& claim) {
    SecretText bn_priv;
    std::string error;
    if (!qv_clasp_bn_key(claim.bn_pub, bn_priv, claim.bn_address, error)) {
        claim.bn_pub.clear();
        claim.bn_address.clear();
    }
    bn_priv.wipe();
    claim.bn_pub = ascii_lower(claim.bn_pub);
}

// Signs the claim's message as the identity that it names; empty on success, else the error text.
std::string sign_claim(const PaymailClaim& claim, std::string& signature_out) {
    std::string signer;
    std::string error;
    if (!qv_clasp_sign_identity(paymail_claim_message(claim), signer, signature_out, error))
        return error.empty() ? "could not sign paymail claim" : error;
    if (!signer.empty() && ascii_lower(signer) != claim.pubkey) return "identity pubkey mismatch";
    return "";
}

std::string post_claim(const std::string& body) {
    const std::string url = "https://" + settings().home_host + "/api/paymail/claim";
    std::string reply;
    std::string error;
    if (qv_clasp_http_post_json(url, body, reply, error, CLAIM_TIMEOUT_S, CLAIM_TRIES)) return "";
    Json answer;
    parse_json(reply, answer);
    const std::string reason = json_text(answer, "error");
    if (!reason.empty()) return reason;
    return error.empty() ? "paymail host refused" : error;
}

}  // namespace

std::string paymail_claim_message(const PaymailClaim& claim) {
    std::string message = "QV-PAYMAIL-CLAIM|" + claim.alias + "|" + claim.pubkey + "|" + claim.address + "|" +
                          claim.avatar + "|";
    if (has_bn_key(claim)) {
        message += claim.ord_address + "|" + claim.bn_pub + "|" + claim.bn_address + "|";
    } else if (!claim.ord_address.empty()) {
        message += claim.ord_address + "|";
    }
    return message + std::to_string(claim.ts);
}

std::string paymail_claim_body(const PaymailClaim& claim, const std::string& signature) {
    Json body = {{"alias", claim.alias},   {"pubkey", claim.pubkey}, {"address", claim.address},
                 {"avatar", claim.avatar}, {"ts", claim.ts},         {"sig", signature}};
    if (!claim.ord_address.empty()) body["ordAddress"] = claim.ord_address;
    if (has_bn_key(claim)) {
        body["bnPub"] = claim.bn_pub;
        body["bnAddress"] = claim.bn_address;
    }
    return dump_json(body, -1);
}

void qv_clasp_emit_paymail(const std::string& paymail) {
    const std::string field = paymail.empty() ? "" : paymail + "@" + settings().home_domain;
    qv_clasp_emit_event("[QV-CLASP]", {"paymail", field});
}

void qv_clasp_sync_paymail() {
    QvClaspSession& session = qv_clasp_session();
    if (!session.hd || session.identity_pub.empty()) return;
    const bool had_name = !session.paymail.empty();
    session.paymail = qv_clasp_clean_alias(session.paymail);
    if (session.paymail.empty()) session.paymail = qv_clasp_registry_name_for(session.identity_pub);
    if (session.paymail.empty()) return;
    // A name that someone else holds here stays the wallet's all the same: the host decides.
    qv_clasp_registry_claim(session.paymail, session.identity_pub, session.address);
    qv_clasp_set_wallet_name(qv_clasp_active_wallet_id());
    if (had_name) return;
    qv_clasp_save();
    qv_clasp_emit_paymail(session.paymail);
}

std::string qv_clasp_sync_avatar() {
    const QvClaspSession& session = qv_clasp_session();
    const std::string pubkey = ascii_lower(session.identity_pub);
    if (pubkey.empty()) return "no identity pubkey";
    return qv_clasp_registry_set_avatar(pubkey, session.ord_avatar);
}

void qv_clasp_keep_in_step() {
    qv_clasp_reconcile();
    qv_clasp_sync_paymail();
    if (!qv_clasp_session().identity_pub.empty()) qv_clasp_sync_avatar();
}

std::string qv_clasp_claim_paymail(const std::string& alias, const std::string& pubkey,
                                   const std::string& address, const std::string& avatar,
                                   const std::string& ord_address) {
    PaymailClaim claim;
    claim.alias = qv_clasp_clean_alias(alias);
    claim.pubkey = ascii_lower(pubkey);
    if (claim.alias.empty() || claim.pubkey.empty()) return "need alias and pubkey";
    claim.address = address;
    claim.avatar = avatar;
    claim.ord_address = ord_address;
    add_bn_key(claim);
    claim.ts = unix_seconds();
    std::string signature;
    const std::string error = sign_claim(claim, signature);
    return error.empty() ? post_claim(paymail_claim_body(claim, signature)) : error;
}

void qv_clasp_claim_once(const std::string& paymail, const std::string& pubkey, const std::string& address,
                         const std::string& avatar, const std::string& ord_address) {
    if (paymail.empty() || pubkey.empty()) return;
    const std::string claim_key = paymail + "|" + address + "|" + ord_address + "|" + avatar + "|bn1";
    ClaimMemory& memory = claim_memory();
    {
        const std::lock_guard hold(memory.mutex);
        if (claim_key == memory.last_key) return;
    }
    if (!qv_clasp_claim_paymail(paymail, pubkey, address, avatar, ord_address).empty()) return;
    const std::lock_guard hold(memory.mutex);
    memory.last_key = claim_key;
}

void qv_clasp_fetch_role() {
    std::string pubkey;
    {
        const WalletLock lock = qv_clasp_lock_wallet();
        if (qv_clasp_load()) pubkey = ascii_lower(qv_clasp_session().identity_pub);
    }
    if (pubkey.empty()) return;
    std::string body;
    std::string error;
    Json answer;
    if (!qv_clasp_http_get_plain("https://" + settings().home_host + "/api/paymail/quota/" + pubkey, body,
                                 error))
        return;
    if (!parse_json(body, answer) || !answer.is_object()) return;
    const Json& role = json_member(answer, "role");
    if (!role.is_null() && !role.is_string()) return;
    qv_clasp_registry_set_role(json_text(answer, "role"));
}
