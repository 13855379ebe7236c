#include "wizard/FolderTree.h"

#include <algorithm>

#include "support/Text.h"

namespace postmarker {
namespace {

std::wstring RemoveAll(std::wstring_view text, std::wstring_view part) {
  std::wstring rest;
  rest.reserve(text.size());
  size_t pos = 0;
  while (pos < text.size()) {
    const size_t found = part.empty() ? std::wstring_view::npos : text.find(part, pos);
    if (found == std::wstring_view::npos) {
      break;
    }
    rest.append(text.substr(pos, found - pos));
    pos = found + part.size();
  }
  rest.append(text.substr(pos));
  return rest;
}

std::wstring StoreKey(const std::string& storeId) {
  return ToLower(Widen(storeId));
}

// A key of two texts. The length in front keeps different pairs apart.
std::wstring PairKey(std::wstring_view first, std::wstring_view second) {
  std::wstring key = std::to_wstring(first.size());
  key.append(L":").append(first).append(second);
  return key;
}

bool SameIds(const MailFolderRef& a, const MailFolderRef& b) {
  return a.firstId == b.firstId && a.secondId == b.secondId;
}

}  // namespace

TreeItem InsertPath(FolderTreeTarget* tree, std::wstring_view path, TreeItem parent,
                    const MailFolderRef* record, const MailFolderRef* match) {
  if (tree == nullptr || path.empty() || parent == 0) {
    return 0;
  }
  std::vector<TreeItem> passed;
  TreeItem current = parent;
  while (true) {
    const size_t cut = path.find(L'\\');
    const std::wstring_view head = path.substr(0, cut);
    if (!head.empty()) {
      const TreeItem found = tree->FindChild(current, head, match);
      current = found != 0 ? found : tree->AddChild(current, head, record);
    }
    if (current == 0) {
      break;
    }
    if (passed.empty() || passed.back() != current) {
      passed.push_back(current);
    }
    match = nullptr;
    if (cut == std::wstring_view::npos || cut + 1 == path.size()) {
      break;
    }
    path.remove_prefix(cut + 1);
  }
  std::for_each(passed.rbegin(), passed.rend(), [tree](TreeItem item) { tree->Expand(item); });
  return passed.empty() ? 0 : passed.back();
}

std::wstring StoreNameOf(const std::wstring& path) {
  if (path.find(L'\\') == std::wstring::npos) {
    return path;
  }
  const std::wstring single = RemoveAll(path, L"\\\\");
  return single.substr(0, single.find(L'\\'));
}

bool SeenStores::Add(const std::string& storeId) {
  return m_lowerIds.insert(StoreKey(storeId)).second;
}

FolderTreeLayout::FolderTreeLayout(const MailFolderList& list, SeenStores* seenStores)
    : m_list(list), m_seenStores(seenStores) {
  for (size_t i = 0; i < list.size(); ++i) {
    const std::wstring store = StoreKey(list[i].secondId);
    m_stores[store].push_back(i);
    m_folderByPath.try_emplace(PairKey(store, ToLower(list[i].name)), i);
  }
}

TreeItem FolderTreeLayout::FindChild(TreeItem parent, std::wstring_view text,
                                     const MailFolderRef* match) {
  const auto children = m_children.find(PairKey(std::to_wstring(parent), text));
  if (children == m_children.end()) {
    return 0;
  }
  for (const TreeItem child : children->second) {
    const MailFolderRef* record = At(child).record;
    if (match == nullptr || record == nullptr || SameIds(*record, *match)) {
      return child;
    }
  }
  return 0;
}

TreeItem FolderTreeLayout::AddChild(TreeItem parent, std::wstring_view text,
                                    const MailFolderRef* record) {
  m_items.push_back({parent, std::wstring(text), record});
  const TreeItem item = m_items.size() + kRoot;
  m_children[PairKey(std::to_wstring(parent), text)].push_back(item);
  return item;
}

void FolderTreeLayout::Expand(TreeItem item) {
  if (item > kRoot) {
    m_items[item - kRoot - 1].expanded = true;
  }
}

ResultCode FolderTreeLayout::FillFolderTree(const MailFolderRef& folder, TreeItem* item) {
  if (!m_seenStores->Add(folder.secondId)) {
    return kOk;
  }
  const std::wstring root = StoreNameOf(folder.name);
  const std::vector<size_t>& folders = m_stores[StoreKey(folder.secondId)];
  const ResultCode result = LayOutRoot(folders, root, item);
  if (Failed(result)) {
    return result;
  }
  LayOutLevels(folders, root, *item);
  return kOk;
}

ResultCode FolderTreeLayout::LayOutRoot(const std::vector<size_t>& folders,
                                        const std::wstring& root, TreeItem* item) {
  const std::wstring rootPath = L"\\\\" + root;
  for (const size_t index : folders) {
    const MailFolderRef& folder = m_list[index];
    if (!EqualNoCase(folder.name, rootPath)) {
      continue;
    }
    *item = InsertPath(this, root, kRoot, &folder, &folder);
    if (*item == 0) {
      return kFail;
    }
    m_items[*item - kRoot - 1].bold = true;
  }
  return kOk;
}

void FolderTreeLayout::LayOutLevels(const std::vector<size_t>& folders, const std::wstring& root,
                                    TreeItem item) {
  for (const size_t index : folders) {
    const MailFolderRef& folder = m_list[index];
    const size_t pos = folder.name.rfind(L'\\');
    // What has its last backslash among the two leading ones is a root.
    if (pos == std::wstring::npos || pos <= 1) {
      continue;
    }
    const std::wstring parentKey =
        PairKey(StoreKey(folder.secondId), ToLower(folder.name.substr(0, pos)));
    const auto parent = m_folderByPath.find(parentKey);
    if (parent == m_folderByPath.end()) {
      continue;
    }
    // Deliberate: the store's name goes wherever it stands in the path, also within a folder's
    // name.
    const std::wstring path = RemoveAll(folder.name, root);
    InsertPath(this, path, item, &folder, &m_list[parent->second]);
  }
}

void FolderTreeLayout::FillAll() {
  for (const bool flagged : {true, false}) {
    for (const MailFolderRef& folder : m_list) {
      if ((folder.flag != 0) != flagged) {
        continue;
      }
      TreeItem item = 0;
      if (Succeeded(FillFolderTree(folder, &item)) && item != 0) {
        Expand(item);
      }
    }
  }
}

}  // namespace postmarker
