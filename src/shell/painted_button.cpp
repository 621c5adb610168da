#include "shell/painted_button.h"

#include "core/round_state.h"
#include "shell/main_layout.h"

namespace {

constexpr const wchar_t* HOT_MARK = L"ba.hot";
constexpr UINT_PTR SUBCLASS = 1;
constexpr int CAPTION_INSET = 4;

bool is_hot(HWND button) {
    return GetPropW(button, HOT_MARK) != nullptr;
}

void on_mouse_move(HWND button) {
    TRACKMOUSEEVENT track{sizeof(TRACKMOUSEEVENT), TME_LEAVE, button, 0};
    TrackMouseEvent(&track);
    if (!is_hot(button)) {
        SetPropW(button, HOT_MARK, reinterpret_cast<HANDLE>(1));
        InvalidateRect(button, nullptr, FALSE);
    }
    SetCursor(LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_HAND)));
}

void on_mouse_leave(HWND button) {
    RemovePropW(button, HOT_MARK);
    InvalidateRect(button, nullptr, FALSE);
}

LRESULT CALLBACK button_procedure(HWND button, UINT message, WPARAM first, LPARAM second, UINT_PTR,
                                  DWORD_PTR) {
    switch (message) {
        case WM_MOUSEMOVE:
            on_mouse_move(button);
            break;
        case WM_MOUSELEAVE:
            on_mouse_leave(button);
            break;
        case WM_KEYDOWN:
            // Where no dialog manager does it, the button that was clicked last passes the key on.
            if (first == VK_ESCAPE) PostMessageW(GetParent(button), WM_COMMAND, IDCANCEL, 0);
            break;
        case WM_SETCURSOR:
            if (LOWORD(second) != HTCLIENT) break;
            SetCursor(LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_HAND)));
            return TRUE;
        case WM_NCDESTROY:
            RemovePropW(button, HOT_MARK);
            RemoveWindowSubclass(button, button_procedure, SUBCLASS);
            break;
        default:
            break;
    }
    return DefSubclassProc(button, message, first, second);
}

// Where the button stands in the client area of its parent.
RECT place_in_parent(HWND button) {
    RECT place{};
    GetWindowRect(button, &place);
    MapWindowPoints(HWND_DESKTOP, GetParent(button), reinterpret_cast<POINT*>(&place), 2);
    return place;
}

ButtonState state_of(const Shell& shell, const DRAWITEMSTRUCT& item, const RECT& place) {
    ButtonState state;
    state.control = static_cast<int>(item.CtlID);
    state.theme = shell.theme.index;
    state.on_banner = GetParent(item.hwndItem) == shell.main.load() && place.top < BAND_HEIGHT;
    state.hot = is_hot(item.hwndItem) || (item.itemState & ODS_HOTLIGHT) != 0;
    state.pressed = (item.itemState & ODS_SELECTED) != 0;
    state.disabled = (item.itemState & ODS_DISABLED) != 0;
    return state;
}

void draw_big_content(const Shell& shell, HDC dc, int control, const std::wstring& caption, RECT area,
                      const ButtonLook& look) {
    const LONG middle = (area.top + area.bottom) / 2;
    draw_glyph(dc, control, area.left + 36, middle);
    const bool waits = caption == L"Wait...";
    const RECT first{area.left + 62, area.top, area.right - 4, middle + 2};
    draw_text(dc, caption, first, shell.theme.body_font.get(), look.text,
              DT_LEFT | DT_BOTTOM | DT_SINGLELINE);
    if (waits) return;
    const RECT second{area.left + 62, middle + 3, area.right - 4, area.bottom};
    draw_text(dc, wide_text(second_line(control)), second, shell.theme.small_font.get(), look.second_text,
              DT_LEFT | DT_TOP | DT_SINGLELINE | DT_END_ELLIPSIS);
}

void draw_content(const Shell& shell, HDC dc, const ButtonState& state, HWND button, RECT area,
                  const ButtonLook& look) {
    if (state.pressed) OffsetRect(&area, 1, 1);
    if (state.control == CONTROL_SETTINGS) {
        draw_gear(dc, (area.left + area.right) / 2, (area.top + area.bottom) / 2, look.text);
        return;
    }
    const std::wstring caption = window_text(button);
    if (is_big_button(state.control))
        draw_big_content(shell, dc, state.control, caption, area, look);
    else
        draw_text(dc, caption, {area.left + CAPTION_INSET, area.top, area.right - CAPTION_INSET, area.bottom},
                  shell.theme.body_font.get(), look.text,
                  DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_END_ELLIPSIS);
}

}  // namespace

HWND create_painted_button(const Shell& shell, HWND parent, int id, std::string_view caption,
                           const Box& box) {
    HWND button = CreateWindowExW(0, WC_BUTTONW, wide_text(caption).c_str(),
                                  WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_OWNERDRAW, box.x, box.y, box.width,
                                  box.height, parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                                  shell.instance, nullptr);
    SendMessageW(button, WM_SETFONT, reinterpret_cast<WPARAM>(shell.theme.body_font.get()), TRUE);
    SetWindowSubclass(button, button_procedure, SUBCLASS, 0);
    return button;
}

bool is_painted_button(HWND control) {
    wchar_t kind[16] = L"";
    GetClassNameW(control, kind, 16);
    return std::wstring_view(kind) == WC_BUTTONW &&
           (GetWindowLongPtrW(control, GWL_STYLE) & BS_TYPEMASK) == BS_OWNERDRAW;
}

void draw_painted_button(const Shell& shell, const DRAWITEMSTRUCT& item) {
    const RECT place = place_in_parent(item.hwndItem);
    const ButtonState state = state_of(shell, item, place);
    const ButtonLook look = button_look(state);
    draw_aside(item.hDC, item.rcItem, [&](HDC dc, const RECT& area) {
        fill_box(dc, area, look.background);
        if (state.on_banner) draw_band_part(dc, place, BAND_HEIGHT, shell.banner.get());
        draw_button_body(dc, area, look);
        draw_content(shell, dc, state, item.hwndItem, area, look);
        if ((item.itemState & ODS_FOCUS) != 0 && (item.itemState & ODS_NOFOCUSRECT) == 0)
            draw_focus_ring(dc, area, look, shell.theme.palette().accent);
    });
}
