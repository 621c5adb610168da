#include "shell/vault_window.h"

#include <algorithm>

#include "base/text.h"
#include "records/record_files.h"
#include "records/vaults.h"
#include "shell/child_controls.h"
#include "shell/message_window.h"
#include "shell/window_class.h"
#include "shell/window_layouts.h"

namespace {

enum VaultControl : int {
    VAULT_LIST = 1501,
    VAULT_CREATE = 1502,
    VAULT_NAME = 1503,
    VAULT_ADDRESSES = 1504,
    VAULT_VALUE = 1505,
    VAULT_PAYOUT_VALUE = 1506,
    VAULT_CLOSE = 1507,
    VAULT_SAVE = 1508,
    VAULT_NAME_LABEL = 1509,
    VAULT_ADDRESSES_LABEL = 1510,
    VAULT_SPLIT = 1511,
    VAULT_LIST_LABEL = 1512,
    VAULT_MESSAGE = 1513,
    VAULT_ADD = 1514,
    VAULT_PASTE = 1515,
};
constexpr const wchar_t* CLASS_NAME = L"QuorvelleBursariaVault";
constexpr ChildPlan CONTROLS[] = {
    {VAULT_LIST_LABEL, ChildKind::SmallLabel, "Vault"},
    {VAULT_LIST, ChildKind::Drop},
    {VAULT_CREATE, ChildKind::Button, "Create Vault"},
    {VAULT_CLOSE, ChildKind::Button, "Close"},
    {VAULT_NAME_LABEL, ChildKind::SmallLabel, "Vault Name"},
    {VAULT_NAME, ChildKind::Edit},
    {VAULT_ADDRESSES_LABEL, ChildKind::SmallLabel, "Vault addresses (1... payment longcodes)"},
    {VAULT_ADDRESSES, ChildKind::Text, "", ES_WANTRETURN},
    {VAULT_PASTE, ChildKind::Edit},
    {VAULT_ADD, ChildKind::Button, "Add address"},
    {VAULT_VALUE, ChildKind::Label, VAULT_NO_VALUE, SS_ENDELLIPSIS},
    {VAULT_SAVE, ChildKind::Button, "Save vault"},
    {VAULT_PAYOUT_VALUE, ChildKind::Button, "Current payout value"},
    {VAULT_SPLIT, ChildKind::Text, "", ES_READONLY},
    {VAULT_MESSAGE, ChildKind::SmallLabel, "", SS_ENDELLIPSIS},
};
constexpr int BRIGHT_LABELS[] = {VAULT_VALUE};

struct EditLimit {
    int id;
    std::size_t most_characters;
};
constexpr EditLimit NAME_LIMIT = {VAULT_NAME, 127};
constexpr EditLimit ADDRESSES_LIMIT = {VAULT_ADDRESSES, 4095};
constexpr EditLimit PASTE_LIMIT = {VAULT_PASTE, 159};

struct VaultRecord : WindowRecord {
    std::vector<Vault> vaults;
    bool create_mode = false;
    std::int64_t value_sats = -1;  // -1: not known
    bool lookup_running = false;
    std::string wallet_key = record_wallet_key();  // whose vaults these are

    explicit VaultRecord(Shell& of) : WindowRecord(of, of.vault) {}

    LRESULT on_message(UINT number, WPARAM first, LPARAM second);
    void on_create();
    void on_size();
    void on_command(int id, int event);
    void on_create_vault();
    void on_vault_chosen();
    void on_save();
    void on_add();
    void on_payout_value();
    void on_lookup_result(bool failed, LPARAM payload);

    std::size_t selected() const;
    std::string text_of(const EditLimit& edit) const;
    void say(int id, std::string_view text) { set_window_text(control(id), shown_text(text)); }
    void fill_list(std::size_t place);
    void set_create_mode(bool on);
    void show_vault();
    void start_lookup();
    bool closed_for_other_wallet();
};

std::size_t VaultRecord::selected() const {
    const int place = ComboBox_GetCurSel(control(VAULT_LIST));
    const bool valid = place >= 0 && static_cast<std::size_t>(place) < vaults.size();
    return valid ? static_cast<std::size_t>(place) : NO_VAULT;
}

std::string VaultRecord::text_of(const EditLimit& edit) const {
    return utf8_text(window_text(control(edit.id)).substr(0, edit.most_characters));
}

void VaultRecord::on_create() {
    apply_dark_frame(window, shell.theme.palette());
    create_children(shell, window, CONTROLS);
    for (const EditLimit& edit : {NAME_LIMIT, ADDRESSES_LIMIT, PASTE_LIMIT})
        SendMessageW(control(edit.id), EM_SETLIMITTEXT, edit.most_characters, 0);
    SendMessageW(control(VAULT_PASTE), EM_SETCUEBANNER, FALSE,
                 reinterpret_cast<LPARAM>(L"Paste a 1... longcode"));
    on_size();
    vaults = load_vaults();
    create_mode = vaults.empty();
    const std::size_t last = find_vault(vaults, shell.ui.last_vault);
    fill_list(last == NO_VAULT ? 0 : last);
    set_create_mode(create_mode);
    show_vault();
}

void VaultRecord::fill_list(std::size_t place) {
    HWND list = control(VAULT_LIST);
    ComboBox_ResetContent(list);
    for (const Vault& vault : vaults) ComboBox_AddString(list, wide_text(vault.name).c_str());
    if (!vaults.empty()) ComboBox_SetCurSel(list, static_cast<int>(place));
}

void VaultRecord::set_create_mode(bool on) {
    for (const int id : {VAULT_NAME, VAULT_ADDRESSES}) SendMessageW(control(id), EM_SETREADONLY, !on, 0);
    ShowWindow(control(VAULT_SAVE), on ? SW_SHOW : SW_HIDE);
    for (const int id : {VAULT_PAYOUT_VALUE, VAULT_ADD, VAULT_PASTE, VAULT_SPLIT})
        ShowWindow(control(id), on ? SW_HIDE : SW_SHOW);
    if (!on) return;
    for (const int id : {VAULT_NAME, VAULT_ADDRESSES, VAULT_SPLIT}) say(id, "");
    say(VAULT_VALUE, VAULT_NO_VALUE);
    say(VAULT_MESSAGE,
        "Name the vault and paste 1... payment addresses (one per line). Information only - BA will not "
        "spend these.");
}

void VaultRecord::show_vault() {
    if (create_mode) return;
    const std::size_t place = selected();
    if (place == NO_VAULT) {
        say(VAULT_NAME, "");
        say(VAULT_ADDRESSES, "");
        say(VAULT_VALUE, VAULT_NO_VALUE);
        say(VAULT_SPLIT, "Create a vault to watch BSV parked on designated addresses.");
        return;
    }
    const Vault& vault = vaults[place];
    shell.ui.last_vault = vault.name;
    save_settings(shell.ui);
    std::string lines;
    for (const std::string& address : vault.addresses) lines += (lines.empty() ? "" : "\r\n") + address;
    say(VAULT_NAME, vault.name);
    say(VAULT_ADDRESSES, lines);
    say(VAULT_SPLIT, "");
    start_lookup();
}

// Hands the result to the window, or frees it if the window is gone.
void post_result(HWND window, VaultLookupResult result) {
    auto payload = std::make_unique<VaultLookupResult>(std::move(result));
    const WPARAM failed = payload->sats < 0 ? 1 : 0;
    if (PostMessageW(window, WM_APP_VAULT, failed, reinterpret_cast<LPARAM>(payload.get())))
        static_cast<void>(payload.release());
}

void VaultRecord::start_lookup() {
    const std::size_t place = selected();
    if (create_mode || place == NO_VAULT) return;
    lookup_running = true;
    say(VAULT_VALUE, VAULT_LOOKING_UP);
    shell.round.workers.start_worker(
        [target = window, addresses = vaults[place].addresses, read = shell.read_address] {
            post_result(target, look_up_vault(addresses, read));
        });
}

void VaultRecord::on_lookup_result(bool failed, LPARAM payload) {
    const std::unique_ptr<VaultLookupResult> result(reinterpret_cast<VaultLookupResult*>(payload));
    lookup_running = false;
    value_sats = result != nullptr && !failed ? result->sats : -1;
    if (result == nullptr)
        say(VAULT_VALUE, "Vault Value: lookup failed.");
    else
        say(VAULT_VALUE, vault_value_line({value_sats, result->detail}));
}

void VaultRecord::on_create_vault() {
    create_mode = true;
    set_create_mode(true);
    SetFocus(control(VAULT_NAME));
}

void VaultRecord::on_vault_chosen() {
    create_mode = false;
    set_create_mode(false);
    say(VAULT_MESSAGE, "");
    show_vault();
}

// The file is that of the wallet that is bound now: another wallet's vaults must not be written over.
bool VaultRecord::closed_for_other_wallet() {
    if (record_wallet_key() == wallet_key) return false;
    DestroyWindow(window);
    return true;
}

void VaultRecord::on_save() {
    if (closed_for_other_wallet()) return;
    const VaultEdit edit = save_vault(vaults, text_of(NAME_LIMIT), text_of(ADDRESSES_LIMIT));
    if (edit.changed) {
        save_vaults(vaults);
        fill_list(edit.selected);
        create_mode = false;
        set_create_mode(false);
    }
    say(VAULT_MESSAGE, edit.text);
    if (edit.changed) start_lookup();
}

void VaultRecord::on_add() {
    if (create_mode || closed_for_other_wallet()) return;
    const VaultEdit edit = add_vault_addresses(vaults, selected(), text_of(PASTE_LIMIT));
    if (edit.changed) {
        save_vaults(vaults);
        say(VAULT_PASTE, "");
    }
    say(VAULT_MESSAGE, edit.text);
    if (edit.changed) show_vault();
}

void VaultRecord::on_payout_value() {
    const HolderBoard& board = shell.round.state.board;
    const VaultBoard split{board.loaded, board.token_id, board.token_name, board.total_lots,
                           board.in_market_lots};
    say(VAULT_SPLIT, vault_split_text(value_sats, split));
}

void VaultRecord::on_size() {
    const SIZE size = client_size(window);
    const VaultLayout layout = layout_vault_window(size.cx, size.cy);
    const PlacedControl places[] = {
        {VAULT_LIST_LABEL, layout.vaults_label},
        {VAULT_LIST, layout.vaults},
        {VAULT_CREATE, layout.create},
        {VAULT_CLOSE, layout.close},
        {VAULT_NAME_LABEL, layout.name_label},
        {VAULT_NAME, layout.name},
        {VAULT_ADDRESSES_LABEL, layout.addresses_label},
        {VAULT_ADDRESSES, layout.addresses},
        {VAULT_PASTE, layout.paste},
        {VAULT_ADD, layout.add},
        {VAULT_VALUE, layout.value},
        {VAULT_SAVE, layout.save},
        {VAULT_PAYOUT_VALUE, layout.payout_value},
        {VAULT_SPLIT, layout.split},
        {VAULT_MESSAGE, layout.message},
    };
    place_children(window, places);
}

void VaultRecord::on_command(int id, int event) {
    if (id == VAULT_LIST) {
        if (event == CBN_SELCHANGE) on_vault_chosen();
        return;
    }
    // A press of Enter and of Escape carry the same event as a click.
    if (event != BN_CLICKED) return;
    switch (id) {
        case VAULT_CREATE:
            return on_create_vault();
        case VAULT_SAVE:
            return on_save();
        case VAULT_ADD:
            return on_add();
        case IDOK:
            if (!press_focused_button(window)) on_add();
            return;
        case VAULT_PAYOUT_VALUE:
            return on_payout_value();
        case VAULT_CLOSE:
        case IDCANCEL:
            DestroyWindow(window);
            return;
        default:
            return;
    }
}

LRESULT VaultRecord::on_message(UINT number, WPARAM first, LPARAM second) {
    switch (number) {
        case WM_CREATE:
            on_create();
            return 0;
        case WM_SIZE:
            on_size();
            return 0;
        case WM_GETMINMAXINFO:
            hold_smallest_size(second, 560, 520);
            return 0;
        case WM_COMMAND:
            on_command(LOWORD(first), HIWORD(first));
            return 0;
        case WM_APP_VAULT:
            on_lookup_result(first != 0, second);
            return 0;
        default:
            break;
    }
    if (const auto answer = answer_look_message(shell, window, number, first, second, BRIGHT_LABELS))
        return *answer;
    return DefWindowProcW(window, number, first, second);
}

}  // namespace

void open_vault_window(Shell& shell) {
    if (!shell.round.wallet.is_connected()) {
        MessageWindow message;
        message.title = "Vault";
        message.text = "Connect a Clasp wallet first. Vaults are stored per wallet.";
        show_message_window(shell, message);
        return;
    }
    const WindowPlan plan{L"Vault", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, 640, 580};
    if (shell.vault == nullptr)
        fill_slot(shell, shell.vault, CLASS_NAME, plan, std::make_unique<VaultRecord>(shell));
    if (shell.vault != nullptr) raise_window(shell.vault);
}
