#include "shell/history_export.h"

// After windows.h, which it needs.
#include <commdlg.h>

#include <algorithm>

#include "base/clock.h"
#include "records/payout_csv.h"
#include "shell/message_window.h"

namespace {

void say(Shell& shell, const std::string& text) {
    MessageWindow message;
    message.title = "Export";
    message.text = text;
    show_message_window(shell, message);
}

bool confirm_export(Shell& shell, std::size_t rows) {
    MessageWindow message;
    message.title = "Export payout history";
    message.text = export_question(rows);
    message.confirm = true;
    message.primary_label = "Export";
    return show_message_window(shell, message);
}

// Empty if the user cancels.
std::string choose_file(HWND owner) {
    constexpr std::size_t LONGEST_PATH = 32768;
    std::wstring path(LONGEST_PATH, L'\0');
    const std::wstring name = wide_text(payout_csv_name(unix_seconds()));
    std::copy(name.begin(), name.end(), path.begin());
    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof(dialog);
    dialog.hwndOwner = IsWindow(owner) ? owner : nullptr;
    dialog.lpstrFilter = L"CSV (*.csv)\0*.csv\0";
    dialog.lpstrFile = path.data();
    dialog.nMaxFile = static_cast<DWORD>(path.size());
    dialog.lpstrDefExt = L"csv";
    // The working folder stays the program's own.
    dialog.Flags = OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST | OFN_NOCHANGEDIR;
    if (!GetSaveFileNameW(&dialog)) return "";
    path.resize(path.find(L'\0'));
    return utf8_text(path);
}

}  // namespace

void export_payouts(Shell& shell, HWND owner, const std::vector<PayoutRow>& rows) {
    if (rows.empty()) return say(shell, NOTHING_TO_EXPORT);
    // What was asked about is what is written, whatever is chosen in the window meanwhile.
    const std::vector<PayoutRow> asked = rows;
    if (!confirm_export(shell, asked.size())) return;
    const std::string path = choose_file(owner);
    if (path.empty()) return;
    std::string outcome;
    write_payout_csv(path, asked, token_names(shell.round.state), outcome);
    say(shell, outcome);
}

TokenNames token_names(const RoundState& state) {
    TokenNames names;
    for (const TokenRow& token : state.tokens) names.emplace_back(token.token_id, token.name);
    return names;
}
