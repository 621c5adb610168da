#include "index/sweep_checks.h"

#include "wallet/coin_records.h"

namespace {

SpendQuestion question_of(const QvClaspOrdRow& row) {
    return {row.txid, row.vout};
}

bool is_art(const QvClaspOrdRow& row) {
    return row.art_tag == "Artwork" || row.art_tag == "Certificate" || is_image_type(row.type);
}

bool has_vanished(const OrdinalSweep& sweep, const QvClaspOrdRow& row) {
    return is_art(row) && sweep.answered.count(row.address) != 0 &&
           sweep.listed.count(outpoint_key_of(row)) == 0;
}

bool wallet_made(const OwnedByOrigin& owned, const QvClaspOrdRow& row) {
    const LocalOrd* ord = owned.find(row.origin);
    return ord && ord->created;
}

bool found_spent(const OrdinalSweep& sweep, const std::string& outpoint_key) {
    return spend_answer(sweep, outpoint_key) == SpendStatus::Spent;
}

// A transaction of the wallet's own that the chain does not know yet is no reason to forget what it made.
bool still_there(const OrdinalSweep& sweep, const QvClaspOrdRow& row) {
    const SpendStatus answer = spend_answer(sweep, outpoint_key_of(row));
    return answer == SpendStatus::Unspent || answer == SpendStatus::NoSuchTx;
}

bool is_checked_token(const LocalOrd& ord) {
    return is_token(ord) && !ord.hidden;
}

}  // namespace

std::vector<SpendQuestion> questions_about_art(const OrdinalSweep& sweep, std::vector<LocalOrd>& owned) {
    const OwnedByOrigin by_origin(owned);
    std::vector<SpendQuestion> questions;
    for (const QvClaspOrdRow& row : sweep.rows)
        if (has_vanished(sweep, row) && wallet_made(by_origin, row)) questions.push_back(question_of(row));
    return questions;
}

void drop_vanished_art(OrdinalSweep& sweep, std::vector<LocalOrd>& owned) {
    const OwnedByOrigin by_origin(owned);
    std::erase_if(sweep.rows, [&](const QvClaspOrdRow& row) {
        return has_vanished(sweep, row) && !(wallet_made(by_origin, row) && still_there(sweep, row));
    });
}

std::vector<SpendQuestion> questions_about_all_tokens(const OrdinalSweep& sweep,
                                                      const std::vector<LocalOrd>& owned) {
    std::vector<SpendQuestion> questions;
    for (const QvClaspOrdRow& row : sweep.rows)
        if (is_token(row)) questions.push_back(question_of(row));
    for (const LocalOrd& ord : owned)
        if (is_checked_token(ord)) questions.push_back({ord.txid, static_cast<std::uint32_t>(ord.vout)});
    return questions;
}

void drop_spent_tokens(OrdinalSweep& sweep, std::vector<LocalOrd>& owned) {
    std::erase_if(sweep.rows, [&](const QvClaspOrdRow& row) {
        return is_token(row) && found_spent(sweep, outpoint_key_of(row));
    });
    const std::size_t forgotten = std::erase_if(owned, [&](const LocalOrd& ord) {
        return is_checked_token(ord) && !ord.created && found_spent(sweep, outpoint_key_of(ord));
    });
    sweep.owned_changed = sweep.owned_changed || forgotten > 0;
}

std::vector<SpendQuestion> questions_about_unlisted(const OrdinalSweep& sweep) {
    std::vector<SpendQuestion> questions;
    for (const QvClaspOrdRow& row : sweep.rows)
        if (is_token(row) && sweep.indexed.count(outpoint_key_of(row)) == 0)
            questions.push_back(question_of(row));
    return questions;
}

void drop_gone_tokens(OrdinalSweep& sweep, std::vector<LocalOrd>& owned) {
    const OwnedByOrigin by_origin(owned);
    std::erase_if(sweep.rows, [&](const QvClaspOrdRow& row) {
        if (!is_token(row)) return false;
        const LocalOrd* ord = by_origin.find(row.origin);
        return (ord && ord->hidden) || qv_clasp_is_spent(row.txid, row.vout) ||
               found_spent(sweep, outpoint_key_of(row));
    });
}
