#include "index/inscription_fetch.h"

#include <cstdint>
#include <string_view>

#include "base/hex.h"
#include "base/json_file.h"
#include "base/settings.h"
#include "base/text.h"
#include "index/chain_view.h"
#include "index/content_cache.h"
#include "index/inscription.h"
#include "net/http_client.h"
#include "wallet/wallet_session.h"

namespace {

constexpr int TX_TIMEOUT_S = 25;
constexpr int CONTENT_TIMEOUT_S = 45;

// Reads the fields of a raw transaction from front to back; after a read past the end it stays failed.
struct RawReader {
    const Bytes& raw;
    std::size_t at = 0;
    bool ok = true;

    bool skip(std::uint64_t count) {
        ok = ok && raw.size() - at >= count;
        if (ok) at += static_cast<std::size_t>(count);
        return ok;
    }
    std::uint64_t little_endian(std::size_t count) {
        if (!skip(count)) return 0;
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < count; ++i) value |= std::uint64_t{raw[at - count + i]} << (8 * i);
        return value;
    }
    std::uint64_t compact() {
        const std::uint64_t first = little_endian(1);
        return first < 253 ? first : little_endian(std::size_t{1} << (first - 252));
    }
};

// The locking script of one output of a raw transaction.
bool raw_output_script(const Bytes& raw, std::uint32_t vout, Bytes& script) {
    RawReader reader{raw};
    reader.skip(4);
    const std::uint64_t inputs = reader.compact();
    for (std::uint64_t i = 0; i < inputs && reader.ok; ++i) {
        reader.skip(36);
        reader.skip(reader.compact());
        reader.skip(4);
    }
    const std::uint64_t outputs = reader.compact();
    if (!reader.ok || vout >= outputs) return false;
    for (std::uint64_t i = 0; reader.ok; ++i) {
        reader.skip(8);
        const std::uint64_t size = reader.compact();
        const std::size_t start = reader.at;
        if (!reader.skip(size)) return false;
        if (i < vout) continue;
        const auto first = raw.begin() + static_cast<std::ptrdiff_t>(start);
        script.assign(first, first + static_cast<std::ptrdiff_t>(size));
        return true;
    }
    return false;
}

bool fetch(const std::string& url, int timeout_s, std::string& body) {
    std::string error;
    return qv_clasp_http_get(url, body, error, timeout_s);
}

bool from_tx_json(const std::string& txid, std::uint32_t vout, Inscription& inscription) {
    std::string body;
    Json tx;
    if (!fetch(settings().woc_base + "/tx/" + txid, TX_TIMEOUT_S, body) || !parse_json(body, tx))
        return false;
    const Json& outputs = json_member(tx, "vout");
    Hash160 owner_hash{};
    return outputs.is_array() && vout < outputs.size() &&
           read_ord_entry(outputs[vout], owner_hash, inscription);
}

bool from_raw_tx(const std::string& txid, const char* form, std::uint32_t vout, Inscription& inscription) {
    std::string body;
    if (!fetch(settings().woc_base + "/tx/" + txid + form, TX_TIMEOUT_S, body)) return false;
    const Bytes raw = qv_clasp_hex_decode(trim(body, "\"\r\n", "\"\r\n"));
    Bytes script;
    Hash160 owner_hash{};
    return raw_output_script(raw, vout, script) && read_ord_script(script, owner_hash, inscription);
}

bool from_chain(const std::string& txid, std::uint32_t vout, Inscription& inscription) {
    return from_tx_json(txid, vout, inscription) || from_raw_tx(txid, "/hex", vout, inscription) ||
           from_raw_tx(txid, "/raw", vout, inscription);
}

bool is_error_object(const std::string& body) {
    return body.starts_with('{') && body.size() >= 7 && contains(body, "\"error\"");
}

bool from_indexer(const std::string& outpoint, Inscription& inscription) {
    for (const std::string& url : {settings().ordinals_content_base + "/content/" + outpoint,
                                   settings().ordinals_api_base + "/files/inscriptions/" + outpoint}) {
        std::string body;
        if (!fetch(url, CONTENT_TIMEOUT_S, body) || body.empty() || is_error_object(body)) continue;
        inscription.body.assign(body.begin(), body.end());
        inscription.content_type = sniff_content_type(inscription.body);
        return true;
    }
    return false;
}

// Only JSON and text carry a name; the bytes of a small picture are none.
std::string inscribed_name(const Inscription& inscription) {
    const std::string type = ascii_lower(inscription.content_type);
    const bool readable = type.starts_with("text/") || contains(type, "json") || contains(type, "bsv-20") ||
                          contains(type, "bsv20");
    return readable ? name_from_body(body_text(inscription.body)) : "";
}

}  // namespace

std::string sniff_content_type(const Bytes& bytes) {
    const auto byte_is = [&](std::size_t at, int value) { return bytes[at] == value; };
    if (bytes.size() >= 8 && byte_is(0, 0x89) && byte_is(1, 'P')) return "image/png";
    if (bytes.size() >= 3 && byte_is(0, 0xFF) && byte_is(1, 0xD8)) return "image/jpeg";
    // What stands at byte 8 is not asked for: every container that begins so is taken for a picture.
    if (bytes.size() >= 4 && byte_is(0, 'R') && byte_is(1, 'I')) return "image/webp";
    if (bytes.size() >= 4 && byte_is(0, 'G') && byte_is(1, 'I')) return "image/gif";
    return "application/octet-stream";
}

bool qv_clasp_inscription_bytes(const std::string& origin, std::string& type_out, Bytes& bytes_out,
                                bool network) {
    WalletLock lock = qv_clasp_lock_wallet();
    if (qv_clasp_cache_get(origin, type_out, bytes_out)) return true;
    std::string txid;
    std::uint32_t vout = 0;
    if (!network || !parse_outpoint(origin, txid, vout)) return false;
    lock.unlock();

    Inscription inscription;
    const bool on_chain = from_chain(txid, vout, inscription);
    if (!on_chain && !from_indexer(outpoint_text(txid, vout), inscription)) return false;

    lock.lock();
    qv_clasp_cache_put(origin, inscription.content_type, inscription.body);
    if (on_chain) qv_clasp_name_put(origin, inscribed_name(inscription));
    type_out = std::move(inscription.content_type);
    bytes_out = std::move(inscription.body);
    return true;
}
