#include "sandbox/scripts.h"

#include <algorithm>
#include <array>

#include "sandbox/byte_io.h"
#include "sandbox/keys.h"

namespace sandbox {

namespace {

constexpr std::uint8_t OP_0 = 0x00;
constexpr std::uint8_t OP_1 = 0x51;
constexpr std::uint8_t OP_16 = 0x60;
constexpr std::uint8_t OP_IF = 0x63;
constexpr std::uint8_t OP_ENDIF = 0x68;
constexpr std::uint8_t OP_RETURN = 0x6a;
constexpr std::size_t P2PKH_SIZE = 25;
const Bytes ORD{'o', 'r', 'd'};

Bytes bytes_of(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

std::optional<Hash160> p2pkh_at(const Bytes& script, std::size_t at) {
    if (script.size() < at + P2PKH_SIZE) return std::nullopt;
    Hash160 owner{};
    std::copy_n(script.begin() + static_cast<std::ptrdiff_t>(at + 3), owner.size(), owner.begin());
    const Bytes pattern = p2pkh_script(owner);
    if (!std::equal(pattern.begin(), pattern.end(), script.begin() + static_cast<std::ptrdiff_t>(at))) {
        return std::nullopt;
    }
    return owner;
}

struct Envelope {
    std::string content_type;
    Bytes body;
};

// One field behind "ord": a tag (OP_1 to OP_16, of which OP_1 is the content type) or the body's OP_0, and
// its value.
bool read_field(const Bytes& script, const ScriptOp& tag, std::size_t& at, Envelope& envelope) {
    const bool is_body = tag.opcode == OP_0;
    if (!is_body && (tag.opcode < OP_1 || tag.opcode > OP_16)) return false;
    ScriptOp value;
    if (!read_op(script, at, value) || !value.is_push) return false;
    if (is_body) envelope.body = value.data;
    if (tag.opcode == OP_1) envelope.content_type.assign(value.data.begin(), value.data.end());
    return true;
}

// An envelope that begins at `at`; on success `at` stands behind its OP_ENDIF.
bool read_envelope(const Bytes& script, std::size_t& at, Envelope& envelope) {
    std::size_t next = at;
    ScriptOp op;
    if (!read_op(script, next, op) || op.opcode != OP_0) return false;
    if (!read_op(script, next, op) || op.opcode != OP_IF) return false;
    if (!read_op(script, next, op) || !op.is_push || op.data != ORD) return false;
    while (read_op(script, next, op)) {
        if (op.opcode == OP_ENDIF) {
            if (envelope.content_type.empty()) return false;
            at = next;
            return true;
        }
        if (!read_field(script, op, next, envelope)) return false;
    }
    return false;
}

// Whether nothing behind `at` can change who may spend: the end, or an OP_RETURN that ends the script.
bool ends_at(const Bytes& script, std::size_t at) {
    return at == script.size() || script[at] == OP_RETURN;
}

bool read_parts(const Bytes& script, std::optional<Hash160>& owner, Envelope& envelope, bool& inscribed) {
    std::size_t at = 0;
    inscribed = false;
    if (const auto first = p2pkh_at(script, 0)) {
        at = P2PKH_SIZE;
        if (at < script.size()) inscribed = read_envelope(script, at, envelope);
        if (ends_at(script, at)) owner = first;
        return true;
    }
    if (!read_envelope(script, at, envelope)) return false;
    inscribed = true;
    const auto behind = p2pkh_at(script, at);
    if (behind && ends_at(script, at + P2PKH_SIZE)) owner = behind;
    return true;
}

}  // namespace

Bytes inscription_script(const Hash160& owner, const std::string& content_type, const Bytes& body,
                         Layout layout) {
    Bytes envelope{OP_0, OP_IF};
    put_push(envelope, ORD);
    envelope.push_back(OP_1);
    put_push(envelope, bytes_of(content_type));
    envelope.push_back(OP_0);
    put_push(envelope, body);
    envelope.push_back(OP_ENDIF);
    const Bytes lock = p2pkh_script(owner);
    Bytes script = layout == Layout::OwnerFirst ? lock : envelope;
    put_bytes(script, layout == Layout::OwnerFirst ? envelope : lock);
    return script;
}

ReadScript read_script(const Bytes& script) {
    ReadScript read;
    Envelope envelope;
    if (!read_parts(script, read.owner, envelope, read.inscribed) || !read.inscribed) return read;
    read.content_type = envelope.content_type;
    read.body = envelope.body;
    Json body;
    const std::string_view text(reinterpret_cast<const char*>(read.body.data()), read.body.size());
    if (parse_json(text, body) && body.is_object() && json_text(body, "p") == "bsv-20") read.token = body;
    return read;
}

std::optional<Hash160> script_owner(const Bytes& script) {
    std::optional<Hash160> owner;
    Envelope envelope;
    bool inscribed = false;
    read_parts(script, owner, envelope, inscribed);
    return owner;
}

std::string deploy_mint_body(const std::string& sym, const std::string& amt, int dec, const std::string& icon,
                             const std::string& name) {
    Json body{
        {"p", "bsv-20"}, {"op", "deploy+mint"}, {"sym", sym}, {"amt", amt}, {"dec", std::to_string(dec)}};
    if (!icon.empty()) body["icon"] = icon;
    if (!name.empty()) body["name"] = name;
    return dump_json(body, -1);
}

std::string transfer_body(const std::string& id, const std::string& amt) {
    return dump_json(Json{{"p", "bsv-20"}, {"op", "transfer"}, {"id", id}, {"amt", amt}}, -1);
}

Bytes token_script(const Hash160& owner, const std::string& body, Layout layout) {
    return inscription_script(owner, "application/bsv-20", bytes_of(body), layout);
}

}  // namespace sandbox
