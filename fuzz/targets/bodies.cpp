// Bodies of tokens and of identity records, and the rows that services send: JSON of any kind.
#include "base/json_file.h"
#include "fuzz/fuzz.h"
#include "index/history_ingest.h"
#include "index/holder_sources.h"
#include "index/indexer_rows.h"
#include "index/inscription.h"
#include "spend/broadcast.h"
#include "spend/chain_readers.h"

namespace {

void body(const std::string& text) {
    Bsv20Meta meta;
    if (parse_bsv20(text, meta)) promise(!meta.amt.empty(), "a token record has an amount");
    promise(name_from_body(text).size() <= 48, "a name has 48 bytes at most");
    std::string label;
    identity_label(text, "02ab", label);
    kind_label(text);
}

void rows(const std::string& text) {
    Json root;
    if (!parse_json(text, root)) return;
    const Json list = root.is_array() ? root : Json::array({root});
    for (const Json& row : list) {
        std::string id, amt, name, dec, icon;
        read_indexer_token(row, id, amt, name, dec, icon);
        read_txo_amount(row);
        read_txo_dec(row);
        read_txo_id(row);
        row_txid(row);
        vout_index(row, 7);
        Hash160 owner{};
        Inscription inscription;
        read_ord_entry(row, owner, inscription);
        read_amt(row);
        read_dec(row);
        read_balance(row);
    }
    dump_json(root, 2);
}

void coins(const std::string& text) {
    Json root;
    if (!parse_json(text, root)) return;
    std::vector<QvClaspUtxo> list;
    qv_clasp_parse_utxo_list(root, list);
    for (const QvClaspUtxo& coin : list)
        promise(coin.sats > 0 && coin.txid.size() == 64, "a coin is worth something");
}

void holders(const std::string& text) {
    std::vector<HolderTxo> list;
    parse_holders(text, list);
    reconcile_deploy_rows(list);
    merge_holder_rows(list, list);
}

void verdict(const std::string& text) {
    std::string error;
    arc_verdict(text, std::string(64, 'a'), error);
    qv_clasp_is_missing_inputs(text);
}

using Reader = void (*)(const std::string&);
constexpr Reader READERS[] = {body, rows, coins, holders, verdict};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Choice choice = choose(data, size, std::size(READERS));
    READERS[choice.parser](choice.text);
    return 0;
}
