#include "records/payout_csv.h"

#include <cstdio>
#include <ctime>

#include "base/amounts.h"
#include "base/json_file.h"
#include "platform/local_time.h"

namespace {

constexpr const char* BYTE_ORDER_MARK = "\xef\xbb\xbf";
constexpr const char* HEADER = "When,Who,Amount BSV,Amount sats,Pay to,Tx,Token,Kind\r\n";

std::string csv_field(const std::string& text) {
    if (text.find_first_of("\",\r\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + "\"";
}

std::string csv_line(const PayoutRow& row, const TokenNames& tokens) {
    return csv_field(payout_time_text(row.unix)) + "," + csv_field(row.name) + "," + format_bsv(row.sats) +
           "," + std::to_string(row.sats) + "," + csv_field(row.dest) + "," + csv_field(row.txid) + "," +
           csv_field(token_label(row.token_id, row.token_name, tokens)) + "," + csv_field(payout_kind(row)) +
           "\r\n";
}

}  // namespace

std::string payout_csv_name(std::int64_t now) {
    std::tm local{};
    local_time(now, local);
    char name[80];
    std::snprintf(name, sizeof name, "bursaria-payouts-%04u-%02u-%02u.csv",
                  static_cast<unsigned>(local.tm_year + 1900), static_cast<unsigned>(local.tm_mon + 1),
                  static_cast<unsigned>(local.tm_mday));
    return name;
}

std::string export_question(std::size_t rows) {
    return "Export " + std::to_string(rows) + (rows == 1 ? " payout row" : " payout rows") +
           " currently listed (this token / range) to a CSV file?\n\nThis is the local payout log, not a "
           "chain oracle.";
}

std::string exported_text(std::size_t rows) {
    return "Saved " + std::to_string(rows) + " rows.";
}

std::string payout_csv(const std::vector<PayoutRow>& rows, const TokenNames& tokens) {
    std::string file = std::string(BYTE_ORDER_MARK) + HEADER;
    for (const PayoutRow& row : rows) file += csv_line(row, tokens);
    return file;
}

bool write_payout_csv(const std::string& path, const std::vector<PayoutRow>& rows, const TokenNames& tokens,
                      std::string& text_out) {
    const bool written = write_text_file(path, payout_csv(rows, tokens));
    text_out = written ? exported_text(rows.size()) : EXPORT_NOT_WRITTEN;
    return written;
}
