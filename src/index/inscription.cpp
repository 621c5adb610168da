#include "index/inscription.h"

#include <algorithm>
#include <limits>

#include "base/hex.h"
#include "base/text.h"
#include "index/content_cache.h"
#include "wallet/address.h"

namespace {

constexpr std::uint8_t OP_0 = 0x00;
constexpr std::uint8_t OP_PUSHDATA1 = 76;
constexpr std::uint8_t OP_PUSHDATA4 = 78;
constexpr std::uint8_t OP_1 = 0x51;
constexpr std::uint8_t OP_5 = 0x55;
constexpr std::uint8_t OP_16 = 0x60;
constexpr std::uint8_t OP_IF = 0x63;
constexpr std::uint8_t OP_ENDIF = 0x68;
constexpr std::size_t SHORTEST_ENVELOPE = 6;
constexpr std::size_t P2PKH_SIZE = 25;
constexpr std::size_t TXID_SIZE = 64;
constexpr std::size_t LONGEST_NAME = 48;

// A part of a script, left where it stands.
struct Slice {
    std::size_t start = 0;
    std::size_t size = 0;
};

bool read_push(const Bytes& script, std::size_t& at, Slice& push) {
    if (at >= script.size() || script[at] > OP_PUSHDATA4) return false;
    const std::uint8_t opcode = script[at++];
    std::size_t size = opcode;
    if (opcode >= OP_PUSHDATA1) {
        const std::size_t length_bytes = std::size_t{1} << (opcode - OP_PUSHDATA1);
        if (script.size() - at < length_bytes) return false;
        size = 0;
        for (std::size_t i = 0; i < length_bytes; ++i) size |= std::size_t{script[at + i]} << (8 * i);
        at += length_bytes;
    }
    if (script.size() - at < size) return false;
    push = {at, size};
    at += size;
    return true;
}

std::string slice_text(const Bytes& script, const Slice& slice) {
    return {reinterpret_cast<const char*>(script.data()) + slice.start, slice.size};
}

bool read_p2pkh_at(const Bytes& script, std::size_t at, Hash160& hash) {
    if (at > script.size() || script.size() - at < P2PKH_SIZE) return false;
    const std::uint8_t* bytes = script.data() + at;
    if (bytes[0] != 0x76 || bytes[1] != 0xA9 || bytes[2] != hash.size() || bytes[23] != 0x88 ||
        bytes[24] != 0xAC) {
        return false;
    }
    std::copy_n(bytes + 3, hash.size(), hash.begin());
    return true;
}

// The count as decimal text; empty for a negative one, a float or any other type.
std::string count_text(const Json& value) {
    if (value.is_number_unsigned()) return std::to_string(value.get<std::uint64_t>());
    if (value.is_number_integer() && value.get<std::int64_t>() >= 0)
        return std::to_string(value.get<std::int64_t>());
    return "";
}

}  // namespace

bool parse_outpoint(std::string_view text, std::string& txid, std::uint32_t& vout) {
    txid.clear();
    vout = 0;
    if (!is_hex64(text.substr(0, TXID_SIZE))) return false;
    if (text.size() > TXID_SIZE) {
        unsigned long long number = 0;
        if (text[TXID_SIZE] != '_' || !parse_u64(text.substr(TXID_SIZE + 1), number) ||
            number > std::numeric_limits<std::uint32_t>::max()) {
            return false;
        }
        vout = static_cast<std::uint32_t>(number);
    }
    txid = text.substr(0, TXID_SIZE);
    return true;
}

bool read_ord_envelope(const Bytes& script, std::size_t& pos, std::string& content_type, Bytes& body,
                       std::string* extra) {
    std::size_t at = pos;
    if (at > script.size() || script.size() - at < SHORTEST_ENVELOPE) return false;
    if (script[at] != OP_0 || script[at + 1] != OP_IF) return false;
    at += 2;
    Slice mark;
    if (!read_push(script, at, mark) || mark.size != 3 || slice_text(script, mark) != "ord") return false;

    Slice type_slice;
    Slice body_slice;
    Slice extra_slice;
    while (at < script.size() && script[at] != OP_ENDIF) {
        const std::uint8_t tag = script[at++];
        if (tag != OP_0 && (tag < OP_1 || tag > OP_16)) return false;
        Slice value;
        if (!read_push(script, at, value)) return false;
        if (tag == OP_0) body_slice = value;
        if (tag == OP_1) type_slice = value;
        if (tag == OP_5) extra_slice = value;
    }
    if (at >= script.size()) return false;

    pos = at + 1;
    content_type = slice_text(script, type_slice);
    const std::uint8_t* body_start = script.data() + body_slice.start;
    body.assign(body_start, body_start + body_slice.size);
    if (extra != nullptr) *extra = slice_text(script, extra_slice);
    return !content_type.empty();
}

bool read_ord_script(const Bytes& script, Hash160& owner_hash, Inscription& inscription) {
    const bool owner_first = script.size() > P2PKH_SIZE && read_p2pkh_at(script, 0, owner_hash);
    std::size_t pos = owner_first ? P2PKH_SIZE : 0;
    if (!read_ord_envelope(script, pos, inscription.content_type, inscription.body, &inscription.extra))
        return false;
    return owner_first || read_p2pkh_at(script, pos, owner_hash);
}

bool is_deploy_op(std::string_view op) {
    return op == "deploy+mint" || op == "deploy";
}

bool parse_bsv20(std::string_view body, Bsv20Meta& meta) {
    meta = {};
    Json document;
    if (body.empty() || !parse_json(body, document) || json_text(document, "p") != "bsv-20") return false;
    meta.op = json_text(document, "op");
    meta.amt = read_amt(document);
    meta.sym = json_text(document, "sym");
    meta.dec = read_dec(document);
    meta.icon = json_text(document, "icon");
    meta.name = clean_name(json_text(document, "name"));
    meta.id = json_text(document, "id");
    return !meta.amt.empty();
}

bool read_ord_output(const Json& vout_entry, const std::string& txid, std::uint32_t vout, Hash160& owner_hash,
                     Bsv20Meta& meta, std::string& outpoint) {
    Inscription inscription;
    if (!read_ord_entry(vout_entry, owner_hash, inscription)) return false;
    if (!parse_bsv20(body_text(inscription.body), meta)) return false;
    outpoint = outpoint_text(txid, vout);
    qv_clasp_cache_put(outpoint, inscription.content_type, inscription.body);
    return true;
}

bool read_ord_entry(const Json& vout_entry, Hash160& owner_hash, Inscription& inscription) {
    const Json& hex = json_member(json_member(vout_entry, "scriptPubKey"), "hex");
    if (!hex.is_string()) return false;
    return read_ord_script(qv_clasp_hex_decode(hex.get_ref<const std::string&>()), owner_hash, inscription);
}

std::string outpoint_text(const std::string& txid, std::uint32_t vout) {
    return txid + "_" + std::to_string(vout);
}

std::uint32_t vout_index(const Json& vout_entry, std::size_t place) {
    std::int64_t number = 0;
    const bool named = json_whole(json_member(vout_entry, "n"), number) && number >= 0 &&
                       number <= std::int64_t{std::numeric_limits<std::uint32_t>::max()};
    return static_cast<std::uint32_t>(named ? static_cast<std::uint64_t>(number) : place);
}

std::string token_id_of(const Bsv20Meta& meta, const std::string& outpoint) {
    if (!meta.id.empty()) return meta.id;
    return is_deploy_op(meta.op) ? outpoint : "";
}

std::string clean_name(std::string_view text) {
    return std::string(trim(text, " \t", " \t\n").substr(0, LONGEST_NAME));
}

std::string name_from_body(std::string_view body) {
    if (body.empty()) return "";
    Json document;
    if (parse_json(body, document) && document.is_object()) {
        const auto name = document.find("name");
        if (name == document.end()) return "";
        if (name->is_string()) return clean_name(name->get_ref<const std::string&>());
    }
    const bool plain = body.size() <= LONGEST_NAME && body.find('\0') == std::string_view::npos;
    return plain ? clean_name(body) : "";
}

std::string read_amt(const Json& object) {
    const Json& value = json_member(object, "amt");
    return value.is_string() ? value.get_ref<const std::string&>() : count_text(value);
}

std::string read_dec(const Json& object) {
    const Json& value = json_member(object, "dec");
    if (value.is_string()) return value.get_ref<const std::string&>();
    if (value.is_number_unsigned()) return std::to_string(value.get<std::uint64_t>());
    return value.is_number_integer() ? std::to_string(value.get<std::int64_t>()) : "";
}

std::string read_balance(const Json& object) {
    const Json& value = json_member(object, "balance");
    return value.is_string() ? value.get_ref<const std::string&>() : count_text(value);
}
