#include "shell/list_columns.h"

#include <algorithm>

namespace {

constexpr UINT_PTR SUBCLASS = 2;
constexpr int HEADER_INSET = 8;

void draw_header_item(const Shell& shell, HWND header, const NMCUSTOMDRAW& draw) {
    const Palette& palette = shell.theme.palette();
    wchar_t title[64] = L"";
    HDITEMW item{};
    item.mask = HDI_TEXT;
    item.pszText = title;
    item.cchTextMax = 64;
    Header_GetItem(header, static_cast<int>(draw.dwItemSpec), &item);
    fill_box(draw.hdc, draw.rc, palette.band);
    draw_line(draw.hdc, draw.rc.right - 1, draw.rc.top, draw.rc.right - 1, draw.rc.bottom, palette.border);
    RECT text = draw.rc;
    text.left += HEADER_INSET;
    draw_text(draw.hdc, title, text, shell.theme.small_font.get(), palette.muted,
              DT_LEFT | DT_VCENTER | DT_SINGLELINE | DT_END_ELLIPSIS);
}

LRESULT on_header_draw(const Shell& shell, const NMCUSTOMDRAW& draw) {
    switch (draw.dwDrawStage) {
        case CDDS_PREPAINT: {
            RECT all{};
            GetClientRect(draw.hdr.hwndFrom, &all);
            fill_box(draw.hdc, all, shell.theme.palette().band);
            return CDRF_NOTIFYITEMDRAW | CDRF_NOTIFYPOSTPAINT;
        }
        case CDDS_ITEMPREPAINT:
            draw_header_item(shell, draw.hdr.hwndFrom, draw);
            return CDRF_SKIPDEFAULT;
        case CDDS_POSTPAINT: {
            // What lies behind the last column, which the control fills itself.
            RECT last{}, all{};
            GetClientRect(draw.hdr.hwndFrom, &all);
            const int count = Header_GetItemCount(draw.hdr.hwndFrom);
            if (count > 0 && Header_GetItemRect(draw.hdr.hwndFrom, count - 1, &last)) all.left = last.right;
            fill_box(draw.hdc, all, shell.theme.palette().band);
            return CDRF_DODEFAULT;
        }
        default:
            return CDRF_DODEFAULT;
    }
}

void give_cell(LVITEMW& item, const ListRows& rows) {
    if ((item.mask & LVIF_TEXT) == 0 || item.pszText == nullptr || item.cchTextMax <= 0) return;
    std::wstring text;
    if (item.iItem >= 0 && static_cast<std::size_t>(item.iItem) < rows.count && item.iSubItem >= 0)
        text = wide_text(
            rows.cell(static_cast<std::size_t>(item.iItem), static_cast<std::size_t>(item.iSubItem)));
    const auto room = static_cast<std::size_t>(item.cchTextMax) - 1;
    const std::size_t length = text.copy(item.pszText, room);
    item.pszText[length] = L'\0';
}

bool begins_with(const std::wstring& text, std::wstring_view typed) {
    return text.size() >= typed.size() &&
           CompareStringOrdinal(text.data(), static_cast<int>(typed.size()), typed.data(),
                                static_cast<int>(typed.size()), TRUE) == CSTR_EQUAL;
}

// From where the list asks, around its end and back.
LRESULT find_row(const NMLVFINDITEMW& wanted, const ListRows& rows) {
    if ((wanted.lvfi.flags & (LVFI_STRING | LVFI_PARTIAL)) == 0 || wanted.lvfi.psz == nullptr) return -1;
    const std::wstring_view typed = wanted.lvfi.psz;
    const auto start = static_cast<std::size_t>(std::max(wanted.iStart, 0));
    for (std::size_t i = 0; i < rows.count; ++i) {
        const std::size_t row = (start + i) % rows.count;
        if (begins_with(wide_text(rows.cell(row, 0)), typed)) return static_cast<LRESULT>(row);
    }
    return -1;
}

// Columns that would fit without the vertical bar are not worth a horizontal one.
void drop_needless_bar(HWND list) {
    const LONG_PTR style = GetWindowLongPtrW(list, GWL_STYLE);
    if ((style & WS_HSCROLL) == 0) return;
    int columns = 0;
    for (int i = 0; i < Header_GetItemCount(ListView_GetHeader(list)); ++i)
        columns += ListView_GetColumnWidth(list, i);
    RECT place{};
    GetWindowRect(list, &place);
    if (columns <= place.right - place.left - 2 * GetSystemMetrics(SM_CXBORDER))
        SetWindowLongPtrW(list, GWL_STYLE, style & ~static_cast<LONG_PTR>(WS_HSCROLL));
}

LRESULT CALLBACK list_procedure(HWND list, UINT message, WPARAM first, LPARAM second, UINT_PTR,
                                DWORD_PTR shell) {
    if (message == WM_NOTIFY) {
        const auto* header = reinterpret_cast<const NMHDR*>(second);
        if (header->code == NM_CUSTOMDRAW && header->hwndFrom == ListView_GetHeader(list))
            return on_header_draw(*reinterpret_cast<const Shell*>(shell),
                                  *reinterpret_cast<const NMCUSTOMDRAW*>(second));
    }
    if (message == WM_NCCALCSIZE) drop_needless_bar(list);
    if (message == WM_NCDESTROY) RemoveWindowSubclass(list, list_procedure, SUBCLASS);
    return DefSubclassProc(list, message, first, second);
}

}  // namespace

HWND create_report_list(const Shell& shell, HWND parent, int id, const Box& box,
                        std::span<const ListColumn> columns) {
    HWND list = CreateWindowExW(0, WC_LISTVIEWW, L"",
                                WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_BORDER | LVS_REPORT | LVS_SINGLESEL |
                                    LVS_SHOWSELALWAYS | LVS_OWNERDATA,
                                box.x, box.y, box.width, box.height, parent,
                                reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), shell.instance, nullptr);
    SetWindowSubclass(list, list_procedure, SUBCLASS, reinterpret_cast<DWORD_PTR>(&shell));
    ListView_SetExtendedListViewStyle(list, LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        std::wstring title = columns[i].title;
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_WIDTH;
        column.cx = columns[i].width;
        column.pszText = title.data();
        SendMessageW(list, LVM_INSERTCOLUMNW, i, reinterpret_cast<LPARAM>(&column));
    }
    SendMessageW(list, WM_SETFONT, reinterpret_cast<WPARAM>(shell.theme.body_font.get()), TRUE);
    style_list(list, shell.theme.palette());
    return list;
}

void set_column_widths(HWND list, std::span<const int> widths) {
    for (std::size_t i = 0; i < widths.size(); ++i)
        ListView_SetColumnWidth(list, static_cast<int>(i), widths[i]);
}

void show_list_rows(HWND list, std::size_t count) {
    const bool as_many = static_cast<std::size_t>(ListView_GetItemCount(list)) == count;
    ListView_SetItemState(list, -1, 0, LVIS_SELECTED | LVIS_FOCUSED);
    if (!as_many) ListView_DeleteAllItems(list);
    ListView_SetItemCountEx(list, static_cast<int>(count), as_many ? LVSICF_NOSCROLL : 0);
    InvalidateRect(list, nullptr, FALSE);
}

std::optional<LRESULT> answer_list_request(LPARAM notification, const ListRows& rows) {
    switch (reinterpret_cast<const NMHDR*>(notification)->code) {
        case LVN_GETDISPINFOW:
            give_cell(reinterpret_cast<NMLVDISPINFOW*>(notification)->item, rows);
            return 0;
        case LVN_ODFINDITEMW:
            return find_row(*reinterpret_cast<const NMLVFINDITEMW*>(notification), rows);
        default:
            return std::nullopt;
    }
}

int selected_list_row(HWND list) {
    return ListView_GetNextItem(list, -1, LVNI_SELECTED);
}

bool is_copy_key(const NMLVKEYDOWN& key) {
    return key.wVKey == 'C' && (GetKeyState(VK_CONTROL) & 0x8000) != 0;
}

std::wstring list_row_text(const ListRows& rows, int row, std::size_t columns) {
    std::string line;
    if (row < 0 || static_cast<std::size_t>(row) >= rows.count) return L"";
    for (std::size_t column = 0; column < columns; ++column)
        line += (column == 0 ? "" : "\t") + rows.cell(static_cast<std::size_t>(row), column);
    return wide_text(line);
}
