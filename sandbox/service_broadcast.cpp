#include "sandbox/service_broadcast.h"

#include <algorithm>
#include <optional>

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

bool stands_on_unmined(const Chain& chain, const Transaction& tx) {
    return std::any_of(tx.inputs.begin(), tx.inputs.end(), [&](const TxInput& input) {
        const std::optional<Transaction> parent = chain.find(input.txid);
        return parent && parent->height == 0;
    });
}

// The id of a transaction that nobody has made.
std::string other_txid(std::string txid) {
    for (char& digit : txid) digit = digit == '0' ? 'f' : '0';
    return txid;
}

}  // namespace

Broadcast take_broadcast(Chain& chain, std::string_view raw_hex, std::string_view fault) {
    const Bytes raw = qv_clasp_hex_decode(raw_hex);
    Transaction tx;
    if (raw.empty() || !parse_transaction(raw, tx))
        return {BroadcastEnd::Unparsed, "", "TX decode failed", 0};
    if (fault == "conflict") return refused(tx.txid, CONFLICT_WORDS);
    if (fault == "missing_inputs") return refused(tx.txid, MISSING_WORDS);
    if (fault == "refused_200") return {BroadcastEnd::RefusedAsSuccess, tx.txid, "mempool full", 66};
    if (fault == "unknown_parent" && stands_on_unmined(chain, tx)) return refused(tx.txid, MISSING_WORDS);
    const Broadcast honest = from_verdict(chain.submit(raw), tx.txid);
    if (fault == "drop_after_accept" && honest.end == BroadcastEnd::Taken) chain.drop(tx.txid);
    if (fault == "accept_silently") return {BroadcastEnd::Failed, tx.txid, "", 0};
    if (fault == "wrong_txid" && honest.end == BroadcastEnd::Taken)
        return {BroadcastEnd::Taken, other_txid(tx.txid), "", 0};
    return honest;
}

}  // namespace sandbox
