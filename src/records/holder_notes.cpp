#include "records/holder_notes.h"

#include <algorithm>

#include "records/record_files.h"

namespace {

// Two characters where one was meant; holders' names have always been shown so.
constexpr const char* HEADING_SEPARATOR = "  \u00c2\u00b7  ";

bool is_note_on(const Json& entry, const std::string& token_id, const std::string& key) {
    return json_text(entry, "token_id") == token_id && json_text(entry, "key") == key;
}

// The entries but those of the pair, and but what is no entry.
Json other_notes(const Json& document, const std::string& token_id, const std::string& key) {
    Json entries = Json::array();
    const Json& old_entries = json_member(document, "entries");
    if (!old_entries.is_array()) return entries;
    for (const Json& entry : old_entries) {
        if (entry.is_object() && !is_note_on(entry, token_id, key)) entries.push_back(entry);
    }
    return entries;
}

}  // namespace

std::string note_key(const std::string& pubkey, const std::string& who, const std::string& dest) {
    if (!pubkey.empty()) return "p:" + pubkey;
    if (!who.empty()) return "n:" + who;
    return dest.empty() ? "" : "a:" + dest;
}

Json read_notes() {
    Json document;
    read_json_file(notes_file_path(), document);
    return document.is_object() ? document : Json::object();
}

std::string find_note(const Json& document, const std::string& token_id, const std::string& key) {
    if (token_id.empty() || key.empty()) return "";
    const Json& entries = json_member(document, "entries");
    if (!entries.is_array()) return "";
    for (const Json& entry : entries) {
        if (entry.is_object() && is_note_on(entry, token_id, key)) return json_text(entry, "note");
    }
    return "";
}

std::unordered_map<std::string, std::string> notes_on(const Json& document, const std::string& token_id) {
    std::unordered_map<std::string, std::string> notes;
    const Json& entries = json_member(document, "entries");
    if (token_id.empty() || !entries.is_array()) return notes;
    for (const Json& entry : entries) {
        if (entry.is_object() && json_text(entry, "token_id") == token_id)
            notes.emplace(json_text(entry, "key"), json_text(entry, "note"));
    }
    std::erase_if(notes, [](const auto& note) { return note.first.empty() || note.second.empty(); });
    return notes;
}

std::string normalise_note(std::string_view text) {
    const auto is_kept = [](char c) { return static_cast<unsigned char>(c) > 32; };
    const auto begin = std::find_if(text.begin(), text.end(), is_kept);
    const auto end = std::find_if(text.rbegin(), std::make_reverse_iterator(begin), is_kept).base();
    return std::string(begin, end).substr(0, MOST_NOTE_BYTES);
}

void write_note(const std::string& token_id, const std::string& key, const std::string& name,
                const std::string& lots, const std::string& note) {
    if (token_id.empty() || key.empty()) return;
    const std::string kept_note = normalise_note(note);
    Json document = read_notes();
    Json entries = other_notes(document, token_id, key);
    if (!kept_note.empty()) {
        entries.push_back(
            {{"token_id", token_id}, {"key", key}, {"name", name}, {"lots", lots}, {"note", kept_note}});
    }
    document["entries"] = std::move(entries);
    write_text_file(notes_file_path(), dump_json(document, 2));
}

std::string note_heading(const std::string& name, const std::string& lots, bool excluded) {
    return name + (lots.empty() ? "" : HEADING_SEPARATOR + lots + " lots") +
           (excluded ? std::string(HEADING_SEPARATOR) + "excluded" : "");
}

std::string note_written_text(const std::string& name, std::string_view note) {
    return (normalise_note(note).empty() ? "Note cleared for " : "Note saved for ") + name + ".";
}
