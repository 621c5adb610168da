#include "base/json_file.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <system_error>

namespace {

constexpr int DEEPEST_NESTING = 512;
constexpr std::uintmax_t LARGEST_RESERVED_FILE = 256U << 20U;

// Counts the nesting of a document before it is built: a deep one would take the stack of whoever walks it
// later.
bool nests_too_deep(std::string_view text) {
    int depth = 0;
    bool in_string = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (in_string) {
            if (c == '\\')
                ++at;
            else if (c == '"')
                in_string = false;
        } else if (c == '"') {
            in_string = true;
        } else if (c == '[' || c == '{') {
            if (++depth > DEEPEST_NESTING) return true;
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
    return false;
}

bool write_anew(const std::string& path, std::string_view content) {
    std::ofstream file(utf8_path(path), std::ios::binary | std::ios::trunc);
    if (!file) return false;
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    return !file.fail();
}

// Writes over the old content in one piece, with blanks over what is left of a longer one, and cuts the
// blanks off: a program that ends in between leaves one JSON document or the other, never an empty file.
bool write_over(const std::string& path, std::string_view content, std::uintmax_t old_size) {
    std::fstream file(utf8_path(path), std::ios::binary | std::ios::in | std::ios::out);
    if (!file) return false;
    std::string padded;
    std::string_view piece = content;
    if (old_size > content.size()) {
        padded = content;
        padded.resize(static_cast<std::size_t>(old_size), ' ');
        piece = padded;
    }
    file.write(piece.data(), static_cast<std::streamsize>(piece.size()));
    file.close();
    if (file.fail()) return false;
    std::error_code error;
    std::filesystem::resize_file(utf8_path(path), content.size(), error);
    return !error;
}

}  // namespace

std::filesystem::path utf8_path(std::string_view text) {
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

bool file_exists(const std::string& path) {
    std::error_code error;
    return std::filesystem::exists(utf8_path(path), error) && !error;
}

void make_folder(const std::string& path) {
    std::error_code error;
    std::filesystem::create_directories(utf8_path(path), error);
}

void remove_file(const std::string& path) {
    std::error_code error;
    std::filesystem::remove(utf8_path(path), error);
}

bool read_text_file(const std::string& path, std::string& content) {
    content.clear();
    std::error_code error;
    if (std::filesystem::is_directory(utf8_path(path), error)) return false;
    std::ifstream file(utf8_path(path), std::ios::binary);
    if (!file) return false;
    // A text that grows on the way is copied over and over. What has no size, or an absurd one, may do so.
    const std::uintmax_t size = std::filesystem::file_size(utf8_path(path), error);
    if (!error && size <= LARGEST_RESERVED_FILE) content.reserve(static_cast<std::size_t>(size));
    char block[65536];
    while (file.read(block, sizeof block) || file.gcount() > 0) {
        content.append(block, static_cast<std::size_t>(file.gcount()));
    }
    if (file.bad()) content.clear();
    return !file.bad();
}

bool write_text_file(const std::string& path, std::string_view content) {
    std::error_code error;
    const std::uintmax_t old_size = std::filesystem::file_size(utf8_path(path), error);
    const bool is_new = error || old_size == 0;
    return (!is_new && write_over(path, content, old_size)) || write_anew(path, content);
}

bool parse_json(std::string_view text, Json& document) {
    document = nullptr;
    const bool may_be_deep = text.size() > std::size_t{DEEPEST_NESTING};
    if (may_be_deep && nests_too_deep(text)) return false;
    Json parsed = Json::parse(text.begin(), text.end(), nullptr, false);
    if (parsed.is_discarded()) return false;
    document = std::move(parsed);
    return true;
}

bool read_json_file(const std::string& path, Json& document) {
    document = nullptr;
    std::string content;
    return read_text_file(path, content) && parse_json(content, document);
}

std::string dump_json(const Json& document, int indent) {
    return document.dump(indent, ' ', false, Json::error_handler_t::replace);
}

const Json& json_member(const Json& object, std::string_view key) {
    static const Json NOTHING;
    if (!object.is_object()) return NOTHING;
    const auto found = object.find(key);
    return found == object.end() ? NOTHING : *found;
}

std::string json_text(const Json& object, std::string_view key, std::string_view fallback) {
    const Json& value = json_member(object, key);
    return value.is_string() ? value.get_ref<const std::string&>() : std::string(fallback);
}

bool json_bool(const Json& object, std::string_view key, bool fallback) {
    const Json& value = json_member(object, key);
    return value.is_boolean() ? value.get<bool>() : fallback;
}

std::int64_t json_int(const Json& object, std::string_view key, std::int64_t fallback) {
    const Json& value = json_member(object, key);
    std::int64_t count = 0;
    return value.is_number_integer() && json_whole(value, count) ? count : fallback;
}

bool json_whole(const Json& value, std::int64_t& count) {
    if (value.is_number_unsigned()) {
        const auto number = value.get<std::uint64_t>();
        if (number > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) return false;
        count = static_cast<std::int64_t>(number);
        return true;
    }
    if (value.is_number_integer()) {
        count = value.get<std::int64_t>();
        return true;
    }
    if (!value.is_number_float()) return false;
    const double number = std::trunc(value.get<double>());
    // The bounds are powers of two, so that they are exact as floating numbers.
    if (!(number >= -9223372036854775808.0 && number < 9223372036854775808.0)) return false;
    count = static_cast<std::int64_t>(number);
    return true;
}
