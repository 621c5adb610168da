// The export of the payouts that the history shows, and the texts around it. Pure, apart from the local time
// zone and write_payout_csv.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "records/payout_history.h"

inline constexpr const char* NOTHING_TO_EXPORT = "Nothing to export in the current view.";
inline constexpr const char* EXPORT_NOT_WRITTEN = "Could not write that file.";

// "bursaria-payouts-2026-01-31.csv", with the local date.
std::string payout_csv_name(std::int64_t now);
// The question before an export.
std::string export_question(std::size_t rows);
// "Saved 3 rows.", also for one row.
std::string exported_text(std::size_t rows);

// The whole file: UTF-8 with a byte order mark, lines ended by carriage return and line feed, fields quoted
// only where they hold a quote, a comma or a line break.
std::string payout_csv(const std::vector<PayoutRow>& rows, const TokenNames& tokens);
// Writes the file, in place of one that is there; the text to show the user. True if it was written.
bool write_payout_csv(const std::string& path, const std::vector<PayoutRow>& rows, const TokenNames& tokens,
                      std::string& text_out);
