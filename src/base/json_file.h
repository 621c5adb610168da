// JSON without exceptions, and whole files. A document from a file or a service may hold any type under any
// key, so it is read through these functions only. Paths are UTF-8. Thread-safe; nothing is cached.
#pragma once

#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

using Json = nlohmann::json;

// The path of a UTF-8 text, on every system.
std::filesystem::path utf8_path(std::string_view text);
bool file_exists(const std::string& path);
// Creates the folder and its parents; errors are ignored.
void make_folder(const std::string& path);
void remove_file(const std::string& path);

// The whole file as bytes. False, with `content` empty, if it cannot be opened or read.
bool read_text_file(const std::string& path, std::string& content);
// Replaces the file's content in place; false if it cannot be opened or the stream fails. The end of the
// program at any moment leaves the old text or the new one, which may have blanks behind it, unless the
// system itself tears the write.
bool write_text_file(const std::string& path, std::string_view content);

// The document of a text; false, with `document` null, if it does not parse. Nesting beyond 512 levels counts
// as text that does not parse.
bool parse_json(std::string_view text, Json& document);
// Reads and parses; false if either fails.
bool read_json_file(const std::string& path, Json& document);

// The text of a document, with object keys sorted. An indent of -1 gives one line. Text that is not valid
// UTF-8 is written with replacement characters; nothing throws.
std::string dump_json(const Json& document, int indent);

// The member `key` of an object; null for anything else.
const Json& json_member(const Json& object, std::string_view key);
// The string under `key`, or the fallback where there is none or it has another type.
std::string json_text(const Json& object, std::string_view key, std::string_view fallback = "");
bool json_bool(const Json& object, std::string_view key, bool fallback = false);
// The integer under `key`; the fallback for another type and for an unsigned number above the signed range.
std::int64_t json_int(const Json& object, std::string_view key, std::int64_t fallback = 0);
// A JSON number as a signed count: an integer as it stands (one beyond the signed range is no count), a float
// cut to a whole number if it fits. False for every other type.
bool json_whole(const Json& value, std::int64_t& count);
