// Locking scripts: the inscription envelope and its two layouts.
#include "base/hex.h"
#include "base/json_file.h"
#include "fuzz/fuzz.h"
#include "index/inscription.h"
#include "wallet/address.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Bytes script(data, data + size);
    for (const std::size_t start : {std::size_t{0}, std::size_t{25}, size}) {
        std::size_t at = start;
        std::string type;
        std::string extra;
        Bytes body;
        if (!read_ord_envelope(script, at, type, body, &extra)) continue;
        promise(at > start && at <= size, "an envelope ends inside of its script");
        promise(!type.empty() && type.size() + body.size() + extra.size() < size, "nothing is read twice");
    }
    Hash160 owner{};
    Inscription inscription;
    Bsv20Meta meta;
    const bool read = read_ord_script(script, owner, inscription);
    if (read) parse_bsv20(body_text(inscription.body), meta);
    p2pkh_script_hash(script, owner);

    // The same script as a service tells it.
    const Json entry = {{"n", 0}, {"value", 1}, {"scriptPubKey", {{"hex", qv_clasp_hex_encode(script)}}}};
    Inscription told;
    promise(read_ord_entry(entry, owner, told) == read, "both ways read the same");
    return 0;
}
