#include "index/sweep_state.h"

#include "base/parallel_for.h"
#include "base/text.h"
#include "index/inscription.h"
#include "index/own_addresses.h"
#include "wallet/wallet_document.h"

std::string outpoint_key_of(const std::string& txid, std::uint32_t vout) {
    return ascii_lower(outpoint_text(txid, vout));
}

std::string outpoint_key_of(const QvClaspOrdRow& row) {
    return outpoint_key_of(row.txid, row.vout);
}

std::string outpoint_key_of(const LocalOrd& ord) {
    return outpoint_key_of(ord.txid, static_cast<std::uint32_t>(ord.vout));
}

bool is_token(const QvClaspOrdRow& row) {
    return is_token_type(row.type) || !row.token_id.empty();
}

bool is_token(const LocalOrd& ord) {
    return is_token_type(ord.type) || !ord.token_id.empty();
}

bool is_token_type(const std::string& type) {
    return contains(type, "bsv-20");
}

bool is_image_type(const std::string& type) {
    return type.starts_with("image/");
}

bool fill_blank(std::string& slot, const std::string& text) {
    if (!slot.empty() || text.empty()) return false;
    slot = text;
    return true;
}

bool take_newer(std::string& slot, const std::string& text) {
    if (text.empty() || slot == text) return false;
    slot = text;
    return true;
}

OwnedByOrigin::OwnedByOrigin(std::vector<LocalOrd>& owned) {
    for (LocalOrd& ord : owned) by_origin_.emplace(ascii_lower(ord.origin), &ord);
}

LocalOrd* OwnedByOrigin::find(const std::string& origin) const {
    const auto found = by_origin_.find(ascii_lower(origin));
    return found == by_origin_.end() ? nullptr : found->second;
}

bool same_wallet(const OrdinalSweep& sweep) {
    return qv_clasp_load() && qv_clasp_scope_key() == sweep.scope_key;
}

void save_owned(OrdinalSweep& sweep) {
    if (sweep.owned_changed) qv_clasp_save();
    sweep.owned_changed = false;
}

void check_spends(OrdinalSweep& sweep, const std::vector<SpendQuestion>& questions, std::size_t threads) {
    std::vector<SpendQuestion> asked;
    for (const SpendQuestion& question : questions) {
        const std::string key = outpoint_key_of(question.txid, question.vout);
        if (is_hex64(question.txid) && sweep.spends.emplace(key, SpendStatus::Unknown).second)
            asked.push_back(question);
    }
    std::vector<SpendStatus> answers(asked.size(), SpendStatus::Unknown);
    parallel_for(asked.size(), threads, [&](std::size_t i) {
        if (generation_moved(sweep.generation)) return;
        std::string spender;
        answers[i] = qv_clasp_spend_status(asked[i].txid, asked[i].vout, spender);
    });
    for (std::size_t i = 0; i < asked.size(); ++i)
        sweep.spends[outpoint_key_of(asked[i].txid, asked[i].vout)] = answers[i];
}

SpendStatus spend_answer(const OrdinalSweep& sweep, const std::string& outpoint_key) {
    const auto answer = sweep.spends.find(outpoint_key);
    return answer == sweep.spends.end() ? SpendStatus::Unknown : answer->second;
}
