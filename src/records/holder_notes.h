// Short notes on the holders of a token, in a file of the bound wallet. A note hangs on the holder's key, so
// that it follows the holder from one snapshot to the next. Each call reads the file anew; a file that is
// missing or broken is empty, a write that fails is dropped. Window's thread only.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "base/json_file.h"

// The longest note, in bytes.
inline constexpr std::size_t MOST_NOTE_BYTES = 400;
// What the board shows behind the name of a holder with a note.
inline constexpr const char* NOTE_MARK = "  \u00c2\u00b7 note";
inline constexpr const char* NO_NOTE_HANDLE = "No handle to attach a note to.";

// What a note on a board row hangs on: the identity key, else the name, else the address; empty if the row
// has none of them.
std::string note_key(const std::string& pubkey, const std::string& who, const std::string& dest);

// The document if it is an object, otherwise an empty object.
Json read_notes();
// The note under the exact pair; empty if there is none.
std::string find_note(const Json& document, const std::string& token_id, const std::string& key);
// The notes on one token by key, as find_note gives them; those that are not empty.
std::unordered_map<std::string, std::string> notes_on(const Json& document, const std::string& token_id);

// Without blanks and control characters at both ends, cut to MOST_NOTE_BYTES, also inside a character.
std::string normalise_note(std::string_view text);
// Replaces the note of the pair; an empty one deletes it. Keeps whatever else the document holds. Does
// nothing without a token or a key.
void write_note(const std::string& token_id, const std::string& key, const std::string& name,
                const std::string& lots, const std::string& note);

// The heading of the note window.
std::string note_heading(const std::string& name, const std::string& lots, bool excluded);
// "Note saved for NAME." or, if the note normalises to nothing, "Note cleared for NAME."
std::string note_written_text(const std::string& name, std::string_view note);
