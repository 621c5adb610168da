// Answers of the indexer and the chain service to a snapshot, a sweep and a token list.
#include "fuzz/fuzz.h"
#include "index/chain_view.h"
#include "index/holder_snapshot.h"
#include "index/ordinal_listing.h"
#include "index/token_list.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    start_afresh();
    qv_clasp_clear_spend_cache();
    script_services({reinterpret_cast<const char*>(data), size});
    std::vector<QvClaspOrdRow> rows;
    const std::string swept = qv_clasp_list_ordinals(rows);
    promise(swept.empty() || swept.starts_with("error: "), "a sweep ends in one of two ways");
    std::vector<TokenRow> tokens;
    qv_clasp_list_tokens(tokens, true);
    HolderBoard board;
    const std::string shot = qv_clasp_snapshot_holders(fuzz_txid('t') + "_0", board);
    promise(shot.empty() || shot.starts_with("error: "), "a snapshot ends in one of two ways");
    for (const HolderRow& row : board.rows) {
        promise(!row.lots.empty() && row.lots != "0", "a holder holds something");
        promise(!row.reserve || row.dest.empty(), "the wallet does not pay itself");
    }
    return 0;
}
