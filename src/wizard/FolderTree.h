// How a client's folder list becomes a tree. No window is needed: the steps run over a small
// interface, which the tree control and a layout in memory both have.
//
// Paths are split although some adapters have just joined them from a tree. A full path is all that
// a MailFolderRef says of a folder's place, and that record is what hosts, the suite's modules and
// half of the clients deal in: they know no parents. One form for all keeps clients out of the
// pages. Levels without a record of their own, such as a store's root, become items as well.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "postmarker/MailFolderRef.h"
#include "support/Results.h"

namespace postmarker {

// An item of a tree; 0 is none. The tree says what the number means.
using TreeItem = uintptr_t;

// A tree that paths are laid into.
class FolderTreeTarget {
 public:
  virtual ~FolderTreeTarget() = default;

  // The first child of `parent` whose text is exactly `text` and, if `match` is given and the item
  // has data, whose data has match's two ids. 0 if there is none.
  virtual TreeItem FindChild(TreeItem parent, std::wstring_view text,
                             const MailFolderRef* match) = 0;

  // Adds a child at the end; with `record`, a copy of it becomes the item's data.
  virtual TreeItem AddChild(TreeItem parent, std::wstring_view text,
                            const MailFolderRef* record) = 0;

  virtual void Expand(TreeItem item) = 0;
};

// Walks `path`, level by level at its backslashes, downward from `parent`, adds what is missing
// with a copy of `record` as its data, and expands what it passed. `match`, if given, narrows the
// search on the first level only. Empty levels, as leading backslashes give, are passed over.
// Returns the deepest item; 0 for an empty path or no parent.
TreeItem InsertPath(FolderTreeTarget* tree, std::wstring_view path, TreeItem parent,
                    const MailFolderRef* record, const MailFolderRef* match);

// The stores that were laid into a tree. Lives as long as the tree: a second fill adds only stores
// that are new.
class SeenStores {
 public:
  // Notes a store by its id, whatever its case. False if it was there already.
  bool Add(const std::string& storeId);

 private:
  std::unordered_set<std::wstring> m_lowerIds;
};

// A tree in memory, built store by store from a folder list in time linear in the list. REQUIRES:
// the list and the seen stores outlive the layout, and the list does not change.
class FolderTreeLayout : public FolderTreeTarget {
 public:
  struct Item {
    TreeItem parent = 0;  // kRoot for the top
    std::wstring text;
    const MailFolderRef* record = nullptr;  // in the list; null for none
    bool bold = false;
    bool expanded = false;
  };

  static constexpr TreeItem kRoot = 1;

  FolderTreeLayout(const MailFolderList& list, SeenStores* seenStores);

  // Lays out the whole store that `folder` belongs to. A store that the tree has seen gives 0 and
  // leaves *item alone; otherwise *item becomes the item of the store's root, if the list has a
  // record of it. Returns E_FAIL if the root can't be added.
  ResultCode FillFolderTree(const MailFolderRef& folder, TreeItem* item);

  // Lays out all stores: those of folders with a nonzero flag first, each in list order, and
  // expands each store's root.
  void FillAll();

  // The items in the order of their making, parents before their children. The item of index i has
  // the number i + kRoot + 1.
  [[nodiscard]] const std::vector<Item>& Items() const { return m_items; }
  [[nodiscard]] const Item& At(TreeItem item) const { return m_items[item - kRoot - 1]; }

  TreeItem FindChild(TreeItem parent, std::wstring_view text, const MailFolderRef* match) override;
  TreeItem AddChild(TreeItem parent, std::wstring_view text, const MailFolderRef* record) override;
  void Expand(TreeItem item) override;

 private:
  // The folders of one store, as indexes in list order, under its lower-case id.
  using StoreIndex = std::unordered_map<std::wstring, std::vector<size_t>>;

  ResultCode LayOutRoot(const std::vector<size_t>& folders, const std::wstring& root,
                        TreeItem* item);
  void LayOutLevels(const std::vector<size_t>& folders, const std::wstring& root, TreeItem item);

  const MailFolderList& m_list;
  StoreIndex m_stores;
  // Store id and path, lower-case, to the first folder of the list that has both.
  std::unordered_map<std::wstring, size_t> m_folderByPath;
  SeenStores* m_seenStores;
  std::vector<Item> m_items;
  // Parent and text to the children of that text, in the order of their making.
  std::unordered_map<std::wstring, std::vector<TreeItem>> m_children;
};

// The store's name in a folder's path: the path as it stands if it has no backslash; otherwise its
// first level once all double backslashes are removed.
std::wstring StoreNameOf(const std::wstring& path);

}  // namespace postmarker
