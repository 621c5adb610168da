#include "index/sweep_fill.h"

#include <algorithm>

#include "base/amounts.h"
#include "base/decimal_text.h"
#include "base/parallel_for.h"
#include "index/content_cache.h"
#include "index/history_ingest.h"
#include "index/inscription_fetch.h"
#include "index/own_addresses.h"
#include "index/token_meta.h"

namespace {

constexpr std::size_t CONTENT_THREADS = 6;
constexpr std::size_t FACE_THREADS = 4;

bool is_full_name(const std::string& name) {
    return !name.empty() && !is_ticker_like(name);
}

RowContent read_content(const OrdinalSweep& sweep, const std::string& origin) {
    RowContent content;
    Bytes bytes;
    content.read = true;
    qv_clasp_inscription_bytes(origin, content.type, bytes, true);
    content.cached_name = qv_clasp_name_get(origin);
    content.token = parse_bsv20(body_text(bytes), content.record);
    if (!content.token) content.record = {};
    content.identity = identity_label(body_text(bytes), sweep.identity_pub, content.label);
    return content;
}

// An amount that is written in a transfer or a mint holds for this output; that of a deploy is the whole
// supply.
std::string amount_in_record(const Bsv20Meta& record) {
    return record.op == "transfer" || record.op == "mint" ? dec_norm(record.amt) : "";
}

void fill_name(const RowContent& content, QvClaspOrdRow& row, const LocalOrd* ord) {
    for (const std::string& name : {content.cached_name, content.record.name, ord ? ord->name : ""}) {
        if (name.empty()) continue;
        row.name = name;
        return;
    }
}

// True if what the wallet remembers changed.
bool fill_token(const OrdinalSweep& sweep, const Bsv20Meta& record, QvClaspOrdRow& row, LocalOrd* ord) {
    fill_blank(row.token_id, record.id.empty() ? row.origin : record.id);
    const auto listed = sweep.figures.find(outpoint_key_of(row));
    if (listed != sweep.figures.end()) {
        fill_blank(row.amt, listed->second.amt);
        fill_blank(row.dec, listed->second.dec);
    }
    if (ord) {
        fill_blank(row.amt, ord->amt);
        fill_blank(row.dec, ord->dec);
    }
    fill_blank(row.amt, amount_in_record(record));
    fill_blank(row.dec, record.dec);
    fill_blank(row.icon, record.icon);
    fill_blank(row.name, record.sym);
    if (!ord || ord->amt == row.amt) return false;
    ord->amt = row.amt;
    ord->dec = row.dec;
    ord->token_id = row.token_id;
    return true;
}

void judge_name(const RowContent& content, QvClaspOrdRow& row, const LocalOrd* ord) {
    const std::string fixed_name = qv_clasp_fixed_token_name(row.token_id);
    if (!fixed_name.empty() && !is_full_name(row.name)) row.name = fixed_name;
    row.named = is_full_name(row.name);
    row.needs_name = ord && ord->created && !row.named && (!content.token || is_deploy_op(content.record.op));
}

// True if what the wallet remembers changed.
bool keep_name(const std::string& cached_name, const QvClaspOrdRow& row, LocalOrd* ord) {
    if (row.name.empty()) return false;
    if (row.name != cached_name) qv_clasp_name_put(row.origin, row.name);
    return ord && take_newer(ord->name, row.name);
}

void take_identity(const RowContent& content, QvClaspOrdRow& row) {
    if (!content.identity) return;
    take_newer(row.name, content.label);
    row.certificate = true;
    row.named = true;
    row.needs_name = false;
}

bool wants_face(const QvClaspOrdRow& row) {
    return row.token_id.size() >= TOKEN_ID_LENGTH && (row.icon.empty() || !is_full_name(row.name));
}

bool take_face(const TokenFace& face, QvClaspOrdRow& row, LocalOrd* ord) {
    bool changed = false;
    if (!is_full_name(row.name) && (row.name.empty() || is_full_name(face.name)) &&
        take_newer(row.name, face.name)) {
        row.named = is_full_name(row.name);
        if (row.named) row.needs_name = false;
        changed = keep_name("", row, ord);
    }
    if (fill_blank(row.icon, face.icon) && ord) changed = fill_blank(ord->icon, face.icon) || changed;
    return changed;
}

bool is_junk(const QvClaspOrdRow& row) {
    return is_token_type(row.type) && row.amt.empty() && !is_full_name(row.name);
}

}  // namespace

std::vector<RowContent> fetch_contents(const OrdinalSweep& sweep) {
    std::vector<RowContent> contents(sweep.rows.size());
    parallel_for(contents.size(), CONTENT_THREADS, [&](std::size_t i) {
        if (!generation_moved(sweep.generation)) contents[i] = read_content(sweep, sweep.rows[i].origin);
    });
    return contents;
}

bool fill_row(const OrdinalSweep& sweep, const RowContent& content, QvClaspOrdRow& row, LocalOrd* ord) {
    fill_blank(row.type, content.type);
    fill_name(content, row, ord);
    bool changed = content.token && fill_token(sweep, content.record, row, ord);
    judge_name(content, row, ord);
    changed = keep_name(content.cached_name, row, ord) || changed;
    take_identity(content, row);
    return changed;
}

void fill_rows(OrdinalSweep& sweep, const std::vector<RowContent>& contents, std::vector<LocalOrd>& owned) {
    const OwnedByOrigin by_origin(owned);
    for (std::size_t i = 0; i < sweep.rows.size(); ++i) {
        if (!contents[i].read) continue;
        QvClaspOrdRow& row = sweep.rows[i];
        const bool changed = fill_row(sweep, contents[i], row, by_origin.find(row.origin));
        sweep.owned_changed = sweep.owned_changed || changed;
    }
}

std::vector<TokenFace> fetch_token_faces(const OrdinalSweep& sweep) {
    std::vector<TokenFace> faces;
    TextSet asked;
    for (const QvClaspOrdRow& row : sweep.rows)
        if (wants_face(row) && asked.insert(row.token_id).second) faces.push_back({row.token_id, "", ""});
    parallel_for(faces.size(), FACE_THREADS, [&](std::size_t i) {
        if (generation_moved(sweep.generation)) return;
        qv_clasp_fetch_token_meta(faces[i].token_id, faces[i].name, &faces[i].icon);
    });
    return faces;
}

void take_token_faces(OrdinalSweep& sweep, const std::vector<TokenFace>& faces,
                      std::vector<LocalOrd>& owned) {
    std::unordered_map<std::string, const TokenFace*> by_token;
    for (const TokenFace& face : faces) by_token.emplace(face.token_id, &face);
    const OwnedByOrigin by_origin(owned);
    for (QvClaspOrdRow& row : sweep.rows) {
        const auto face = by_token.find(row.token_id);
        if (face == by_token.end()) continue;
        sweep.owned_changed =
            take_face(*face->second, row, by_origin.find(row.origin)) || sweep.owned_changed;
    }
}

void drop_junk(OrdinalSweep& sweep, std::vector<LocalOrd>& owned) {
    // Without their inscriptions, which are not fetched any more once the wallet has moved on, all look
    // alike.
    const bool judged = !generation_moved(sweep.generation);
    const OwnedByOrigin by_origin(owned);
    for (const QvClaspOrdRow& row : sweep.rows) {
        LocalOrd* ord = judged && is_junk(row) ? by_origin.find(row.origin) : nullptr;
        if (!ord || ord->hidden) continue;
        ord->hidden = true;
        sweep.owned_changed = true;
    }
    std::erase_if(sweep.rows, is_junk);
    TextSet seen;
    std::erase_if(sweep.rows,
                  [&](const QvClaspOrdRow& row) { return !seen.insert(outpoint_key_of(row)).second; });
}

void link_token_art(OrdinalSweep& sweep, std::vector<LocalOrd>& owned) {
    std::unordered_map<std::string, std::string> pictures;
    for (const QvClaspOrdRow& row : sweep.rows)
        if (is_image_type(row.type)) pictures.emplace(row.name, row.origin);
    const OwnedByOrigin by_origin(owned);
    for (QvClaspOrdRow& row : sweep.rows) {
        if (!is_token_type(row.type) || row.name.empty() || !row.icon.empty()) continue;
        const auto picture = pictures.find(row.name + " art");
        if (picture == pictures.end()) continue;
        row.icon = picture->second;
        LocalOrd* ord = by_origin.find(row.origin);
        if (ord) sweep.owned_changed = fill_blank(ord->icon, row.icon) || sweep.owned_changed;
    }
}
