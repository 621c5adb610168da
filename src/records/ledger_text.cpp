#include "records/ledger_text.h"

#include <cstring>
#include <string>

#include "base/json_file.h"

namespace {

constexpr std::string_view ROW_END = "\n    }";
constexpr std::size_t MOST_DIGITS = 18;  // of a number that surely fits

constexpr std::uint64_t each_byte(std::uint64_t byte) {
    return 0x0101010101010101U * byte;
}

// The high bit of a byte is set where the byte is 0; bits above the lowest one set may be wrong.
constexpr std::uint64_t zero_bytes(std::uint64_t word) {
    return (word - each_byte(1)) & ~word & each_byte(0x80);
}

// False for a quote, a backslash, a control character and what is not ASCII.
bool is_plain_byte(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x20 && byte < 0x80 && c != '"' && c != '\\';
}

// All eight characters are plain.
bool are_plain_bytes(const char* at) {
    std::uint64_t word = 0;
    std::memcpy(&word, at, sizeof word);
    const std::uint64_t below_blank = (word - each_byte(0x20)) & ~word & each_byte(0x80);
    return ((word & each_byte(0x80)) | below_blank | zero_bytes(word ^ each_byte('"')) |
            zero_bytes(word ^ each_byte('\\'))) == 0;
}

class Cursor {
 public:
    explicit Cursor(std::string_view text) : text_(text) {}

    std::string_view rest() const { return text_.substr(at_); }
    std::size_t place() const { return at_; }
    void skip(std::size_t count) { at_ += count; }
    bool take(std::string_view expected) {
        if (!rest().starts_with(expected)) return false;
        at_ += expected.size();
        return true;
    }
    // The characters before the next one that is not plain.
    std::string_view take_plain() {
        const std::size_t begin = at_;
        while (text_.size() - at_ >= 8 && are_plain_bytes(text_.data() + at_)) at_ += 8;
        while (at_ < text_.size() && is_plain_byte(text_[at_])) ++at_;
        return text_.substr(begin, at_ - begin);
    }
    // A whole number as JSON writes it, of a length that cannot overflow.
    bool take_number(std::int64_t& number) {
        const bool negative = take("-");
        const std::size_t begin = at_;
        number = 0;
        while (at_ < text_.size() && text_[at_] >= '0' && text_[at_] <= '9') {
            if (at_ - begin == MOST_DIGITS) return false;
            number = number * 10 + (text_[at_++] - '0');
        }
        const std::size_t digits = at_ - begin;
        if (digits == 0) return false;
        if (text_[begin] == '0' && (digits > 1 || negative)) return false;
        if (negative) number = -number;
        return true;
    }

 private:
    std::string_view text_;
    std::size_t at_ = 0;
};

bool take_text(Cursor& cursor, std::string_view key_part, std::string_view& value) {
    if (!cursor.take(key_part)) return false;
    value = cursor.take_plain();
    return cursor.take("\"");
}

bool take_plain_row(Cursor& cursor, LedgerRowText& row) {
    return take_text(cursor, "\n    {\n      \"dest\": \"", row.dest) &&
           take_text(cursor, ",\n      \"kind\": \"", row.kind) &&
           take_text(cursor, ",\n      \"name\": \"", row.name) && cursor.take(",\n      \"sats\": ") &&
           cursor.take_number(row.sats) && take_text(cursor, ",\n      \"token_id\": \"", row.token_id) &&
           take_text(cursor, ",\n      \"token_name\": \"", row.token_name) &&
           take_text(cursor, ",\n      \"txid\": \"", row.txid) && cursor.take(",\n      \"unix\": ") &&
           cursor.take_number(row.unix) && cursor.take(ROW_END);
}

// A row of any other kind counts if parsing and writing it gives the same bytes.
bool take_other_row(Cursor& cursor) {
    const std::string_view rest = cursor.rest();
    const std::size_t end = rest.find(ROW_END);
    if (end == std::string_view::npos) return false;
    const std::string_view row = rest.substr(0, end + ROW_END.size());
    const std::string alone = std::string(LEDGER_START).append(row).append(LEDGER_END);
    Json document;
    if (!parse_json(alone, document) || dump_json(document, 2) != alone) return false;
    const Json& entries = json_member(document, "entries");
    if (entries.size() != 1 || !entries.front().is_object()) return false;
    cursor.skip(row.size());
    return true;
}

}  // namespace

bool walk_ledger_text(std::string_view text, const std::function<void(const LedgerRowText&)>& take) {
    Cursor cursor(text);
    if (!cursor.take(LEDGER_START)) return false;
    do {
        LedgerRowText row;
        const Cursor begin = cursor;
        row.plain = take_plain_row(cursor, row);
        if (!row.plain) {
            cursor = begin;
            row = {};
            if (!take_other_row(cursor)) return false;
        }
        row.text = begin.rest().substr(0, cursor.place() - begin.place());
        take(row);
    } while (cursor.take(","));
    return cursor.rest() == LEDGER_END;
}
