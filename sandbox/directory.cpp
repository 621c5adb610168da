// The directory of paymail names, and the check of a signed claim.
#include <openssl/evp.h>

#include <algorithm>

#include "base/hex.h"
#include "base/text.h"
#include "sandbox/world.h"

namespace sandbox {

namespace {

// What a claim's body says, after the check that every field has its form.
struct ClaimFields {
    Paymail row;
    std::string bn_pub;
    std::int64_t ts = 0;
    Bytes signature;
};

// 64 bytes as standard Base64 with padding, and in no other spelling; empty for anything else.
Bytes decode_signature(const std::string& text) {
    constexpr std::size_t TEXT_SIZE = 88;
    if (text.size() != TEXT_SIZE) return {};
    Bytes bytes(TEXT_SIZE / 4 * 3);
    const auto* in = reinterpret_cast<const unsigned char*>(text.data());
    if (EVP_DecodeBlock(bytes.data(), in, static_cast<int>(text.size())) < 0) return {};
    bytes.resize(64);
    std::string again(TEXT_SIZE + 1, '\0');
    EVP_EncodeBlock(reinterpret_cast<unsigned char*>(again.data()), bytes.data(),
                    static_cast<int>(bytes.size()));
    again.resize(TEXT_SIZE);
    return again == text ? bytes : Bytes{};
}

bool is_alias(const std::string& alias) {
    return !alias.empty() && std::all_of(alias.begin(), alias.end(), [](char c) {
        return is_ascii_digit(c) || (c >= 'a' && c <= 'z') || c == '-' || c == '.' || c == '_';
    });
}

bool is_pub(const std::string& pub) {
    return pub.size() == 66 && ascii_lower(pub) == pub && is_public_key(qv_clasp_hex_decode(pub));
}

bool is_address(const std::string& address) {
    Hash160 ignored{};
    return hash160_of_address(address, ignored);
}

// A key that may be left out, but stands for something where it is present.
bool absent_or(bool (*test)(const std::string&), const Json& body, const char* key) {
    return !body.contains(key) || test(json_text(body, key));
}

std::string read_claim(const Json& body, ClaimFields& claim) {
    if (!body.is_object()) return "claim is not an object";
    for (const char* key : {"alias", "pubkey", "address", "avatar", "sig"}) {
        if (!json_member(body, key).is_string()) return std::string("claim has no text ") + key;
    }
    if (!json_member(body, "ts").is_number_integer() || json_int(body, "ts") <= 0) return "bad timestamp";
    claim.row = {json_text(body, "alias"),      json_text(body, "pubkey"),    json_text(body, "address"),
                 json_text(body, "ordAddress"), json_text(body, "bnAddress"), json_text(body, "avatar")};
    claim.bn_pub = json_text(body, "bnPub");
    claim.ts = json_int(body, "ts");
    claim.signature = decode_signature(json_text(body, "sig"));
    if (!is_alias(claim.row.alias)) return "bad alias";
    if (!is_pub(claim.row.pubkey)) return "bad pubkey";
    if (!is_address(claim.row.address)) return "bad address";
    if (!absent_or(is_address, body, "ordAddress")) return "bad ordAddress";
    if (!absent_or(is_address, body, "bnAddress")) return "bad bnAddress";
    if (!absent_or(is_pub, body, "bnPub")) return "bad bnPub";
    if (body.contains("bnPub") != body.contains("bnAddress")) return "bnPub without bnAddress";
    if (claim.signature.empty()) return "bad signature form";
    return "";
}

std::string claim_message(const ClaimFields& claim) {
    const Paymail& row = claim.row;
    std::string text =
        "QV-PAYMAIL-CLAIM|" + row.alias + "|" + row.pubkey + "|" + row.address + "|" + row.avatar + "|";
    if (!claim.bn_pub.empty()) {
        text += row.ord_address + "|" + claim.bn_pub + "|" + row.bn_address + "|";
    } else if (!row.ord_address.empty()) {
        text += row.ord_address + "|";
    }
    return text + std::to_string(claim.ts);
}

std::string check_proof(const ClaimFields& claim) {
    if (!claim.bn_pub.empty() &&
        address_of(hash160_of(qv_clasp_hex_decode(claim.bn_pub))) != claim.row.bn_address) {
        return "bnAddress is not that of bnPub";
    }
    const Hash256 digest = message_digest(claim_message(claim));
    const bool good = verify_compact(qv_clasp_hex_decode(claim.row.pubkey), digest, claim.signature);
    return good ? "" : "bad signature";
}

// The addresses of a row, each with its kind. Under one text the first kind stands.
std::vector<std::pair<std::string, std::string>> addresses_of(const Paymail& row) {
    std::vector<std::pair<std::string, std::string>> addresses;
    if (!row.address.empty()) addresses.emplace_back(row.address, "payment");
    if (!row.ord_address.empty()) addresses.emplace_back(row.ord_address, "ordinal");
    if (!row.bn_address.empty()) addresses.emplace_back(row.bn_address, "bn");
    return addresses;
}

// Rows without a name have a key that no name can be.
std::string key_of(const Paymail& row) {
    return row.alias.empty() ? "@" + row.ord_address : row.alias;
}

}  // namespace

void Directory::put(const Paymail& row) {
    const std::lock_guard lock(mutex_);
    store(row);
}

void Directory::store(const Paymail& row) {
    const std::string key = key_of(row);
    const auto old = rows_.find(key);
    if (old != rows_.end()) {
        std::erase_if(by_address_, [&](const auto& entry) { return entry.second.first == key; });
    }
    rows_[key] = row;
    for (const auto& [address, kind] : addresses_of(row)) by_address_.try_emplace(address, key, kind);
}

bool Directory::by_alias(const std::string& alias, Paymail& row) const {
    const std::lock_guard lock(mutex_);
    const auto found = rows_.find(alias);
    if (found == rows_.end() || found->second.alias.empty()) return false;
    row = found->second;
    return true;
}

bool Directory::by_address(const std::string& address, Paymail& row, std::string& kind) const {
    const std::lock_guard lock(mutex_);
    const auto found = by_address_.find(address);
    if (found == by_address_.end()) return false;
    row = rows_.at(found->second.first);
    kind = found->second.second;
    if (row.pays_by_name_only) row.address.clear();
    return true;
}

void Directory::set_role(const std::string& pubkey, const std::string& role) {
    const std::lock_guard lock(mutex_);
    roles_[pubkey] = role;
}

std::string Directory::role(const std::string& pubkey) const {
    const std::lock_guard lock(mutex_);
    const auto found = roles_.find(pubkey);
    return found == roles_.end() ? "" : found->second;
}

std::string Directory::claim(const Json& body) {
    ClaimFields claim;
    std::string fault = read_claim(body, claim);
    if (fault.empty()) fault = check_proof(claim);
    if (!fault.empty()) return fault;
    const std::lock_guard lock(mutex_);
    const auto held = rows_.find(claim.row.alias);
    if (held != rows_.end() && held->second.pubkey != claim.row.pubkey) {
        return claim.row.alias + " is already taken";
    }
    store(claim.row);
    ++claims_;
    return "";
}

std::size_t Directory::claims() const {
    const std::lock_guard lock(mutex_);
    return claims_;
}

}  // namespace sandbox
