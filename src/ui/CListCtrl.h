// The list view control.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <string>
#include <vector>

#include "ui/CWnd.h"

namespace postmarker {

// Rows and columns count from 0; -1 is none.
class CListCtrl : public CWnd {
 public:
  [[nodiscard]] int ItemCount() const { return static_cast<int>(Send(LVM_GETITEMCOUNT)); }
  [[nodiscard]] HWND Header() const { return reinterpret_cast<HWND>(Send(LVM_GETHEADER)); }
  [[nodiscard]] int ColumnCount() const {
    return std::max(0, static_cast<int>(::SendMessageW(Header(), HDM_GETITEMCOUNT, 0, 0)));
  }

  // Adds a column. -1 if the control refuses.
  int InsertColumn(int col, const std::wstring& heading, int width) const {
    LVCOLUMNW column = {};
    column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_SUBITEM;
    column.pszText = const_cast<wchar_t*>(heading.c_str());
    column.cx = width;
    column.iSubItem = col;
    return static_cast<int>(Send(LVM_INSERTCOLUMNW, col, reinterpret_cast<LPARAM>(&column)));
  }
  [[nodiscard]] int ColumnWidth(int col) const {
    return static_cast<int>(Send(LVM_GETCOLUMNWIDTH, col));
  }
  void SetColumnWidth(int col, int width) const { Send(LVM_SETCOLUMNWIDTH, col, width); }

  // The columns from left to right.
  [[nodiscard]] std::vector<int> ColumnOrder() const {
    std::vector<int> order(static_cast<size_t>(ColumnCount()));
    Send(LVM_GETCOLUMNORDERARRAY, order.size(), reinterpret_cast<LPARAM>(order.data()));
    return order;
  }
  void SetColumnOrder(const std::vector<int>& order) const {
    Send(LVM_SETCOLUMNORDERARRAY, order.size(), reinterpret_cast<LPARAM>(order.data()));
  }

  // Adds a row. -1 if the control refuses.
  int InsertItem(int row, const std::wstring& text, LPARAM data = 0) const {
    LVITEMW item = {};
    item.mask = LVIF_TEXT | LVIF_PARAM;
    item.iItem = row;
    item.pszText = const_cast<wchar_t*>(text.c_str());
    item.lParam = data;
    return static_cast<int>(Send(LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
  }
  void DeleteItem(int row) const { Send(LVM_DELETEITEM, row); }
  void DeleteAllItems() const { Send(LVM_DELETEALLITEMS); }

  // A cell's text, whatever its length.
  [[nodiscard]] std::wstring ItemText(int row, int col) const {
    std::wstring text(260, L'\0');
    for (;;) {
      LVITEMW item = {};
      item.iSubItem = col;
      item.pszText = text.data();
      item.cchTextMax = static_cast<int>(text.size());
      const auto length =
          static_cast<size_t>(Send(LVM_GETITEMTEXTW, row, reinterpret_cast<LPARAM>(&item)));
      if (length + 1 < text.size()) {
        text.resize(length);
        return text;
      }
      text.resize(text.size() * 2);
    }
  }
  void SetItemText(int row, int col, const std::wstring& text) const {
    LVITEMW item = {};
    item.iSubItem = col;
    item.pszText = const_cast<wchar_t*>(text.c_str());
    Send(LVM_SETITEMTEXTW, row, reinterpret_cast<LPARAM>(&item));
  }

  [[nodiscard]] LPARAM ItemData(int row) const {
    LVITEMW item = {};
    item.mask = LVIF_PARAM;
    item.iItem = row;
    return Send(LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item)) != 0 ? item.lParam : 0;
  }
  void SetItemData(int row, LPARAM data) const {
    LVITEMW item = {};
    item.mask = LVIF_PARAM;
    item.iItem = row;
    item.lParam = data;
    Send(LVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
  }

  // The LVIS_... bits of `mask` that the row has, and their change.
  [[nodiscard]] UINT ItemState(int row, UINT mask) const {
    return static_cast<UINT>(Send(LVM_GETITEMSTATE, row, mask));
  }
  void SetItemState(int row, UINT state, UINT mask) const {
    LVITEMW item = {};
    item.state = state;
    item.stateMask = mask;
    Send(LVM_SETITEMSTATE, row, reinterpret_cast<LPARAM>(&item));
  }

  [[nodiscard]] int NextItem(int row, UINT flags) const {
    return static_cast<int>(Send(LVM_GETNEXTITEM, static_cast<WPARAM>(row), flags));
  }
  [[nodiscard]] int SelectedCount() const { return static_cast<int>(Send(LVM_GETSELECTEDCOUNT)); }
  // The selected rows, from the top.
  [[nodiscard]] std::vector<int> SelectedItems() const {
    std::vector<int> rows;
    for (int row = NextItem(-1, LVNI_SELECTED); row != -1; row = NextItem(row, LVNI_SELECTED)) {
      rows.push_back(row);
    }
    return rows;
  }

  [[nodiscard]] int TopIndex() const { return static_cast<int>(Send(LVM_GETTOPINDEX)); }
  [[nodiscard]] int CountPerPage() const { return static_cast<int>(Send(LVM_GETCOUNTPERPAGE)); }
  void EnsureVisible(int row) const { Send(LVM_ENSUREVISIBLE, row, FALSE); }
  void Scroll(int dx, int dy) const { Send(LVM_SCROLL, dx, dy); }

  // Painting off and on around a long change.
  void SetRedraw(bool on) const { Send(WM_SETREDRAW, on ? TRUE : FALSE); }
};

}  // namespace postmarker
