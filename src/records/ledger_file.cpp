#include "records/ledger_file.h"

#include <fstream>
#include <mutex>
#include <system_error>

namespace {

constexpr std::string_view DOCUMENT_START = "{\n  \"entries\": [";
constexpr std::string_view DOCUMENT_END = "\n  ]\n}";

// What was written last: a document of nothing but `entries`, with its last row as it stands in the text.
struct LastWrite {
    std::mutex mutex;
    std::string path;  // empty if there is nothing to build on
    std::uintmax_t size = 0;
    std::filesystem::file_time_type time;
    std::string row;
};

// Never destroyed: a worker may still write when the process ends.
LastWrite& last_write() {
    static auto& the_last = *new LastWrite;
    return the_last;
}

// A row as it stands in the document, from the line feed before it to its last brace.
std::string row_text(const Json& row) {
    Json document = Json::object();
    document["entries"] = Json::array();
    document["entries"].push_back(row);
    const std::string text = dump_json(document, 2);
    return text.substr(DOCUMENT_START.size(), text.size() - DOCUMENT_START.size() - DOCUMENT_END.size());
}

// A size and a time that differ in nothing from what was written are taken for the same file.
bool is_untouched(const LastWrite& last, const std::string& path) {
    std::error_code error;
    return last.path == path && std::filesystem::file_size(utf8_path(path), error) == last.size &&
           std::filesystem::last_write_time(utf8_path(path), error) == last.time && !error;
}

void remember(LastWrite& last, const std::string& path, std::uintmax_t size, const std::string& row) {
    std::error_code error;
    last.size = size;
    last.time = std::filesystem::last_write_time(utf8_path(path), error);
    last.row = row;
    last.path = path;
    // Somebody else was there between the write and this look.
    if (error || !is_untouched(last, path)) last.path.clear();
}

// Two writes within one tick of the file's time differ at least in their last row.
bool ends_with(std::fstream& file, const LastWrite& last, const std::string& end) {
    if (last.size < end.size()) return false;
    std::string found(end.size(), '\0');
    file.seekg(static_cast<std::streamoff>(last.size - end.size()));
    file.read(found.data(), static_cast<std::streamsize>(found.size()));
    return file.good() && found == end;
}

// Without the row, the ledger is as it was.
void take_back(const std::string& path, std::uintmax_t size) {
    std::error_code error;
    std::filesystem::resize_file(utf8_path(path), size - DOCUMENT_END.size(), error);
    std::ofstream(utf8_path(path), std::ios::binary | std::ios::app) << DOCUMENT_END;
}

// False, with nothing written, if the file is not the one that was written last.
bool append_in_place(LastWrite& last, const std::string& path, const std::string& row) {
    if (!is_untouched(last, path)) return false;
    std::fstream file(utf8_path(path), std::ios::binary | std::ios::in | std::ios::out);
    if (!ends_with(file, last, last.row + std::string(DOCUMENT_END))) return false;
    const std::uintmax_t begin = last.size - DOCUMENT_END.size();
    const std::string tail = "," + row + std::string(DOCUMENT_END);
    file.seekp(static_cast<std::streamoff>(begin));
    file.write(tail.data(), static_cast<std::streamsize>(tail.size()));
    file.close();
    if (file.fail()) {
        take_back(path, last.size);
        last.path.clear();
    } else {
        remember(last, path, begin + tail.size(), row);
    }
    return true;
}

Json read_ledger(const std::string& path) {
    Json ledger;
    read_json_file(path, ledger);
    if (!json_member(ledger, "entries").is_array()) {
        ledger = Json::object();
        ledger["entries"] = Json::array();
    }
    return ledger;
}

void rewrite(LastWrite& last, const std::string& path, const Json& row) {
    last.path.clear();
    Json ledger = read_ledger(path);
    ledger["entries"].push_back(row);
    const std::string text = dump_json(ledger, 2);
    if (write_text_file(path, text) && ledger.size() == 1) remember(last, path, text.size(), row_text(row));
}

}  // namespace

void append_ledger_row(const std::string& path, const Json& row) {
    LastWrite& last = last_write();
    const std::lock_guard<std::mutex> hold(last.mutex);
    if (!append_in_place(last, path, row_text(row))) rewrite(last, path, row);
}
