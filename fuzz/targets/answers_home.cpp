// Answers of the family's host and of the resolver, and of the services that a status report asks.
#include "clasp/receive_scan.h"
#include "clasp/status_report.h"
#include "fuzz/fuzz.h"
#include "paymail/paymail_claim.h"
#include "paymail/paymail_resolve.h"
#include "wallet/address.h"
#include "wallet/wallet_session.h"

namespace {

constexpr const char* STRANGER = "1BvBMSEYstWetqTFn5Au4m4GFg7xJaNVN2";

void resolve() {
    std::string error;
    Hash160 hash{};
    const std::string address = qv_clasp_resolve_alias("mira", error);
    if (address.empty()) promise(!error.empty(), "a failure has its text");
    if (!address.empty()) promise(qv_clasp_address_to_hash160(address, hash), "a name leads to an address");
    std::string alias;
    std::string pubkey;
    std::string pays_to;
    std::string kind;
    qv_clasp_lookup_holder(STRANGER, alias, pubkey, pays_to, kind);
    qv_clasp_fetch_role();
    qv_clasp_claim_paymail("mira", std::string(66, 'a'), STRANGER, "", "");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    start_afresh();
    script_services({reinterpret_cast<const char*>(data), size});
    resolve();
    std::uint32_t highest = 0;
    qv_clasp_probe_addresses({{1, STRANGER}, {2, "1dice8EMZmqKvrGE4Qc9bUFf9PX3xaYDp"}}, highest);
    promise(highest <= 2, "a scan finds what it asked for");
    QvClaspStatus status;
    qv_clasp_status(status);
    promise(!status.balance_known || status.balance_sats >= 0, "a known balance is no debt");
    return 0;
}
