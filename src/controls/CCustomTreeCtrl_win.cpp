#include "controls/CCustomTreeCtrl_win.h"

#include "ui/ImageList.h"

namespace postmarker {
namespace {

// The pictures of the boxes, as the system numbers them.
constexpr UINT kUncheckedImage = 1;
constexpr UINT kCheckedImage = 2;

}  // namespace

const MessageEntry CCustomTreeCtrl::kEntries[] = {
    OnMessage(WM_LBUTTONDOWN, &CCustomTreeCtrl::HandleButtonDown),
    OnMessage(WM_RBUTTONDOWN, &CCustomTreeCtrl::HandleButtonDown),
    // The second of two quick clicks is a click on a box as well.
    OnMessage(WM_LBUTTONDBLCLK, &CCustomTreeCtrl::HandleButtonDown),
    OnMessage(WM_RBUTTONDBLCLK, &CCustomTreeCtrl::HandleButtonDown),
    OnMessage(WM_KEYDOWN, &CCustomTreeCtrl::HandleKeyDown),
    OnMessage(WM_CHAR, &CCustomTreeCtrl::HandleChar),
    OnMessage(WM_DESTROY, &CCustomTreeCtrl::HandleDestroy),
};
const MessageTable CCustomTreeCtrl::kMessages = {&CTreeCtrl::kMessages, CCustomTreeCtrl::kEntries};

bool CCustomTreeCtrl::Attach(HWND tree) {
  if (!Subclass(tree)) {
    return false;
  }
  // Not in the dialog template: the boxes need a control that stands already.
  ::SetWindowLongPtrW(tree, GWL_STYLE, ::GetWindowLongPtrW(tree, GWL_STYLE) | TVS_CHECKBOXES);
  return true;
}

bool CCustomTreeCtrl::IsChecked(HTREEITEM item) const {
  return ItemState(item, TVIS_STATEIMAGEMASK) == INDEXTOSTATEIMAGEMASK(kCheckedImage);
}

void CCustomTreeCtrl::SetChecked(HTREEITEM item, bool checked) const {
  SetItemState(item, INDEXTOSTATEIMAGEMASK(checked ? kCheckedImage : kUncheckedImage),
               TVIS_STATEIMAGEMASK);
}

// What a walk of the subtree that ends at its top comes to first.
HTREEITEM CCustomTreeCtrl::FirstLeaf(HTREEITEM item) const {
  while (const HTREEITEM child = FirstChild(item)) {
    item = child;
  }
  return item;
}

// Each child's subtree first, the item last.
void CCustomTreeCtrl::ToggleSubtree(HTREEITEM top) const {
  const bool checked = !IsChecked(top);
  SetRedraw(false);
  for (HTREEITEM item = FirstLeaf(top); item != top;) {
    SetChecked(item, checked);
    const HTREEITEM sibling = NextSibling(item);
    item = sibling != nullptr ? FirstLeaf(sibling) : Parent(item);
  }
  SetChecked(top, checked);
  SetRedraw(true);
}

LRESULT CCustomTreeCtrl::HandleButtonDown(const MessageArgs& args) {
  UINT place = 0;
  const HTREEITEM item = HitTest(PointOf(args), &place);
  if (item == nullptr || (place & TVHT_ONITEMSTATEICON) == 0) {
    return Default(args);
  }
  // The control, which does not see the click, would have taken the focus.
  ::SetFocus(Handle());
  ToggleSubtree(item);
  return 0;
}

LRESULT CCustomTreeCtrl::HandleKeyDown(const MessageArgs& args) {
  if (args.wParam != VK_SPACE) {
    return Default(args);
  }
  if (const HTREEITEM selected = Selection()) {
    ToggleSubtree(selected);
  }
  return 0;
}

// The control would search for an item that begins with a blank, and sound when there is none.
LRESULT CCustomTreeCtrl::HandleChar(const MessageArgs& args) {
  return args.wParam == L' ' ? 0 : Default(args);
}

// The control made the pictures of the boxes, but leaves them to others to destroy.
LRESULT CCustomTreeCtrl::HandleDestroy(const MessageArgs& args) {
  const ImageListHandle boxes(reinterpret_cast<HIMAGELIST>(Send(TVM_SETIMAGELIST, TVSIL_STATE, 0)));
  return Default(args);
}

}  // namespace postmarker
