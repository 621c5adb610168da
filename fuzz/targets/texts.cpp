// Texts that people type, and that files and services hold.
#include "base/amounts.h"
#include "base/decimal_text.h"
#include "base/hex.h"
#include "base/text.h"
#include "fuzz/fuzz.h"
#include "index/inscription.h"
#include "net/http_client.h"
#include "program/page_version.h"
#include "records/holder_notes.h"
#include "records/vaults.h"
#include "wallet/address.h"
#include "wallet/key_derivation.h"
#include "wallet/name_registry.h"

namespace {

void address(const std::string& text) {
    Hash160 hash{};
    if (!qv_clasp_address_to_hash160(text, hash)) return;
    promise(qv_clasp_address_from_hash160(hash) == text, "an address has one text");
}

void amount(const std::string& text) {
    std::int64_t sats = 0;
    if (!parse_bsv_amount(trim_text(text), sats)) return;
    promise(sats > 0, "an amount is above zero");
    std::int64_t again = 0;
    promise(parse_bsv_amount(format_bsv(sats), again) && again == sats, "an amount survives its text");
}

void lots(const std::string& text) {
    const std::size_t cut = text.find('/');
    const std::string a = text.substr(0, cut);
    const std::string b = cut == std::string::npos ? "" : text.substr(cut + 1);
    const std::string norm = dec_norm(a);
    const std::string sum = dec_add(a, b);
    if (!norm.empty()) promise(dec_sub(sum, b) == norm, "a sum less one part is the other");
    promise(dec_norm(sum) == sum && dec_cmp(sum, norm.empty() ? "0" : norm) >= 0,
            "a sum is normal and no smaller");
    std::uint64_t count = 0;
    if (read_lot_text_strict(a, count))
        promise(read_lot_text_lenient(a) == count, "both readings agree on lots in order");
    const std::int64_t share = pro_rata_sats(1'000'000'000'000, a, b);
    promise(share >= 0, "a share is not negative");
}

void outpoint(const std::string& text) {
    std::string txid;
    std::uint32_t vout = 0;
    if (!parse_outpoint(text, txid, vout)) return;
    std::string txid_again;
    std::uint32_t vout_again = 0;
    promise(parse_outpoint(outpoint_text(txid, vout), txid_again, vout_again) && txid_again == txid &&
                vout_again == vout,
            "an outpoint survives its text");
}

void page(const std::string& text) {
    promise(parse_page_version(text) >= -1, "a version is a count, or none");
}

void names(const std::string& text) {
    const std::string name = qv_clasp_clean_name(text);
    promise(qv_clasp_clean_name(name) == name, "a cleaned name stays clean");
    promise(clean_name(text).size() <= 48, "a display name has 48 bytes at most");
    qv_clasp_clean_alias(text);
    qv_clasp_normalize_dest(text);
    promise(normalise_note(text).size() <= MOST_NOTE_BYTES, "a note has an end");
    const std::u16string wide = utf16_from_utf8(text);
    if (is_utf8(text)) promise(utf8_from_utf16(wide) == text, "text survives UTF-16");
}

void mnemonic(const std::string& text) {
    mnemonic_words_valid(text);
}

void hexadecimal(const std::string& text) {
    const Bytes bytes = qv_clasp_hex_decode(text);
    if (!bytes.empty()) promise(qv_clasp_hex_encode(bytes) == ascii_lower(text), "bytes survive their text");
    std::string pub;
    Hash160 hash{};
    p2pkh_script_hash(bytes, hash);
    qv_clasp_address_from_pub(text);
}

void vault_text(const std::string& text) {
    std::vector<Vault> vaults;
    save_vault(vaults, "Cold", text);
    add_vault_addresses(vaults, 0, text);
}

void error_text(const std::string& text) {
    qv_clasp_http_error_text(500, text);
}

using Reader = void (*)(const std::string&);
constexpr Reader READERS[] = {address, mnemonic, amount,      lots,       outpoint,
                              page,    names,    hexadecimal, vault_text, error_text};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Choice choice = choose(data, size, std::size(READERS));
    READERS[choice.parser](choice.text);
    return 0;
}
