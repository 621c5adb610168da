#include "shell/child_controls.h"

#include <algorithm>

#include "shell/painted_button.h"

namespace {

constexpr int TEXT_MARGIN = 8;
constexpr int MOST_VISIBLE_ITEMS = 12;

struct KindOfChild {
    const wchar_t* name;
    DWORD style;
    DWORD extended_style;
};

KindOfChild kind_of(ChildKind kind) {
    switch (kind) {
        case ChildKind::Drop:
            return {WC_COMBOBOXW, CBS_DROPDOWNLIST | WS_VSCROLL | WS_TABSTOP, 0};
        case ChildKind::Edit:
            return {WC_EDITW, ES_AUTOHSCROLL | WS_TABSTOP, WS_EX_CLIENTEDGE};
        case ChildKind::Text:
            return {WC_EDITW, ES_MULTILINE | ES_AUTOVSCROLL | WS_VSCROLL | WS_TABSTOP, WS_EX_CLIENTEDGE};
        default:
            return {WC_STATICW, SS_NOPREFIX, 0};
    }
}

bool is_edit(HWND control) {
    wchar_t name[16] = L"";
    GetClassNameW(control, name, 16);
    return std::wstring_view(name) == WC_EDITW;
}

LRESULT label_colours(const Theme& theme, HDC dc, HWND label, std::span<const int> bright) {
    // A read-only edit asks as a label does.
    if (is_edit(label)) return panel_colours(theme, dc);
    const bool is_bright = std::find(bright.begin(), bright.end(), GetDlgCtrlID(label)) != bright.end();
    return static_colours(dc, is_bright ? theme.palette().text : theme.palette().muted,
                          theme.window_brush.get());
}

LRESULT erase_with(HWND window, HDC dc, HBRUSH brush) {
    RECT area{};
    GetClientRect(window, &area);
    FillRect(dc, &area, brush);
    return 1;
}

}  // namespace

HWND create_child(const Shell& shell, HWND parent, const ChildPlan& plan) {
    if (plan.kind == ChildKind::Button)
        return create_painted_button(shell, parent, plan.id, plan.text, plan.box);
    const KindOfChild kind = kind_of(plan.kind);
    const bool small = plan.kind == ChildKind::SmallLabel;
    HWND child =
        CreateWindowExW(kind.extended_style, kind.name, wide_text(plan.text).c_str(),
                        WS_CHILD | WS_VISIBLE | kind.style | plan.style, plan.box.x, plan.box.y,
                        plan.box.width, plan.box.height, parent,
                        reinterpret_cast<HMENU>(static_cast<INT_PTR>(plan.id)), shell.instance, nullptr);
    HFONT font = small ? shell.theme.small_font.get() : shell.theme.body_font.get();
    SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
    if (kind.name != std::wstring_view(WC_STATICW)) strip_visual_style(child);
    if (plan.kind == ChildKind::Drop) SendMessageW(child, CB_SETMINVISIBLE, MOST_VISIBLE_ITEMS, 0);
    if (plan.kind == ChildKind::Text)
        SendMessageW(child, EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN,
                     MAKELPARAM(TEXT_MARGIN, TEXT_MARGIN));
    return child;
}

void place_children(HWND window, std::span<const PlacedControl> places) {
    for (const auto& [id, box] : places) {
        if (HWND child = GetDlgItem(window, id))
            SetWindowPos(child, nullptr, box.x, box.y, box.width, box.height,
                         SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOCOPYBITS | SWP_NOREDRAW);
    }
    RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

std::optional<LRESULT> answer_look_message(const Shell& shell, HWND window, UINT number, WPARAM first,
                                           LPARAM second, std::span<const int> bright) {
    const HDC dc = reinterpret_cast<HDC>(first);
    switch (number) {
        case WM_DRAWITEM:
            draw_painted_button(shell, *reinterpret_cast<const DRAWITEMSTRUCT*>(second));
            return TRUE;
        case WM_CTLCOLOREDIT:
        case WM_CTLCOLORLISTBOX:
            return panel_colours(shell.theme, dc);
        case WM_CTLCOLORSTATIC:
            return label_colours(shell.theme, dc, reinterpret_cast<HWND>(second), bright);
        case WM_CTLCOLORBTN:
            return reinterpret_cast<LRESULT>(shell.theme.window_brush.get());
        case WM_ERASEBKGND:
            return erase_with(window, dc, shell.theme.window_brush.get());
        case WM_NEXTDLGCTL:
            // A text of many lines takes the Tab key to itself, and passes it on with this.
            focus_next_control(window, first != 0);
            return 0;
        default:
            return std::nullopt;
    }
}

bool focus_next_control(HWND window, bool backwards) {
    HWND focus = IsChild(window, GetFocus()) ? GetFocus() : nullptr;
    HWND next = GetNextDlgTabItem(window, focus, backwards);
    if (next == nullptr) return false;
    SendMessageW(window, WM_CHANGEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEFOCUS), 0);
    SetFocus(next);
    // As a dialog does: what was typed before is replaced by what is typed now.
    if ((SendMessageW(next, WM_GETDLGCODE, 0, 0) & DLGC_HASSETSEL) != 0) SendMessageW(next, EM_SETSEL, 0, -1);
    return true;
}

bool press_focused_button(HWND window) {
    HWND focus = GetFocus();
    if (!IsChild(window, focus) || !is_painted_button(focus)) return false;
    SendMessageW(window, WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(focus), BN_CLICKED),
                 reinterpret_cast<LPARAM>(focus));
    return true;
}
