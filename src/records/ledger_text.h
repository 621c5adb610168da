// The text of a payout ledger in the form in which this program writes it, walked without building a
// document: a ledger grows by a row a payment, and whoever reads or extends it would otherwise parse years of
// them. Pure; any thread.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

// One row. The views lie in the text that was walked.
struct LedgerRowText {
    std::string_view text;  // from the line feed before the row to its last brace
    // The row has the program's own keys and nothing that JSON escapes; only then is anything below set.
    bool plain = false;
    std::string_view dest;
    std::string_view kind;
    std::string_view name;
    std::string_view token_id;
    std::string_view token_name;
    std::string_view txid;
    std::int64_t sats = 0;
    std::int64_t unix = 0;
};

inline constexpr std::string_view LEDGER_START = "{\n  \"entries\": [";
inline constexpr std::string_view LEDGER_END = "\n  ]\n}";

// Hands over every row of a text that is, to the byte, what dump_json(.., 2) makes of an object of nothing
// but `entries`, a list of one or more objects. False for any other text; rows before the place where it
// differs may have been handed over by then.
bool walk_ledger_text(std::string_view text, const std::function<void(const LedgerRowText&)>& take);
