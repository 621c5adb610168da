// Keeping a wallet's paymail in step: the wallet document and the local name registry agree on it, and the
// family's host hears of it by a claim that the identity signs.
//
// The host checks the signature over paymail_claim_message; what it keeps is its own business. A claim runs
// with no lock held. Errors are texts for a caller that cares; nothing throws, and the next status report
// tries again.
#pragma once

#include <cstdint>
#include <string>

// What a claim says of an identity.
struct PaymailClaim {
    std::string alias;
    std::string pubkey;  // lower case
    std::string address;
    std::string avatar;
    std::string ord_address;
    std::string bn_pub;  // with bn_address, or neither
    std::string bn_address;
    std::int64_t ts = 0;  // Unix seconds
};
// The text that is signed: "QV-PAYMAIL-CLAIM" and the fields, each followed by "|", and the time.
std::string paymail_claim_message(const PaymailClaim& claim);
// The JSON body that is posted, on one line.
std::string paymail_claim_body(const PaymailClaim& claim, const std::string& signature);

// Emits the event of kind "paymail": the name with the family's domain, or no field for an empty name.
void qv_clasp_emit_paymail(const std::string& paymail);

// The wallet document and the local registry agree on the paymail afterwards. Callers hold the wallet mutex.
void qv_clasp_sync_paymail();
// The registry's avatars follow the session; empty on success. Callers hold the wallet mutex.
std::string qv_clasp_sync_avatar();

// What the document on disk has new, then both of the above. Callers hold the wallet mutex.
void qv_clasp_keep_in_step();

// Signs and posts a claim; empty on success, else the error text. Blocks on the network, without the wallet
// mutex.
std::string qv_clasp_claim_paymail(const std::string& alias, const std::string& pubkey,
                                   const std::string& address, const std::string& avatar,
                                   const std::string& ord_address);
// The same unless this very claim was the last to succeed in this process, whatever wallet is loaded since.
void qv_clasp_claim_once(const std::string& paymail, const std::string& pubkey, const std::string& address,
                         const std::string& avatar, const std::string& ord_address);
// Fetches the identity's role from the host into the local registry. Blocks on the network.
void qv_clasp_fetch_role();
