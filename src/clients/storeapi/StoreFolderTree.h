// The folders of a store as its walk finds them, and the records that are made of them.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "clients/storeapi/StoreFolderProps.h"
#include "postmarker/MailFolderRef.h"
#include "support/Results.h"

namespace postmarker::storeapi {

// What a folder is for.
enum class StoreFolderKind {
  kInbox = 1,
  kOutbox = 2,
  kSent = 3,
  kDeleted = 4,
  kDraft = 5,
  kOther = 6,
};

// The kind that the store's special folder type stands for: 0 to 4 in the order above; -1 and all
// other types are no special folder.
StoreFolderKind KindOf(int32_t specialFolderType);

// One folder of the walk. Texts are bytes of the code page.
struct StoreFolderNode {
  std::string path;      // the names from the root on, joined by backslashes
  std::string fileName;  // of the folder's file in the store
  uint32_t folderId = 0;
  uint32_t parentId = 0;
  StoreFolderKind kind = StoreFolderKind::kOther;
};

// A folder's id as the wizard keeps it: a signed decimal number; and back. A text that does not
// begin with a number is 0, the root's.
std::string FolderIdText(uint32_t folderId);
uint32_t ParseFolderId(const std::string& text);

// What a diagnostic log says if the folders below a folder can't be read.
std::string SubFolderFailureText(ResultCode result);

// Built from the root downward: a parent is added before its children.
class StoreFolderTree {
 public:
  // The node's id, or the next one that is free if it is taken.
  using Key = uint64_t;

  // Adds a folder and returns its key. The first one is the root; it alone has no parent. A folder
  // whose path passes the limit for all paths together has an empty path and is left out of the
  // records; real stores are far from that. REQUIRES: `parent` is a key of this tree.
  Key Add(std::optional<Key> parent, const StoreFolderProps& props);

  [[nodiscard]] bool IsEmpty() const { return m_nodes.empty(); }
  [[nodiscard]] size_t Size() const { return m_nodes.size(); }
  [[nodiscard]] const StoreFolderNode& At(Key key) const { return m_nodes.at(key).folder; }

  // Appends a record for each folder: two backslashes and the path, the folder's id, the root's id
  // as that of the store, and the flag 1. The root comes first and has the id "0". The others
  // follow in the order of their keys, but none before its parent: who builds a tree from the
  // records makes up a parent that it has not seen.
  void AppendRecords(MailFolderList* folders) const;

  // The record of the first folder of a kind, in the order of keys; nothing if there is none.
  [[nodiscard]] std::optional<MailFolderRef> FindRecord(StoreFolderKind kind) const;

 private:
  struct Node {
    StoreFolderNode folder;
    std::optional<Key> parent;
    bool hasPath = true;
  };

  [[nodiscard]] Key FreeKey(Key wanted);
  void SetPath(std::string_view name, Node* node);
  [[nodiscard]] MailFolderRef RecordOf(Key key) const;

  std::map<Key, Node> m_nodes;
  std::optional<Key> m_root;
  std::unordered_map<Key, Key> m_nextFree;  // for a key that is taken: no key before this is free
  size_t m_pathBytes = 0;
};

}  // namespace postmarker::storeapi
