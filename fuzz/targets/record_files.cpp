// The application's own files: ledger, notes, vaults, settings.
#include "records/record_files.h"

#include "base/json_file.h"
#include "fuzz/fuzz.h"
#include "records/holder_notes.h"
#include "records/payout_csv.h"
#include "records/payout_history.h"
#include "records/ui_settings.h"
#include "records/vaults.h"

namespace {

constexpr std::int64_t NOW = 1'790'000'000;

void ledger(const std::string& text) {
    write_text_file(ledger_file_path(), text);
    const std::size_t before = read_payout_entries().size();
    const std::vector<PayoutRow> rows = load_payouts({});
    for (const HistoryRange& range : HISTORY_RANGES) {
        const HistoryView view = history_view(rows, "", range, NOW);
        payouts_line(view);
        payout_csv(view.rows, {});
    }
    for (const PayoutRow& row : rows) {
        payout_time_text(row.unix);
        received_by(row.token_id, row.dest);
    }
    fees_total();
    append_payout("t_0", std::string(64, 'a'), 546, "1x", "mira", "Pebble", PAYOUT_KIND);
    const std::vector<PayoutEntry> entries = read_payout_entries();
    promise(entries.size() == before + 1 && entries.back().sats == 546,
            "a payment is appended to what can be read");
}

void notes(const std::string& text) {
    write_text_file(notes_file_path(), text);
    notes_on(read_notes(), "t_0");
    write_note("t_0", "n:mira", "mira", "250", "pays in fish");
    promise(find_note(read_notes(), "t_0", "n:mira") == "pays in fish", "a note that was written is there");
    write_note("t_0", "n:mira", "mira", "250", "");
    promise(find_note(read_notes(), "t_0", "n:mira").empty(), "a note that was cleared is gone");
}

void vaults(const std::string& text) {
    write_text_file(vaults_file_path(), text);
    const std::vector<Vault> vaults = load_vaults();
    save_vaults(vaults);
    const std::vector<Vault> again = load_vaults();
    promise(again.size() == vaults.size(), "vaults survive their file");
    for (const Vault& vault : again) find_vault(again, vault.name);
}

void ui(const std::string& text) {
    write_text_file(settings_file_path(), text);
    UiSettings settings;
    load_settings(settings);
    save_settings(settings);
}

using Reader = void (*)(const std::string&);
constexpr Reader READERS[] = {ledger, notes, vaults, ui};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_root();
    const Choice choice = choose(data, size, std::size(READERS));
    READERS[choice.parser](choice.text);
    return 0;
}
