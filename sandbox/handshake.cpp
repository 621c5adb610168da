// The wallet program's side of the connect: reply files beside the request files.
#include <filesystem>

#include "sandbox/world.h"

namespace sandbox {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view REQUEST_END = ".req.json";

std::string utf8_text(const fs::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

// The ids of all request files, whether answered or not.
std::vector<std::string> request_ids(const std::string& folder) {
    std::vector<std::string> ids;
    std::error_code error;
    for (fs::directory_iterator entry(utf8_path(folder), error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = utf8_text(entry->path().filename());
        if (name.ends_with(REQUEST_END)) ids.push_back(name.substr(0, name.size() - REQUEST_END.size()));
    }
    return ids;
}

// The writer of a request does not write it in one step: one that does not read as a whole is left for the
// next look.
bool is_whole_request(const std::string& path, const std::string& id) {
    Json request;
    return read_json_file(path, request) && json_text(request, "id") == id &&
           json_member(request, "app").is_string() && json_member(request, "instance").is_string() &&
           json_member(request, "ts").is_number_integer();
}

// In one step, since the reader looks at the file the moment it exists.
bool write_reply(const std::string& path, const std::string& wallet_id) {
    Json reply{{"ok", !wallet_id.empty()}};
    if (!wallet_id.empty()) reply["wallet_id"] = wallet_id;
    const std::string temporary = path + ".tmp";
    if (!write_text_file(temporary, dump_json(reply, 2))) return false;
    std::error_code error;
    fs::rename(utf8_path(temporary), utf8_path(path), error);
    return !error;
}

}  // namespace

int answer_connects(const std::string& family_folder, const std::string& wallet_id) {
    const std::string folder = family_folder + "/connect";
    int answered = 0;
    for (const std::string& id : request_ids(folder)) {
        const std::string base = folder + "/" + id;
        if (file_exists(base + ".rep.json")) continue;
        if (!is_whole_request(base + std::string(REQUEST_END), id)) continue;
        if (write_reply(base + ".rep.json", wallet_id)) ++answered;
    }
    return answered;
}

}  // namespace sandbox
