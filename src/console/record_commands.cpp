#include "console/record_commands.h"

#include "base/amounts.h"
#include "base/clock.h"
#include "records/holder_notes.h"
#include "records/payout_csv.h"
#include "records/vaults.h"

namespace {

Json payout_object(const PayoutRow& row, const TokenNames& tokens) {
    return {{"when", payout_time_text(row.unix)},
            {"who", payout_who(row)},
            {"sats", row.sats},
            {"dest", row.dest},
            {"txid", row.txid},
            {"token", token_label(row.token_id, row.token_name, tokens)},
            {"kind", payout_kind(row)}};
}

Json history_object(const HistoryView& view, std::int64_t fees_sats, const TokenNames& tokens) {
    Json payouts = Json::array();
    for (const PayoutRow& row : view.rows) payouts.push_back(payout_object(row, tokens));
    return {{"payouts", payouts}, {"total_sats", view.total_sats}, {"fees_sats", fees_sats}};
}

std::string history_text(const HistoryView& view, std::int64_t fees_sats) {
    std::string text;
    for (const PayoutRow& row : view.rows) {
        text += payout_time_text(row.unix) + "  " + payout_who(row) + "  " + format_bsv(row.sats) +
                " BSV  -> " + row.dest + "  " + row.txid + "\n";
    }
    return text + payouts_line(view) + "\n" + fees_line(fees_sats) +
           "\nThis is the local payout log, not a chain oracle.";
}

// True if nothing was to be exported, or the file was written.
bool export_if_asked(const ConsoleRequest& request, const HistoryView& view, const TokenNames& tokens,
                     std::string& text_out) {
    if (request.csv_file.empty()) return true;
    if (!view.rows.empty()) return write_payout_csv(request.csv_file, view.rows, tokens, text_out);
    text_out = NOTHING_TO_EXPORT;
    return false;
}

Json vaults_object(const std::vector<Vault>& vaults) {
    Json rows = Json::array();
    for (const Vault& vault : vaults) rows.push_back({{"name", vault.name}, {"addresses", vault.addresses}});
    return {{"vaults", rows}};
}

std::string vaults_text(const std::vector<Vault>& vaults) {
    std::string text;
    for (const Vault& vault : vaults) {
        text += vault.name + "\n";
        for (const std::string& address : vault.addresses) text += "  " + address + "\n";
    }
    return text.empty() ? "Create a vault to watch BSV parked on designated addresses." : text;
}

std::string lines_of(const std::vector<std::string>& texts) {
    std::string lines;
    for (const std::string& text : texts) lines += text + "\n";
    return lines;
}

VaultEdit edit_vaults(const ConsoleRequest& request, std::vector<Vault>& vaults) {
    const std::string addresses = lines_of(request.texts);
    return request.command == ConsoleCommand::VaultSave
               ? save_vault(vaults, request.name, addresses)
               : add_vault_addresses(vaults, find_vault(vaults, request.name), addresses);
}

// The name is left out: one that is no text is not read back as it was.
bool reads_back(const std::vector<Vault>& vaults, std::size_t place, const std::vector<Vault>& on_disk) {
    return on_disk.size() == vaults.size() && on_disk[place].addresses == vaults[place].addresses;
}

// The first row of the name, the wallet's own among them.
const HolderRow* find_holder(const HolderBoard& board, const std::string& who) {
    for (const HolderRow& row : board.rows) {
        if (row.who == who) return &row;
    }
    return nullptr;
}

ConsoleAnswer write_holder_note(const std::string& token_id, const HolderRow& row, const std::string& text) {
    const std::string key = note_key(row.pubkey, row.who, row.dest);
    const std::string& name = row.who.empty() ? row.dest : row.who;
    write_note(token_id, key, name, row.lots, text);
    const std::string note = find_note(read_notes(), token_id, key);
    const Json object = {{"note", note}};
    if (note.empty() != normalise_note(text).empty())
        return {false, "The note could not be saved.", "", object};
    return {true, "", note_written_text(name, text), object};
}

}  // namespace

ConsoleAnswer answer_history(const ConsoleRequest& request, const TokenNames& tokens) {
    const HistoryView view =
        history_view(load_payouts(tokens), request.token, HISTORY_RANGES[request.range], unix_seconds());
    const std::int64_t fees_sats = fees_total();
    std::string exported;
    const bool ok = export_if_asked(request, view, tokens, exported);
    const std::string text = request.csv_file.empty() ? history_text(view, fees_sats) : exported;
    return {ok, exported, text, history_object(view, fees_sats, tokens)};
}

ConsoleAnswer answer_vaults(const ConsoleRequest& request) {
    std::vector<Vault> vaults = load_vaults();
    if (request.command == ConsoleCommand::VaultList)
        return {true, "", vaults_text(vaults), vaults_object(vaults)};
    const VaultEdit edit = edit_vaults(request, vaults);
    if (edit.changed) save_vaults(vaults);
    const std::vector<Vault> on_disk = load_vaults();
    if (edit.changed && !reads_back(vaults, edit.selected, on_disk))
        return {false, "The vault could not be saved.", "", vaults_object(on_disk)};
    return {edit.changed, edit.text, edit.text, vaults_object(on_disk)};
}

ConsoleAnswer no_vaults(const std::string& failure) {
    return {false, failure, "", vaults_object({})};
}

ConsoleAnswer answer_vault_value(const VaultLookupResult& result) {
    const std::string line = vault_value_line(result);
    return {result.sats >= 0, line, line, {{"sats", result.sats}, {"detail", result.detail}}};
}

ConsoleAnswer no_vault_value(const std::string& failure) {
    return {false, failure, "", {{"sats", -1}, {"detail", failure}}};
}

ConsoleAnswer answer_note(const ConsoleRequest& request, const HolderBoard& board) {
    const HolderRow* row = find_holder(board, request.name);
    if (!row) return no_note("No holder is named \"" + request.name + "\" on this board.");
    const std::string key = note_key(row->pubkey, row->who, row->dest);
    if (key.empty() || board.token_id.empty()) return no_note(NO_NOTE_HANDLE);
    if (!request.texts.empty()) return write_holder_note(board.token_id, *row, request.texts[0]);
    const std::string note = find_note(read_notes(), board.token_id, key);
    return {true, "", note, {{"note", note}}};
}

ConsoleAnswer no_note(const std::string& failure) {
    return {false, failure, "", {{"note", ""}}};
}
