// The export as a spreadsheet reads it: converted by LibreOffice, where it is installed, and compared cell by
// cell. Skipped, with a word, elsewhere.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "base/amounts.h"
#include "records/payout_csv.h"
#include "tests/support/test_home.h"

namespace {

using Cells = std::vector<std::vector<std::string>>;

// The text between `from` and the next `until`, and `at` moved behind it; empty with `at` at the end if there
// is none.
std::string cut(const std::string& text, std::size_t& at, const std::string& from, const std::string& until) {
    const std::size_t start = text.find(from, at);
    const std::size_t end = start == std::string::npos ? start : text.find(until, start + from.size());
    if (end == std::string::npos) {
        at = text.size();
        return "";
    }
    at = end + until.size();
    return text.substr(start + from.size(), end - start - from.size());
}

std::string plain_text(const std::string& xml) {
    static const std::vector<std::pair<std::string, std::string>> MARKS = {
        {"<text:s/>", " "}, {"<text:tab/>", "\t"}, {"<text:line-break/>", "\n"},
        {"&lt;", "<"},      {"&gt;", ">"},         {"&quot;", "\""},
        {"&apos;", "'"},    {"&amp;", "&"}};
    std::string text = xml;
    for (const auto& [mark, plain] : MARKS)
        for (std::size_t at = 0; (at = text.find(mark, at)) != std::string::npos; at += plain.size())
            text.replace(at, mark.size(), plain);
    return text;
}

// The paragraphs of a cell, a line each.
std::string cell_text(const std::string& cell) {
    std::string text;
    for (std::size_t at = 0; at < cell.size();) {
        const std::string paragraph = cut(cell, at, "<text:p>", "</text:p>");
        if (at == cell.size() && paragraph.empty()) break;
        text += (text.empty() ? "" : "\n") + plain_text(paragraph);
    }
    return text;
}

// The rows of the first table of a flat OpenDocument file.
Cells cells_of(const std::string& document) {
    Cells rows;
    for (std::size_t at = 0; at < document.size();) {
        const std::string row = cut(document, at, "<table:table-row", "</table:table-row>");
        if (row.empty()) break;
        std::vector<std::string> cells;
        for (std::size_t place = row.find("<table:table-cell"); place != std::string::npos;
             place = row.find("<table:table-cell", place)) {
            const std::size_t end = row.find('>', place);
            const bool is_empty = row[end - 1] == '/';
            const std::size_t close = is_empty ? end : row.find("</table:table-cell>", place);
            cells.push_back(is_empty ? "" : cell_text(row.substr(end + 1, close - end - 1)));
            place = close;
        }
        rows.push_back(cells);
    }
    return rows;
}

bool is_installed(const char* program) {
    return std::system((std::string("command -v ") + program + " >/dev/null 2>&1").c_str()) == 0;
}

// The sheet that LibreOffice makes of a file, with every column taken as text.
Cells opened_in_a_spreadsheet(const TestHome& home, const std::string& name) {
    const std::string folder = "'" + home.root() + "'";
    const std::string command =
        "cd " + folder + " && timeout 120 libreoffice -env:UserInstallation=file://$PWD/profile --headless " +
        "--infilter='CSV:44,34,76,1,1/2/2/2/3/2/4/2/5/2/6/2/7/2/8/2' --convert-to fods " + name +
        ".csv >convert.log 2>&1";
    if (std::system(command.c_str()) != 0) return {};
    return cells_of(home.read("/" + name + ".fods"));
}

}  // namespace

TEST(PayoutCsvInASpreadsheet, EveryCellComesThroughUnharmed) {
    if (!is_installed("libreoffice")) GTEST_SKIP() << "LibreOffice is not installed";
    const std::vector<std::string> names = {
        "alice@bursaria.test",
        "Smith, \"Bob\"",
        "\"",
        "a\nb",
        ",",
        "Зоя Ивановна",
        "李小龍",
        "مرحبا",
        "🦜🌻 emoji",
        "<b>&amp;</b>",
        "=1+2",
        "0012",
        "Jürgen; tab\there",
    };
    std::vector<PayoutRow> rows;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const auto number = static_cast<std::int64_t>(i);
        rows.push_back({"tok_0", "Token " + names[i], names[i], "1address" + std::to_string(i),
                        std::string(64, 'e'), "payout", number * 100'000'001, 1'700'000'000 + number});
    }
    const TestHome home;
    std::string said;
    ASSERT_TRUE(write_payout_csv(home.root() + "/payouts.csv", rows, {}, said));

    const Cells sheet = opened_in_a_spreadsheet(home, "payouts");
    ASSERT_EQ(sheet.size(), rows.size() + 1) << home.read("/convert.log");
    EXPECT_EQ(sheet[0], (std::vector<std::string>{"When", "Who", "Amount BSV", "Amount sats", "Pay to", "Tx",
                                                  "Token", "Kind"}));
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const PayoutRow& row = rows[i];
        EXPECT_EQ(sheet[i + 1], (std::vector<std::string>{payout_time_text(row.unix), row.name,
                                                          format_bsv(row.sats), std::to_string(row.sats),
                                                          row.dest, row.txid, row.token_name, "payout"}))
            << row.name;
    }
}
