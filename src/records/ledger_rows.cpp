#include "records/ledger_rows.h"

#include <limits>

#include "base/json_file.h"
#include "records/ledger_text.h"

namespace {

constexpr std::size_t DOCUMENT = 1;
constexpr std::size_t ENTRIES = 2;
constexpr std::size_t ENTRY = 3;
constexpr std::size_t DEEPEST_NESTING = 512;

std::string* text_field(PayoutEntry& entry, std::string_view key) {
    if (key == "token_id") return &entry.token_id;
    if (key == "token_name") return &entry.token_name;
    if (key == "name") return &entry.name;
    if (key == "dest") return &entry.dest;
    if (key == "txid") return &entry.txid;
    if (key == "kind") return &entry.kind;
    return nullptr;
}

std::int64_t* count_field(PayoutEntry& entry, std::string_view key) {
    if (key == "sats") return &entry.sats;
    if (key == "unix") return &entry.unix;
    return nullptr;
}

// Told of each value in the order of the text. `depth` counts what is open; an entry's own members stand at
// ENTRY. Of a key that comes twice, the last counts, as in a document.
class RowReader : public Json::json_sax_t {
 public:
    std::vector<PayoutEntry> rows;

    bool null() override { return other_value(); }
    bool boolean(bool) override { return other_value(); }
    bool number_float(double, const std::string&) override { return other_value(); }
    bool binary(Json::binary_t&) override { return other_value(); }
    bool number_integer(std::int64_t value) override {
        other_value();
        if (std::int64_t* field = count_target()) *field = value;
        return true;
    }
    bool number_unsigned(std::uint64_t value) override {
        other_value();
        std::int64_t* field = count_target();
        if (field != nullptr && value <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
            *field = static_cast<std::int64_t>(value);
        return true;
    }
    bool string(std::string& value) override {
        other_value();
        if (std::string* field = in_entry() ? text_field(rows.back(), key_) : nullptr) *field = value;
        return true;
    }
    bool key(std::string& name) override {
        if (depth_ == DOCUMENT) at_entries_ = name == "entries";
        if (in_entry()) key_ = name;
        return true;
    }
    bool start_object(std::size_t) override {
        other_value();
        in_object_[depth_ < ENTRY ? depth_ : ENTRY] = true;
        if (depth_ == ENTRIES && in_entries_) rows.emplace_back();
        return ++depth_ <= DEEPEST_NESTING;
    }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override {
        other_value();
        in_object_[depth_ < ENTRY ? depth_ : ENTRY] = false;
        if (depth_ == DOCUMENT) in_entries_ = in_object_[0] && at_entries_;
        return ++depth_ <= DEEPEST_NESTING;
    }
    bool end_array() override { return close(); }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override {
        return false;
    }

 private:
    bool in_entry() const { return depth_ == ENTRY && in_entries_ && in_object_[ENTRIES]; }
    std::int64_t* count_target() { return in_entry() ? count_field(rows.back(), key_) : nullptr; }

    // A value of another type than the field's leaves the field empty; a second `entries` replaces the first.
    bool other_value() {
        if (depth_ == DOCUMENT && in_object_[0] && at_entries_) rows.clear();
        if (!in_entry()) return true;
        if (std::string* field = text_field(rows.back(), key_)) field->clear();
        if (std::int64_t* field = count_field(rows.back(), key_)) *field = 0;
        return true;
    }
    bool close() {
        if (--depth_ == DOCUMENT) in_entries_ = false;
        return true;
    }

    std::size_t depth_ = 0;
    bool in_object_[ENTRY + 1] = {};  // whether what is open at a depth, counted from 0, is an object
    bool at_entries_ = false;
    bool in_entries_ = false;
    std::string key_;
};

std::vector<PayoutEntry> rows_of_any_text(std::string_view text) {
    RowReader reader;
    if (!Json::sax_parse(text.begin(), text.end(), &reader)) return {};
    return std::move(reader.rows);
}

PayoutEntry entry_of(const LedgerRowText& row) {
    if (!row.plain) {
        const std::string alone = std::string(LEDGER_START).append(row.text).append(LEDGER_END);
        return rows_of_any_text(alone).front();
    }
    return {.token_id = std::string(row.token_id),
            .token_name = std::string(row.token_name),
            .name = std::string(row.name),
            .dest = std::string(row.dest),
            .txid = std::string(row.txid),
            .kind = std::string(row.kind),
            .sats = row.sats,
            .unix = row.unix};
}

}  // namespace

std::vector<PayoutEntry> ledger_rows(std::string_view text) {
    std::vector<PayoutEntry> rows;
    if (walk_ledger_text(text, [&](const LedgerRowText& row) { rows.push_back(entry_of(row)); })) return rows;
    return rows_of_any_text(text);
}
