#include "wizard/FolderTreeControl_win.h"

#include <memory>
#include <vector>

#include "support/Text.h"

namespace postmarker {
namespace {

// Where a click means the item itself.
constexpr UINT kHitLabelOrIcon = TVHT_ONITEMLABEL | TVHT_ONITEMICON | TVHT_ONITEMSTATEICON;

// The item owns a copy of the record, unless the control has no room for the item: then null.
HTREEITEM InsertOwning(const CTreeCtrl& tree, const std::wstring& text, HTREEITEM parent,
                       const MailFolderRef* record, UINT state) {
  auto data = record != nullptr ? std::make_unique<MailFolderRef>(*record) : nullptr;
  const HTREEITEM item = tree.InsertItem(text, parent, reinterpret_cast<LPARAM>(data.get()), state);
  if (item != nullptr) {
    static_cast<void>(data.release());
  }
  return item;
}

}  // namespace

const MailFolderRef* FolderOf(const CTreeCtrl& tree, HTREEITEM item) {
  return item != nullptr ? reinterpret_cast<const MailFolderRef*>(tree.ItemData(item)) : nullptr;
}

TreeItem TreeControlTarget::FindChild(TreeItem parent, std::wstring_view text,
                                      const MailFolderRef* match) {
  for (HTREEITEM child = m_tree.FirstChild(To(parent)); child != nullptr;
       child = m_tree.NextSibling(child)) {
    if (m_tree.ItemText(child) != text) {
      continue;
    }
    const MailFolderRef* data = FolderOf(m_tree, child);
    if (match == nullptr || data == nullptr ||
        (data->firstId == match->firstId && data->secondId == match->secondId)) {
      return From(child);
    }
  }
  return 0;
}

TreeItem TreeControlTarget::AddChild(TreeItem parent, std::wstring_view text,
                                     const MailFolderRef* record) {
  return From(InsertOwning(m_tree, std::wstring(text), To(parent), record, 0));
}

void FillTreeControl(const CTreeCtrl& tree, const FolderTreeLayout& layout) {
  const auto& items = layout.Items();
  std::vector<HTREEITEM> handles;
  handles.reserve(items.size());
  tree.SetRedraw(false);
  for (const FolderTreeLayout::Item& item : items) {
    const HTREEITEM parent = item.parent == FolderTreeLayout::kRoot
                                 ? TVI_ROOT
                                 : handles[item.parent - FolderTreeLayout::kRoot - 1];
    // A child of an item that was refused is left out with it.
    handles.push_back(parent != nullptr ? InsertOwning(tree, item.text, parent, item.record,
                                                       item.bold ? TVIS_BOLD : 0)
                                        : nullptr);
  }
  // From the leaves up, so that each opening shows what is open below it already.
  for (size_t i = items.size(); i-- > 0;) {
    if (items[i].expanded && handles[i] != nullptr && tree.FirstChild(handles[i]) != nullptr) {
      tree.Expand(handles[i]);
    }
  }
  if (!handles.empty()) {
    tree.EnsureVisible(handles.front());
  }
  tree.SetRedraw(true);
}

void SelectItemUnderPointer(HWND tree) {
  TVHITTESTINFO hit = {};
  ::GetCursorPos(&hit.pt);
  ::ScreenToClient(tree, &hit.pt);
  const auto item = reinterpret_cast<HTREEITEM>(
      ::SendMessageW(tree, TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit)));
  if (item != nullptr && (hit.flags & kHitLabelOrIcon) != 0) {
    ::SendMessageW(tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item));
  }
}

void FreeTreeItemData(const CTreeCtrl& tree, HTREEITEM parent) {
  for (HTREEITEM item = tree.FirstChild(parent); item != nullptr;
       item = tree.NextInWalk(item, parent)) {
    const std::unique_ptr<const MailFolderRef> data(FolderOf(tree, item));
    tree.SetItemData(item, 0);
  }
}

HTREEITEM SelectFolderItem(const CTreeCtrl& tree, const MailFolderRef& rec, HTREEITEM parent) {
  HTREEITEM item = tree.FirstChild(parent);
  while (item != nullptr) {
    const MailFolderRef* const data = FolderOf(tree, item);
    if (data != nullptr && EqualNoCase(data->secondId, rec.secondId) &&
        EqualNoCase(data->firstId, rec.firstId)) {
      tree.EnsureVisible(item);
      tree.SelectItem(item);
      return item;
    }
    item = tree.NextInWalk(item, parent, data != nullptr);
  }
  return nullptr;
}

}  // namespace postmarker
