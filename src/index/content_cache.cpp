#include "index/content_cache.h"

#include <filesystem>
#include <system_error>

#include "base/json_file.h"
#include "base/ranked_mutex.h"
#include "index/inscription.h"
#include "platform/new_file.h"
#include "platform/user_data.h"
#include "wallet/data_root.h"

namespace {

constexpr const char* CACHE_FOLDER = "/ord_cache";
constexpr std::uintmax_t MOST_BODY_BYTES = 10'485'760;

// The sweep's pools read and write here at once.
RankedMutex<LockRank::Leaf> cache_mutex;

bool may_name_a_file(const std::string& origin) {
    std::string txid;
    std::uint32_t vout = 0;
    return parse_outpoint(origin, txid, vout);
}

// A walk over ten thousand outputs asks ten thousand times: the data root is made only when a write fails.
std::string stem_of(const std::string& origin) {
    return family_data_folder() + CACHE_FOLDER + "/" + origin;
}

std::string first_line(const std::string& text) {
    return text.substr(0, text.find_first_of("\r\n"));
}

bool read_body(const std::string& path, std::string& body) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(utf8_path(path), error);
    if (error || size < 1 || size > MOST_BODY_BYTES) return false;
    return read_text_file(path, body) && !body.empty() && body.size() <= MOST_BODY_BYTES;
}

// A walk meets the same output again and again: what stands there already is not written anew.
void write_if_different(const std::string& path, std::string_view content) {
    NewFile made = make_new_file(path, content);
    if (made == NewFile::Failed) {
        make_folder(qv_data_root() + CACHE_FOLDER);
        made = make_new_file(path, content);
    }
    if (made != NewFile::StoodThere) return;
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(utf8_path(path), error);
    std::string present;
    const bool same = !error && size == content.size() && read_text_file(path, present) && present == content;
    if (!same) write_text_file(path, content);
}

}  // namespace

void qv_clasp_cache_put(const std::string& origin, const std::string& type, const Bytes& bytes) {
    if (!may_name_a_file(origin) || bytes.empty() || bytes.size() > MOST_BODY_BYTES) return;
    const std::string stem = stem_of(origin);
    const std::string line = first_line(type);
    const std::lock_guard hold(cache_mutex);
    write_if_different(stem + ".bin", body_text(bytes));
    if (!line.empty()) write_if_different(stem + ".typ", line);
}

bool qv_clasp_cache_get(const std::string& origin, std::string& type_out, Bytes& bytes_out) {
    type_out.clear();
    bytes_out.clear();
    if (!may_name_a_file(origin)) return false;
    const std::string stem = stem_of(origin);
    std::string body;
    std::string type;
    {
        const std::lock_guard hold(cache_mutex);
        if (!read_body(stem + ".bin", body)) return false;
        read_text_file(stem + ".typ", type);
    }
    type_out = first_line(type);
    bytes_out.assign(body.begin(), body.end());
    return true;
}

void qv_clasp_name_put(const std::string& origin, const std::string& name) {
    const std::string line = clean_name(first_line(name));
    if (!may_name_a_file(origin) || line.empty()) return;
    const std::string path = stem_of(origin) + ".nam";
    const std::lock_guard hold(cache_mutex);
    write_if_different(path, line);
}

std::string qv_clasp_name_get(const std::string& origin) {
    if (!may_name_a_file(origin)) return "";
    const std::string path = stem_of(origin) + ".nam";
    std::string name;
    const std::lock_guard hold(cache_mutex);
    read_text_file(path, name);
    return clean_name(first_line(name));
}
