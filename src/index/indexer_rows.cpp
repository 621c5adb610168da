#include "index/indexer_rows.h"

#include "base/decimal_text.h"
#include "index/inscription.h"

namespace {

const Json& bsv20_of(const Json& txo) {
    return json_member(json_member(txo, "data"), "bsv20");
}
const Json& bsv21_of(const Json& txo) {
    return json_member(json_member(txo, "data"), "bsv21");
}

void fill(std::string& slot, std::string text) {
    if (slot.empty()) slot = std::move(text);
}

// The object that speaks for the token in a row's `data`; null if there is none.
const Json& token_object(const Json& txo) {
    const Json& bsv20 = bsv20_of(txo);
    if (bsv20.is_object()) return bsv20;
    const Json& bsv21 = bsv21_of(txo);
    if (bsv21.is_object()) return bsv21;
    static const Json NONE;
    const Json& inscribed = json_member(json_member(json_member(txo, "data"), "insc"), "json");
    return json_text(inscribed, "p") == "bsv-20" ? inscribed : NONE;
}

}  // namespace

bool read_indexer_token(const Json& txo, std::string& id, std::string& amt, std::string& name,
                        std::string& dec, std::string& icon) {
    for (std::string* slot : {&id, &amt, &name, &dec, &icon}) slot->clear();
    const Json& data = json_member(txo, "data");
    if (!data.is_object()) return false;
    // The inscription's own text fills what the token object leaves open.
    for (const Json* source : {&token_object(txo), &json_member(json_member(data, "insc"), "json")}) {
        fill(id, json_text(*source, "id"));
        fill(name, clean_name(json_text(*source, "name")));
        fill(icon, json_text(*source, "icon"));
        fill(dec, read_dec(*source));
        fill(amt, dec_norm(read_amt(*source)));
    }
    return !id.empty() || !amt.empty();
}

std::string read_txo_amount(const Json& txo) {
    std::string amount = read_amt(txo);
    if (amount.empty()) amount = read_balance(txo);
    if (amount.empty()) amount = read_amt(bsv20_of(txo));
    if (amount.empty()) amount = read_amt(bsv21_of(txo));
    return dec_norm(amount);
}

std::string read_txo_dec(const Json& txo) {
    std::string dec = read_dec(txo);
    if (dec.empty()) dec = read_dec(bsv20_of(txo));
    return dec.empty() ? read_dec(bsv21_of(txo)) : dec;
}

std::string read_txo_id(const Json& txo) {
    std::string id = json_text(txo, "id");
    if (id.empty()) id = json_text(bsv20_of(txo), "id");
    return id.empty() ? json_text(bsv21_of(txo), "id") : id;
}
