#include "spend/art_tags.h"

#include <openssl/evp.h>

#include <limits>
#include <memory>

#include "base/hex.h"
#include "base/json_file.h"
#include "base/ranked_mutex.h"
#include "base/text.h"
#include "wallet/data_root.h"
#include "wallet/hashes.h"

namespace {

constexpr std::size_t TXID_LENGTH = 64;
constexpr std::string_view SEALED_TAG_LABEL = "QV-Ink-Key-v7";
constexpr std::size_t NONCE_SIZE = 12;
constexpr std::size_t GCM_TAG_SIZE = 16;

RankedMutex<LockRank::Leaf>& tags_mutex() {
    static RankedMutex<LockRank::Leaf> mutex;
    return mutex;
}

std::string tags_path() {
    const std::string folder = qv_data_root() + "/art";
    make_folder(folder);
    return folder + "/tags.json";
}

// A missing or bad file counts as an empty table.
Json read_tags(const std::string& path) {
    Json tags;
    if (!read_json_file(path, tags) || !tags.is_object()) return Json::object();
    return tags;
}

struct FreeCipher {
    void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
};

}  // namespace

std::string qv_clasp_art_tag_key(std::string_view outpoint) {
    std::string key = ascii_lower(outpoint);
    if (key.size() == TXID_LENGTH) return key + "_0";
    if (key.size() >= TXID_LENGTH + 2 && key[TXID_LENGTH] == '_') return key;
    return "";
}

void qv_clasp_art_tag_set(const std::string& outpoint, const std::string& tag) {
    const std::string key = qv_clasp_art_tag_key(outpoint);
    if (key.empty() || tag.empty()) return;
    const std::lock_guard lock(tags_mutex());
    const std::string path = tags_path();
    Json tags = read_tags(path);
    tags[key] = tag;
    write_text_file(path, dump_json(tags, 2));
}

std::string qv_clasp_art_tag_get(const std::string& outpoint) {
    const std::string key = qv_clasp_art_tag_key(outpoint);
    if (key.empty()) return "";
    const std::lock_guard lock(tags_mutex());
    return json_text(read_tags(tags_path()), key);
}

std::unordered_map<std::string, std::string> qv_clasp_art_tags() {
    std::unordered_map<std::string, std::string> tags;
    const std::lock_guard lock(tags_mutex());
    const Json document = read_tags(tags_path());
    for (const auto& [key, tag] : document.items())
        if (tag.is_string()) tags.emplace(key, tag.get_ref<const std::string&>());
    return tags;
}

std::string qv_clasp_open_art_tag(std::string_view hex_blob) {
    Bytes blob = qv_clasp_hex_decode(hex_blob);
    if (blob.size() < NONCE_SIZE + GCM_TAG_SIZE || blob.size() > std::numeric_limits<int>::max()) return "";
    const std::uint8_t* nonce = blob.data();
    std::uint8_t* tag = blob.data() + NONCE_SIZE;
    const std::uint8_t* sealed = tag + GCM_TAG_SIZE;
    const std::size_t sealed_size = blob.size() - NONCE_SIZE - GCM_TAG_SIZE;
    const Hash256 key =
        sha256(reinterpret_cast<const std::uint8_t*>(SEALED_TAG_LABEL.data()), SEALED_TAG_LABEL.size());

    const std::unique_ptr<EVP_CIPHER_CTX, FreeCipher> context(EVP_CIPHER_CTX_new());
    Bytes opened(sealed_size + GCM_TAG_SIZE);
    int opened_size = 0;
    int last_size = 0;
    const bool good = context &&
                      EVP_DecryptInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, key.data(), nonce) == 1 &&
                      EVP_DecryptUpdate(context.get(), opened.data(), &opened_size, sealed,
                                        static_cast<int>(sealed_size)) == 1 &&
                      EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_SET_TAG, GCM_TAG_SIZE, tag) == 1 &&
                      EVP_DecryptFinal_ex(context.get(), opened.data() + opened_size, &last_size) == 1;
    if (!good) return "";
    return {reinterpret_cast<const char*>(opened.data()), static_cast<std::size_t>(opened_size + last_size)};
}
