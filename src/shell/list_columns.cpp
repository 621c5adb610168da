#include "shell/list_columns.h"

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

LRESULT CALLBACK list_procedure(HWND list, UINT message, WPARAM first, LPARAM second, UINT_PTR,
                                DWORD_PTR shell) {
    if (message == WM_NOTIFY) {
        const auto* header = reinterpret_cast<const NMHDR*>(second);
        if (header->code == NM_CUSTOMDRAW && header->hwndFrom == ListView_GetHeader(list))
            return on_header_draw(*reinterpret_cast<const Shell*>(shell),
                                  *reinterpret_cast<const NMCUSTOMDRAW*>(second));
    }
    if (message == WM_NCDESTROY) RemoveWindowSubclass(list, list_procedure, SUBCLASS);
    return DefSubclassProc(list, message, first, second);
}

}  // namespace

HWND create_report_list(const Shell& shell, HWND parent, int id, const Box& box, const ListColumn* columns,
                        std::size_t count) {
    HWND list = CreateWindowExW(
        0, WC_LISTVIEWW, L"",
        WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_BORDER | LVS_REPORT | LVS_SINGLESEL | LVS_SHOWSELALWAYS,
        box.x, box.y, box.width, box.height, parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
        shell.instance, nullptr);
    SetWindowSubclass(list, list_procedure, SUBCLASS, reinterpret_cast<DWORD_PTR>(&shell));
    ListView_SetExtendedListViewStyle(list, LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER);
    for (std::size_t i = 0; i < count; ++i) {
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

void set_list_cell(HWND list, int row, int column, std::string_view utf8) {
    std::wstring text = wide_text(utf8);
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = row;
    item.iSubItem = column;
    item.pszText = text.data();
    SendMessageW(list, column == 0 ? LVM_INSERTITEMW : LVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
}

std::wstring list_cell(HWND list, int row, int column) {
    constexpr int MOST_CHARACTERS = 511;
    std::wstring text(MOST_CHARACTERS + 1, L'\0');
    LVITEMW item{};
    item.iSubItem = column;
    item.pszText = text.data();
    item.cchTextMax = MOST_CHARACTERS + 1;
    text.resize(static_cast<std::size_t>(
        SendMessageW(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item))));
    return text;
}
