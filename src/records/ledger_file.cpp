#include "records/ledger_file.h"

#include <fstream>
#include <system_error>

#include "base/ranked_mutex.h"
#include "platform/file_lock.h"
#include "records/ledger_text.h"

namespace {

// A ledger that can be extended: a document of nothing but `entries`, with its last row as it stands in the
// text.
struct KnownLedger {
    RankedMutex<LockRank::Leaf> mutex;
    std::string path;  // empty if there is nothing to build on
    std::uintmax_t size = 0;
    std::filesystem::file_time_type time;
    std::string row;
};

// Never destroyed: a worker may still write when the process ends.
KnownLedger& known_ledger() {
    static auto& the_ledger = *new KnownLedger;
    return the_ledger;
}

// A row as it stands in the document, from the line feed before it to its last brace.
std::string row_text(const Json& row) {
    Json document = Json::object();
    document["entries"] = Json::array();
    document["entries"].push_back(row);
    const std::string text = dump_json(document, 2);
    return text.substr(LEDGER_START.size(), text.size() - LEDGER_START.size() - LEDGER_END.size());
}

// A size and a time that differ in nothing from what is known are taken for the same file.
bool is_untouched(const KnownLedger& known, const std::string& path) {
    std::error_code error;
    return known.path == path && std::filesystem::file_size(utf8_path(path), error) == known.size &&
           std::filesystem::last_write_time(utf8_path(path), error) == known.time && !error;
}

void remember(KnownLedger& known, const std::string& path, std::uintmax_t size, const std::string& row) {
    std::error_code error;
    known.size = size;
    known.time = std::filesystem::last_write_time(utf8_path(path), error);
    known.row = row;
    known.path = path;
    // Somebody else was there between the write and this look.
    if (error || !is_untouched(known, path)) known.path.clear();
}

// Two writes within one tick of the file's time differ at least in their last row.
bool ends_with(std::fstream& file, const KnownLedger& known, const std::string& end) {
    if (known.size < end.size()) return false;
    std::string found(end.size(), '\0');
    file.seekg(static_cast<std::streamoff>(known.size - end.size()));
    file.read(found.data(), static_cast<std::streamsize>(found.size()));
    return file.good() && found == end;
}

// Without the row, the ledger is as it was.
void take_back(const std::string& path, std::uintmax_t size) {
    std::error_code error;
    std::filesystem::resize_file(utf8_path(path), size - LEDGER_END.size(), error);
    std::ofstream(utf8_path(path), std::ios::binary | std::ios::app) << LEDGER_END;
}

// False, with nothing written, if the file is not the one that is known.
bool append_in_place(KnownLedger& known, const std::string& path, const std::string& row) {
    if (!is_untouched(known, path)) return false;
    std::fstream file(utf8_path(path), std::ios::binary | std::ios::in | std::ios::out);
    if (!ends_with(file, known, known.row + std::string(LEDGER_END))) return false;
    const std::uintmax_t begin = known.size - LEDGER_END.size();
    const std::string tail = "," + row + std::string(LEDGER_END);
    file.seekp(static_cast<std::streamoff>(begin));
    file.write(tail.data(), static_cast<std::streamsize>(tail.size()));
    file.close();
    if (file.fail()) {
        take_back(path, known.size);
        known.path.clear();
    } else {
        remember(known, path, begin + tail.size(), row);
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

// Looks through a ledger that somebody else has written; false if it has another form than this program gives
// it.
bool recognise(KnownLedger& known, const std::string& path) {
    std::error_code error;
    const auto time_before = std::filesystem::last_write_time(utf8_path(path), error);
    std::string text;
    std::string_view last_row;
    if (error || !read_text_file(path, text)) return false;
    if (!walk_ledger_text(text, [&](const LedgerRowText& row) { last_row = row.text; })) return false;
    remember(known, path, text.size(), std::string(last_row));
    return known.time == time_before;
}

void rewrite(KnownLedger& known, const std::string& path, const Json& row) {
    known.path.clear();
    Json ledger = read_ledger(path);
    ledger["entries"].push_back(row);
    const std::string text = dump_json(ledger, 2);
    if (write_text_file(path, text) && ledger.size() == 1) remember(known, path, text.size(), row_text(row));
}

}  // namespace

void append_ledger_row(const std::string& path, const Json& row) {
    KnownLedger& known = known_ledger();
    const std::lock_guard hold(known.mutex);
    // Two programs on one wallet must not write at once: the second would write behind what it has not seen.
    const FileLock only_writer(path + ".lock");
    const std::string text = row_text(row);
    if (append_in_place(known, path, text)) return;
    if (recognise(known, path) && append_in_place(known, path, text)) return;
    rewrite(known, path, row);
}
