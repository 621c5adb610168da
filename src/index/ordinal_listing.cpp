#include "index/ordinal_listing.h"

#include "base/text.h"
#include "index/history_ingest.h"
#include "index/ordinal_inbox.h"
#include "index/own_addresses.h"
#include "index/sweep_checks.h"
#include "index/sweep_fill.h"
#include "index/sweep_fold.h"
#include "index/sweep_merge.h"
#include "index/sweep_sources.h"
#include "wallet/wallet_document.h"

namespace {

constexpr std::size_t ART_CHECK_THREADS = 4;
constexpr std::size_t TOKEN_CHECK_THREADS = 6;

// What other programs left for the wallet, and what is to be swept.
std::string begin_sweep(OrdinalSweep& sweep) {
    const WalletLock lock = qv_clasp_lock_wallet();
    if (!qv_clasp_load()) return ERROR_NO_WALLET;
    qv_clasp_absorb_ord_inbox();
    qv_clasp_harvest_ord_names();
    sweep.watch = qv_clasp_watch_addresses();
    if (sweep.watch.empty()) return "error: no watch addresses.";
    sweep.scope_key = qv_clasp_scope_key();
    return "";
}

bool note_start(OrdinalSweep& sweep) {
    return with_wallet(sweep, [&](const QvClaspSession& session) {
        sweep.identity_pub = ascii_lower(session.identity_pub);
        qv_clasp_ord_snap_load(sweep.scope_key, sweep.snapshot);
        sweep.generation = qv_clasp_generation();
    });
}

void look_everywhere(OrdinalSweep& sweep) {
    ask_indexer(sweep);
    take_token_listings(sweep);
    ingest_woc_recent_ords(sweep.watch, sweep.found, sweep.generation);
    if (indexer_silent(sweep)) walk_owned_tokens(sweep);
    qv_clasp_ingest_identity(sweep.watch, sweep.rows);
}

bool merge_all(OrdinalSweep& sweep) {
    return with_wallet(sweep, [&](QvClaspSession& session) { merge_sources(sweep, session.ord_owned); });
}

bool check_art(OrdinalSweep& sweep) {
    if (sweep.answered.empty()) return true;
    std::vector<SpendQuestion> questions;
    if (!with_wallet(sweep, [&](QvClaspSession& session) {
            questions = questions_about_art(sweep, session.ord_owned);
        }))
        return false;
    check_spends(sweep, questions, ART_CHECK_THREADS);
    return with_wallet(sweep, [&](QvClaspSession& session) { drop_vanished_art(sweep, session.ord_owned); });
}

bool fill_from_contents(OrdinalSweep& sweep) {
    const std::vector<RowContent> contents = fetch_contents(sweep);
    return with_wallet(sweep,
                       [&](QvClaspSession& session) { fill_rows(sweep, contents, session.ord_owned); });
}

bool name_tokens(OrdinalSweep& sweep) {
    const std::vector<TokenFace> faces = fetch_token_faces(sweep);
    return with_wallet(sweep,
                       [&](QvClaspSession& session) { take_token_faces(sweep, faces, session.ord_owned); });
}

bool hide_junk(OrdinalSweep& sweep) {
    return with_wallet(sweep, [&](QvClaspSession& session) {
        drop_junk(sweep, session.ord_owned);
        save_owned(sweep);
    });
}

bool check_all_tokens(OrdinalSweep& sweep) {
    if (sweep.token_listing) return true;
    std::vector<SpendQuestion> questions;
    if (!with_wallet(sweep, [&](const QvClaspSession& session) {
            questions = questions_about_all_tokens(sweep, session.ord_owned);
        }))
        return false;
    check_spends(sweep, questions, TOKEN_CHECK_THREADS);
    return with_wallet(sweep, [&](QvClaspSession& session) { drop_spent_tokens(sweep, session.ord_owned); });
}

bool check_unlisted_tokens(OrdinalSweep& sweep) {
    check_spends(sweep, questions_about_unlisted(sweep), TOKEN_CHECK_THREADS);
    return with_wallet(sweep, [&](QvClaspSession& session) { drop_gone_tokens(sweep, session.ord_owned); });
}

// The snapshot is left alone if a payment has moved on meanwhile: some of the rows may be spent by now.
bool keep_what_was_found(OrdinalSweep& sweep) {
    return with_wallet(sweep, [&](QvClaspSession& session) {
        link_token_art(sweep, session.ord_owned);
        save_owned(sweep);
        if (qv_clasp_generation() == sweep.generation)
            qv_clasp_ord_snap_save(sweep.scope_key, snapshot_of(sweep.rows));
    });
}

std::string run_sweep(OrdinalSweep& sweep) {
    const std::string error = begin_sweep(sweep);
    if (!error.empty()) return error;
    qv_clasp_clear_spend_cache();
    if (!note_start(sweep)) return ERROR_WALLET_CHANGED;
    look_everywhere(sweep);
    const bool same_to_the_end = merge_all(sweep) && check_art(sweep) && fill_from_contents(sweep) &&
                                 name_tokens(sweep) && hide_junk(sweep) && check_all_tokens(sweep) &&
                                 check_unlisted_tokens(sweep) && keep_what_was_found(sweep);
    if (!same_to_the_end) return ERROR_WALLET_CHANGED;
    drop_amountless(sweep.rows);
    fold_tokens(sweep.rows);
    if (sweep.answered.empty() && sweep.rows.empty())
        return "error: 1Sat index unavailable. 1-sat coins are held back from spend.";
    return "";
}

}  // namespace

std::string qv_clasp_list_ordinals(std::vector<QvClaspOrdRow>& rows) {
    rows.clear();
    OrdinalSweep sweep;
    const std::string error = run_sweep(sweep);
    if (error.empty()) rows = std::move(sweep.rows);
    return error;
}
