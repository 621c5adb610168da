#include "shell/note_window.h"

#include "core/round_display.h"
#include "core/round_status.h"
#include "records/holder_notes.h"
#include "records/record_files.h"
#include "shell/child_controls.h"
#include "shell/window_class.h"

namespace {

enum NoteControl : int {
    NOTE_HEADING = 1451,
    NOTE_TEXT = 1452,
    NOTE_SAVE = 1453,
    NOTE_CLOSE = 1454,
};
constexpr const wchar_t* CLASS_NAME = L"QuorvelleBursariaHoldNote";
constexpr ChildPlan CONTROLS[] = {
    {NOTE_HEADING, ChildKind::Label, "", SS_ENDELLIPSIS, {16, 16, 388, 22}},
    {NOTE_TEXT, ChildKind::Text, "", ES_WANTRETURN, {16, 44, 388, 120}},
    {NOTE_SAVE, ChildKind::Button, "Save", 0, {192, 178, 100, 34}},
    {NOTE_CLOSE, ChildKind::Button, "Close", 0, {304, 178, 100, 34}},
};
constexpr WPARAM MOST_TYPED = 400;
constexpr std::size_t MOST_READ = 511;

struct NoteRecord : WindowRecord {
    std::string token_id;
    std::string key;
    std::string name;
    std::string lots;
    bool excluded = false;
    std::string wallet_key = record_wallet_key();  // whose notes these are

    explicit NoteRecord(Shell& of) : WindowRecord(of, of.note) {}

    LRESULT on_message(UINT number, WPARAM first, LPARAM second);
    void on_create();
    void on_save();
};

void NoteRecord::on_create() {
    apply_dark_frame(window, shell.theme.palette());
    create_children(shell, window, CONTROLS);
    set_window_text(control(NOTE_HEADING), note_heading(name, lots, excluded));
    SendMessageW(control(NOTE_TEXT), EM_SETLIMITTEXT, MOST_TYPED, 0);
    const std::string note = find_note(read_notes(), token_id, key);
    SetWindowTextW(control(NOTE_TEXT), with_edit_line_ends(note).c_str());
}

void NoteRecord::on_save() {
    if (record_wallet_key() != wallet_key) {
        DestroyWindow(window);
        return;
    }
    const std::string note = utf8_text(window_text(control(NOTE_TEXT)).substr(0, MOST_READ));
    write_note(token_id, key, name, lots, note);
    refresh_board(shell.round);
    set_status(shell.round, note_written_text(name, note), false);
    DestroyWindow(window);
}

LRESULT NoteRecord::on_message(UINT number, WPARAM first, LPARAM second) {
    switch (number) {
        case WM_CREATE:
            on_create();
            return 0;
        case WM_SETFOCUS:
            SetFocus(control(NOTE_TEXT));
            return 0;
        case WM_COMMAND:
            if (HIWORD(first) != BN_CLICKED) return 0;
            if (LOWORD(first) == NOTE_SAVE) on_save();
            if (LOWORD(first) == NOTE_CLOSE) DestroyWindow(window);
            return 0;
        default:
            break;
    }
    if (const auto answer = answer_look_message(shell, window, number, first, second)) return *answer;
    return DefWindowProcW(window, number, first, second);
}

}  // namespace

void open_note_window(Shell& shell, int row) {
    const RoundState& state = shell.round.state;
    if (row < 0 || static_cast<std::size_t>(row) >= state.board.rows.size()) return;
    const HolderRow& holder = state.board.rows[static_cast<std::size_t>(row)];
    auto record = std::make_unique<NoteRecord>(shell);
    record->token_id = state.board.token_id;
    record->key = note_key(holder.pubkey, holder.who, holder.dest);
    if (record->key.empty() || record->token_id.empty()) {
        set_status(shell.round, NO_NOTE_HANDLE, false);
        return;
    }
    record->name = holder.who.empty() ? holder.dest : holder.who;
    record->lots = holder.lots;
    record->excluded = is_excluded(state, static_cast<std::size_t>(row));
    if (shell.note != nullptr) DestroyWindow(shell.note);
    const WindowPlan plan{L"Note", WS_CAPTION | WS_SYSMENU | WS_CLIPCHILDREN, 436, 268};
    HWND window = fill_slot(shell, shell.note, CLASS_NAME, plan, std::move(record));
    if (window != nullptr) raise_window(window);
}
