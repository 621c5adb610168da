#include "records/payout_ledger.h"

#include <memory>

#include "base/clock.h"
#include "base/json_file.h"
#include "base/ranked_mutex.h"
#include "records/ledger_file.h"
#include "records/ledger_rows.h"
#include "records/ledger_text.h"
#include "records/record_files.h"
#include "records/sats_sum.h"

namespace {

using Entries = std::vector<PayoutEntry>;

// The entries of the text that was read last: reading it is quick, and taking it apart is not. Never
// destroyed: a worker may still read when the process ends.
struct LastRead {
    RankedMutex<LockRank::Leaf> mutex;
    std::string text;
    std::shared_ptr<const Entries> entries = std::make_shared<Entries>();
};

// To be held for as long as its rows are looked at: another thread may read a newer ledger meanwhile.
std::shared_ptr<const Entries> current_entries() {
    static auto& last = *new LastRead;
    std::string text;
    read_text_file(ledger_file_path(), text);
    const std::lock_guard hold(last.mutex);
    if (text != last.text) {
        last.entries = std::make_shared<Entries>(ledger_rows(text));
        last.text = std::move(text);
    }
    return last.entries;
}

bool is_payout_on(const PayoutEntry& entry, const std::string& token_id) {
    return entry.kind != APP_FEE_KIND && entry.token_id == token_id;
}

}  // namespace

void append_payout(const std::string& token_id, const std::string& txid, std::int64_t sats,
                   const std::string& dest, const std::string& name, const std::string& token_name,
                   const std::string& kind) {
    append_ledger_row(ledger_file_path(), {{"token_id", token_id},
                                           {"token_name", token_name},
                                           {"txid", txid},
                                           {"sats", sats},
                                           {"dest", dest},
                                           {"name", name},
                                           {"kind", kind.empty() ? PAYOUT_KIND : kind},
                                           {"unix", unix_seconds()}});
}

std::vector<PayoutEntry> read_payout_entries() {
    return *current_entries();
}

std::int64_t paid_total(const std::string& token_id) {
    return read_token_payouts(token_id).paid_total;
}

std::int64_t fees_total() {
    const std::shared_ptr<const Entries> entries = current_entries();
    std::int64_t total = 0;
    for (const PayoutEntry& entry : *entries) {
        if (entry.kind == APP_FEE_KIND) add_sats(total, entry.sats);
    }
    return total;
}

std::int64_t received_by(const std::string& token_id, const std::string& dest) {
    if (token_id.empty() || dest.empty()) return 0;
    return read_token_payouts(token_id).received(dest);
}

std::int64_t TokenPayouts::received(const std::string& dest) const {
    const auto found = received_by_dest.find(dest);
    return found == received_by_dest.end() ? 0 : found->second;
}

TokenPayouts read_token_payouts(const std::string& token_id) {
    const std::shared_ptr<const Entries> entries = current_entries();
    TokenPayouts payouts;
    for (const PayoutEntry& entry : *entries) {
        if (!is_payout_on(entry, token_id)) continue;
        add_sats(payouts.paid_total, entry.sats);
        if (!token_id.empty() && !entry.dest.empty())
            add_sats(payouts.received_by_dest[entry.dest], entry.sats);
    }
    return payouts;
}
