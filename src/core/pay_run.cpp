#include "core/pay_run.h"

#include <unordered_set>
#include <utility>

#include "base/amounts.h"
#include "base/settings.h"
#include "base/text.h"
#include "records/payout_ledger.h"

namespace {

constexpr std::size_t TXID_DIGITS = 64;

// The place of the first run of 64 hexadecimal digits at or behind `from`; npos if there is none.
std::size_t find_txid_from(std::string_view text, std::size_t from) {
    std::size_t digits = 0;
    for (std::size_t at = from; at < text.size(); ++at) {
        digits = is_hex(text.substr(at, 1)) ? digits + 1 : 0;
        if (digits == TXID_DIGITS) return at + 1 - TXID_DIGITS;
    }
    return std::string_view::npos;
}

std::unique_ptr<RoundMessage> pay_message(bool stopped, std::string text) {
    auto message = std::make_unique<RoundMessage>();
    message->number = WM_APP_PAY;
    message->stopped = stopped;
    message->text = std::move(text);
    return message;
}

std::string log_line(const std::string& payee, const std::string& txid) {
    return payee + " ok success:" + txid + "\n";
}

std::string outcome_text(int paid_count, bool stopped, const std::string& log) {
    return "Paid " + std::to_string(paid_count) + (stopped ? ", stopped on error." : ".") + "\n" + log;
}

}  // namespace

std::string pay_confirmation_text(const RoundState& state) {
    return "Pay this frozen snapshot?\n\n" + format_bsv(state.frozen_pot) +
           " BSV pot to in-market holders.\nApp fee: 0.01 BSV to " + settings().fee_handle + "\n" +
           settings().fee_address +
           "\nRemainder and dust stay in the connected Clasp.\nThe connected Clasp prompts and signs.";
}

std::unique_ptr<RoundMessage> run_pay(const PayJob& job, const RoundWallet& wallet) {
    const Settings& fixed = settings();
    const std::string fee_result = wallet.send(fixed.fee_address, APP_FEE_SATS, "");
    if (!says_success(fee_result))
        return pay_message(true, "App fee failed. Holders were not paid.\n" + fee_result);
    const std::string fee_txid = find_txid(fee_result);
    append_payout(APP_FEE_KIND, fee_txid, APP_FEE_SATS, fixed.fee_address, fixed.fee_handle, "BA fee",
                  APP_FEE_KIND);

    std::string log = log_line("App fee 0.01 BSV to " + fixed.fee_handle, fee_txid);
    int paid_count = 0;
    for (const PreviewRow& row : job.rows) {
        if (!is_due(row)) continue;
        const std::string result = wallet.send(row.dest, row.sats, "");
        if (!says_success(result))
            return pay_message(true, outcome_text(paid_count, true, log + row.name + " " + result + "\n"));
        ++paid_count;
        const std::string txid = find_txid(result);
        append_payout(job.token_id, txid, row.sats, row.dest, row.name, job.token_name, PAYOUT_KIND);
        log += log_line(row.name, txid);
    }
    return pay_message(false, outcome_text(paid_count, false, log));
}

void pay_worker(const PayJob& job, const RoundWallet& wallet, const RoundWorkers& workers) {
    workers.post(run_pay(job, wallet));
}

std::string find_txid(std::string_view result) {
    if (!says_success(result)) return "";
    const std::size_t at = find_txid_from(result, 0);
    return at == std::string_view::npos ? "" : std::string(result.substr(at, TXID_DIGITS));
}

std::vector<std::string> extract_txids(std::string_view text) {
    std::vector<std::string> txids;
    std::unordered_set<std::string> seen;
    std::size_t at = find_txid_from(text, 0);
    while (at != std::string_view::npos) {
        std::string txid(text.substr(at, TXID_DIGITS));
        if (seen.insert(txid).second) txids.push_back(std::move(txid));
        at = find_txid_from(text, at + TXID_DIGITS);
    }
    return txids;
}
