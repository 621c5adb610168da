#include "shell/shell_texts.h"

#include "program/page_version.h"

std::string terms_text(const Settings& settings) {
    return "The Bursaria - Terms of Use\n\n"
           "The Bursaria (BA) is a first-party Quorvelle app. It links to the Clasp wallet on this machine. "
           "BA does "
           "not create a seed, does not hold spend keys, and is not a custodian.\n\n"
           "Dividends are pro-rata by in-market lots on a frozen snapshot. This wallet's lots are reserve "
           "and are "
           "not paid. Remainder and dust stay in the connected Clasp. A 0.01 BSV app fee is sent to " +
           settings.fee_handle + " (" + settings.fee_address +
           ") once per Pay, on top of the pot. Miner fees come from the connected Clasp. The connected Clasp "
           "prompts and signs.\n\n"
           "Vaults are watch-only. Addresses you add are looked up on-chain (0-conf). BA will not spend "
           "them. "
           "Current payout value is an estimate from the last snapshot, not a send.\n\n"
           "Payout history is a local log on this PC, not a chain oracle. Names come from published @" +
           settings.home_domain +
           " paymail when we have one; otherwise a 1-address. Do not treat BA as financial, tax, or legal "
           "advice.\n\n"
           "You are responsible for token origin, addresses, and amounts you confirm. Report abuse to " +
           settings.support_contact +
           ".\n\n"
           "Software is provided as-is. Quorvelle are not liable for lost coins, failed lookups, or "
           "third-party "
           "indexers (WhatsOnChain, GorillaPool) being down.";
}

std::string update_question(int latest_version, const Settings& settings) {
    return "A newer Bursaria is available.\n\nThis build:  " + format_version(BUILD_VERSION) +
           "\nLatest:      " + format_version(latest_version) + "\n\nOpen " + settings.update_page +
           " to download it?";
}

std::string tx_page(const std::string& txid, const Settings& settings) {
    return txid.size() == 64 ? settings.woc_site + "/tx/" + txid : "";
}
