// What a 1Sat output carries: the inscription envelope in a locking script, and the BSV-20 record in its
// body. All reading is tolerant: what does not fit gives a negative result. Pure apart from read_ord_output,
// which keeps bodies in the content cache. Sources: 1Sat Ordinals (envelope), BSV-20/BSV-21 (body).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/bytes.h"
#include "base/json_file.h"

// The text fields of a BSV-20 body; empty when absent.
struct Bsv20Meta {
    std::string op;
    std::string id;
    std::string amt;
    std::string sym;
    std::string dec;
    std::string icon;
    std::string name;
};

struct Inscription {
    std::string content_type;
    Bytes body;
    std::string extra;  // the value of envelope field 5
};

// Outpoint text: txid, "_", output number in decimal digits; a bare txid means output 0. The txid keeps its
// case.
std::string outpoint_text(const std::string& txid, std::uint32_t vout);
bool parse_outpoint(std::string_view text, std::string& txid, std::uint32_t& vout);

// Reads the envelope that begins at `pos`, and moves `pos` behind it. Of a text that is no whole envelope
// nothing is handed over; one without a content type is handed over with false.
bool read_ord_envelope(const Bytes& script, std::size_t& pos, std::string& content_type, Bytes& body,
                       std::string* extra = nullptr);
// A whole 1-sat locking script in either accepted layout.
bool read_ord_script(const Bytes& script, Hash160& owner_hash, Inscription& inscription);

bool parse_bsv20(std::string_view body, Bsv20Meta& meta);
inline std::string_view body_text(const Bytes& body) {
    return {reinterpret_cast<const char*>(body.data()), body.size()};
}

// The inscription of an output of a transaction's JSON.
bool read_ord_entry(const Json& vout_entry, Hash160& owner_hash, Inscription& inscription);
// A token output of a transaction's JSON; its body goes to the content cache under `outpoint`.
bool read_ord_output(const Json& vout_entry, const std::string& txid, std::uint32_t vout, Hash160& owner_hash,
                     Bsv20Meta& meta, std::string& outpoint);
// The index of an entry of `vout`: its numeric `n`, else its place.
std::uint32_t vout_index(const Json& vout_entry, std::size_t place);
// The token id that an output names: the record's `id`; else its own outpoint for a deploy; else empty.
std::string token_id_of(const Bsv20Meta& meta, const std::string& outpoint);
bool is_deploy_op(std::string_view op);

// A display name: without blanks and tabs around it and line feeds behind it, cut to 48 bytes (perhaps inside
// of a character).
std::string clean_name(std::string_view text);
std::string name_from_body(std::string_view body);
// `amt` and `dec` as text from a JSON object; empty if absent or of another type.
std::string read_amt(const Json& object);
std::string read_dec(const Json& object);
// `balance` in the same way as `amt`.
std::string read_balance(const Json& object);
