// Folder trees in a tree control. Each item's data is a MailFolderRef that the tree owns; nobody
// but FreeTreeItemData frees them.
#pragma once

#include <string>

#include "postmarker/MailFolderRef.h"
#include "ui/CTreeCtrl.h"
#include "wizard/FolderTree.h"

namespace postmarker {

// Lays paths into a tree control that has items already.
class TreeControlTarget : public FolderTreeTarget {
 public:
  explicit TreeControlTarget(const CTreeCtrl& tree) : m_tree(tree) {}

  static TreeItem From(HTREEITEM item) { return reinterpret_cast<TreeItem>(item); }
  static HTREEITEM To(TreeItem item) { return reinterpret_cast<HTREEITEM>(item); }

  TreeItem FindChild(TreeItem parent, std::wstring_view text, const MailFolderRef* match) override;
  TreeItem AddChild(TreeItem parent, std::wstring_view text, const MailFolderRef* record) override;
  void Expand(TreeItem item) override { m_tree.Expand(To(item)); }

 private:
  const CTreeCtrl& m_tree;
};

// The folder of an item, or null. Lives as long as the item's data.
const MailFolderRef* FolderOf(const CTreeCtrl& tree, HTREEITEM item);

// Adds a layout's items at the end of the tree, in time linear in their number.
void FillTreeControl(const CTreeCtrl& tree, const FolderTreeLayout& layout);

// Selects the item under the pointer of a tree control, if the pointer is on its label or icon.
void SelectItemUnderPointer(HWND tree);

// Frees the data of all items below `parent`; TVI_ROOT for all. The items stay, without data.
void FreeTreeItemData(const CTreeCtrl& tree, HTREEITEM parent);

// Selects the first item, depth first below `parent`, whose two ids equal rec's without regard to
// case, and makes it visible. An item without data is passed over with all that is below it. Null
// if there is none.
HTREEITEM SelectFolderItem(const CTreeCtrl& tree, const MailFolderRef& rec, HTREEITEM parent);

}  // namespace postmarker
