#include "index/sweep_fold.h"

#include "base/amounts.h"
#include "base/decimal_text.h"
#include "index/inscription.h"

namespace {

void fold_into(QvClaspOrdRow& first, const QvClaspOrdRow& row) {
    if (!row.amt.empty()) first.amt = dec_add(first.amt, row.amt);
    if (first.name.empty()) {
        first.named = row.named;
        first.needs_name = row.needs_name;
    }
    for (std::string QvClaspOrdRow::*field :
         {&QvClaspOrdRow::type, &QvClaspOrdRow::address, &QvClaspOrdRow::name, &QvClaspOrdRow::icon,
          &QvClaspOrdRow::dec, &QvClaspOrdRow::art_tag})
        fill_blank(first.*field, row.*field);
    if (row.height == 0) first.height = 0;
    first.origin = first.outpoints.front();
}

}  // namespace

OrdSnapshot snapshot_of(const std::vector<QvClaspOrdRow>& rows) {
    OrdSnapshot snapshot;
    TextSet txids;
    TextSet token_ids;
    for (const QvClaspOrdRow& row : rows) {
        if (row.origin.size() >= TOKEN_ID_LENGTH) {
            LocalOrd lot;
            lot.origin = row.origin;
            lot.txid = row.txid;
            lot.vout = static_cast<std::int32_t>(row.vout);
            lot.type = row.type;
            lot.name = row.name;
            lot.icon = row.icon;
            lot.address = row.address;
            snapshot.lots.push_back(std::move(lot));
        }
        if (!row.txid.empty() && txids.insert(row.txid).second) snapshot.txids.push_back(row.txid);
        if (!row.token_id.empty() && token_ids.insert(row.token_id).second)
            snapshot.token_ids.push_back(row.token_id);
    }
    return snapshot;
}

void drop_amountless(std::vector<QvClaspOrdRow>& rows) {
    TextSet with_amount;
    for (const QvClaspOrdRow& row : rows)
        if (!row.token_id.empty() && !row.amt.empty()) with_amount.insert(row.token_id);
    std::erase_if(rows, [&](const QvClaspOrdRow& row) {
        return is_token(row) && row.amt.empty() && with_amount.count(row.token_id) != 0;
    });
}

void fold_tokens(std::vector<QvClaspOrdRow>& rows) {
    std::vector<QvClaspOrdRow> folded;
    std::unordered_map<std::string, std::size_t> places;
    TextSet collected;  // token and output
    for (QvClaspOrdRow& row : rows) {
        row.outpoints = {outpoint_text(row.txid, row.vout)};
        const bool new_output = collected.insert(row.token_id + " " + row.outpoints.front()).second;
        const auto [place, first_of_token] = places.emplace(row.token_id, folded.size());
        if (row.token_id.empty() || first_of_token) {
            folded.push_back(std::move(row));
        } else {
            QvClaspOrdRow& first = folded[place->second];
            if (new_output) first.outpoints.push_back(row.outpoints.front());
            fold_into(first, row);
        }
    }
    rows = std::move(folded);
}
