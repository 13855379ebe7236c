#include "clients/storeapi/StoreFolderTree.h"

#include <algorithm>
#include <cstdlib>
#include <unordered_set>
#include <utility>
#include <vector>

#include "support/Text.h"

namespace postmarker::storeapi {
namespace {

// The bytes that all paths of a store may have together.
constexpr size_t kPathBytesPerStore = size_t{16} * 1024 * 1024;
constexpr size_t kPathBytesPerFolder = 128;

constexpr auto kWrongStructSize = static_cast<ResultCode>(0x800CCF67);

// The store need not have terminated the name.
std::string_view NameOf(const StoreFolderProps& props) {
  const char* const end = std::find(props.szName, props.szName + kFolderNameRoom, '\0');
  return {props.szName, static_cast<size_t>(end - props.szName)};
}

}  // namespace

StoreFolderProps ToShortForm(const StoreFolderPropsLong& props) {
  StoreFolderProps shortForm;
  shortForm.dwFolderId = static_cast<uint32_t>(props.dwFolderId);
  shortForm.cSubFolders = props.cSubFolders;
  shortForm.sfType = props.sfType;
  shortForm.cUnread = props.cUnread;
  shortForm.cMessage = props.cMessage;
  std::copy(std::begin(props.szName), std::end(props.szName), shortForm.szName);
  return shortForm;
}

StoreFolderKind KindOf(int32_t specialFolderType) {
  constexpr int32_t kFirst = 0;
  constexpr int32_t kLast = 4;
  return specialFolderType >= kFirst && specialFolderType <= kLast
             ? static_cast<StoreFolderKind>(specialFolderType + 1)
             : StoreFolderKind::kOther;
}

std::string FolderIdText(uint32_t folderId) {
  return std::to_string(static_cast<int32_t>(folderId));
}

uint32_t ParseFolderId(const std::string& text) {
  constexpr int kDecimal = 10;
  return static_cast<uint32_t>(std::strtoll(text.c_str(), nullptr, kDecimal));
}

std::string SubFolderFailureText(ResultCode result) {
  return "getfirstsubfolder failed hr=" + std::to_string(result) +
         " hrstructsize=" + std::to_string(kWrongStructSize);
}

// A run of taken keys is passed in one step the next time, or a store that repeats an id would be
// searched again for each folder.
StoreFolderTree::Key StoreFolderTree::FreeKey(Key wanted) {
  std::vector<Key> passed;
  Key key = wanted;
  for (auto taken = m_nextFree.find(key); taken != m_nextFree.end(); taken = m_nextFree.find(key)) {
    passed.push_back(key);
    key = taken->second;
  }
  passed.push_back(key);
  for (const Key each : passed) {
    m_nextFree[each] = key + 1;
  }
  return key;
}

void StoreFolderTree::SetPath(std::string_view name, Node* node) {
  std::string& path = node->folder.path;
  if (node->parent) {
    const Node& parent = m_nodes.at(*node->parent);
    const size_t size = parent.folder.path.size() + 1 + name.size();
    const size_t limit = kPathBytesPerStore + kPathBytesPerFolder * m_nodes.size();
    node->hasPath = parent.hasPath && m_pathBytes + size <= limit;
    if (!node->hasPath) {
      return;
    }
    path.reserve(size);
    path.append(parent.folder.path).append("\\");
  }
  path.append(name);
  m_pathBytes += path.size();
}

StoreFolderTree::Key StoreFolderTree::Add(std::optional<Key> parent,
                                          const StoreFolderProps& props) {
  Node node;
  node.parent = parent;
  SetPath(NameOf(props), &node);
  node.folder.fileName = std::string(NameOf(props)) + ".dbx";
  node.folder.folderId = props.dwFolderId;
  node.folder.parentId = parent ? At(*parent).folderId : 0;
  node.folder.kind = KindOf(props.sfType);
  const Key key = FreeKey(props.dwFolderId);
  m_nodes.emplace(key, std::move(node));
  if (!m_root) {
    m_root = key;
  }
  return key;
}

MailFolderRef StoreFolderTree::RecordOf(Key key) const {
  const StoreFolderNode& folder = At(key);
  return {L"\\\\" + Widen(folder.path), key == m_root ? "0" : FolderIdText(folder.folderId),
          FolderIdText(At(*m_root).folderId), 1};
}

void StoreFolderTree::AppendRecords(MailFolderList* folders) const {
  if (!m_root) {
    return;
  }
  folders->push_back(RecordOf(*m_root));
  std::unordered_set<Key> listed = {*m_root};
  std::vector<Key> waiting;  // a folder and those above it that are not listed yet
  for (const auto& [first, unused] : m_nodes) {
    for (Key key = first; !listed.contains(key); key = *m_nodes.at(key).parent) {
      waiting.push_back(key);
    }
    for (; !waiting.empty(); waiting.pop_back()) {
      listed.insert(waiting.back());
      if (m_nodes.at(waiting.back()).hasPath) {
        folders->push_back(RecordOf(waiting.back()));
      }
    }
  }
}

std::optional<MailFolderRef> StoreFolderTree::FindRecord(StoreFolderKind kind) const {
  for (const auto& [key, node] : m_nodes) {
    if (node.folder.kind == kind && node.hasPath) {
      return RecordOf(key);
    }
  }
  return std::nullopt;
}

}  // namespace postmarker::storeapi
