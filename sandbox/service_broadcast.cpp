#include "sandbox/service_broadcast.h"

#include "base/hex.h"
#include "base/text.h"
#include "sandbox/spend_check.h"

namespace sandbox {

namespace {

Broadcast from_verdict(const Verdict& verdict, const std::string& txid) {
    if (verdict.accepted) return {BroadcastEnd::Taken, txid, "", 0};
    const bool known = contains(verdict.reason, "txn-already");
    return {known ? BroadcastEnd::Known : BroadcastEnd::Refused, txid, verdict.reason, verdict.code};
}

Broadcast refused(const std::string& txid, std::string_view words) {
    const std::string reason(words);
    return {BroadcastEnd::Refused, txid, reason, reject_code(reason)};
}

}  // namespace

Broadcast take_broadcast(Chain& chain, std::string_view raw_hex, std::string_view fault) {
    const Bytes raw = qv_clasp_hex_decode(raw_hex);
    Transaction tx;
    if (raw.empty() || !parse_transaction(raw, tx))
        return {BroadcastEnd::Unparsed, "", "TX decode failed", 0};
    if (fault == "conflict") return refused(tx.txid, CONFLICT_WORDS);
    if (fault == "missing_inputs") return refused(tx.txid, MISSING_WORDS);
    const Broadcast honest = from_verdict(chain.submit(raw), tx.txid);
    if (fault == "drop_after_accept" && honest.end == BroadcastEnd::Taken) chain.drop(tx.txid);
    if (fault == "accept_silently") return {BroadcastEnd::Failed, tx.txid, "", 0};
    return honest;
}

}  // namespace sandbox
