// The tree view control.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <string>

#include "ui/CWnd.h"

namespace postmarker {

class CTreeCtrl : public CWnd {
 public:
  // Adds an item after the last child of `parent` (TVI_ROOT for the top). Null if the control
  // refuses.
  HTREEITEM InsertItem(const std::wstring& text, HTREEITEM parent, LPARAM data = 0,
                       UINT state = 0) const {
    TVINSERTSTRUCTW insert = {};
    insert.hParent = parent;
    insert.hInsertAfter = TVI_LAST;
    insert.item.mask = TVIF_TEXT | TVIF_PARAM | TVIF_IMAGE | TVIF_SELECTEDIMAGE | TVIF_STATE;
    insert.item.pszText = const_cast<wchar_t*>(text.c_str());
    insert.item.lParam = data;
    insert.item.state = state;
    insert.item.stateMask = state;
    return reinterpret_cast<HTREEITEM>(Send(TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insert)));
  }

  void DeleteAllItems() const { Send(TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT)); }

  [[nodiscard]] HTREEITEM NextItem(HTREEITEM item, UINT relation) const {
    return reinterpret_cast<HTREEITEM>(
        Send(TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
  }
  [[nodiscard]] HTREEITEM FirstChild(HTREEITEM parent) const {
    return NextItem(parent, parent == TVI_ROOT ? TVGN_ROOT : TVGN_CHILD);
  }
  [[nodiscard]] HTREEITEM NextSibling(HTREEITEM item) const { return NextItem(item, TVGN_NEXT); }
  [[nodiscard]] HTREEITEM Parent(HTREEITEM item) const { return NextItem(item, TVGN_PARENT); }
  // The item that follows in a depth-first walk below `top`, parents before their children; null at
  // its end. Without `descend`, what is below `item` is passed over.
  [[nodiscard]] HTREEITEM NextInWalk(HTREEITEM item, HTREEITEM top, bool descend = true) const {
    if (descend) {
      if (const HTREEITEM child = FirstChild(item)) {
        return child;
      }
    }
    while (item != nullptr && item != top) {
      if (const HTREEITEM sibling = NextSibling(item)) {
        return sibling;
      }
      item = Parent(item);
    }
    return nullptr;
  }
  [[nodiscard]] HTREEITEM Selection() const { return NextItem(nullptr, TVGN_CARET); }

  void SelectItem(HTREEITEM item) const {
    Send(TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item));
  }
  void Expand(HTREEITEM item) const {
    Send(TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(item));
  }
  void EnsureVisible(HTREEITEM item) const {
    Send(TVM_ENSUREVISIBLE, 0, reinterpret_cast<LPARAM>(item));
  }

  [[nodiscard]] LPARAM ItemData(HTREEITEM item) const {
    TVITEMW read = {};
    read.mask = TVIF_PARAM;
    read.hItem = item;
    return Send(TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&read)) != 0 ? read.lParam : 0;
  }
  void SetItemData(HTREEITEM item, LPARAM data) const {
    TVITEMW write = {};
    write.mask = TVIF_PARAM;
    write.hItem = item;
    write.lParam = data;
    Send(TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&write));
  }

  // The bits of an item's state that are in `mask`.
  [[nodiscard]] UINT ItemState(HTREEITEM item, UINT mask) const {
    return static_cast<UINT>(Send(TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(item), mask)) & mask;
  }
  void SetItemState(HTREEITEM item, UINT state, UINT mask) const {
    TVITEMW write = {};
    write.mask = TVIF_STATE;
    write.hItem = item;
    write.state = state;
    write.stateMask = mask;
    Send(TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&write));
  }

  // The item's text; cut at 1023 units.
  [[nodiscard]] std::wstring ItemText(HTREEITEM item) const {
    wchar_t text[1024] = {};
    TVITEMW read = {};
    read.mask = TVIF_TEXT;
    read.hItem = item;
    read.pszText = text;
    read.cchTextMax = 1024;
    return Send(TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&read)) != 0 ? read.pszText : L"";
  }

  // The item at a point of the client area, and where on it the point lies (TVHT_...).
  [[nodiscard]] HTREEITEM HitTest(POINT point, UINT* flags) const {
    TVHITTESTINFO info = {};
    info.pt = point;
    const auto item =
        reinterpret_cast<HTREEITEM>(Send(TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&info)));
    *flags = info.flags;
    return item;
  }

  // Painting off and on around a long change.
  void SetRedraw(bool on) const { Send(WM_SETREDRAW, on ? TRUE : FALSE); }
};

}  // namespace postmarker
