#include "clients/livemail/LiveFolders.h"

#include <algorithm>
#include <utility>

#include "support/Text.h"

namespace postmarker::livemail {
namespace {

constexpr std::wstring_view kRootLabel = L"\\";

// The types of rows that are folders of mail.
constexpr uint32_t kFolderTypes[] = {2, 3};
constexpr uint32_t kHiddenSpecial = 10;

// The UTF-16 units that all paths of a tree may have together.
constexpr size_t kPathUnitsPerTree = size_t{16} * 1024 * 1024;
constexpr size_t kPathUnitsPerFolder = 128;

constexpr std::pair<std::wstring_view, uint32_t> kSpecialNames[] = {
    {L"inbox", SpecialInbox},
    {L"outbox", 2},
    {L"sent items", SpecialSent},
    {L"drafts", 5},
    {L"deleted items", SpecialDeleted}};

// Deliberate: a name counts wherever in the tree the folder is, and more than what the row says.
uint32_t SpecialOf(uint32_t stored, uint32_t id, std::wstring_view name) {
  for (const auto& [special, number] : kSpecialNames) {
    if (EqualNoCase(special, name)) {
      return number;
    }
  }
  return stored != 0 ? stored : id;
}

// By parent and Special: the ids of the children, in the order of their ids.
using ChildTable = std::map<uint32_t, std::multimap<uint32_t, uint32_t>>;

ChildTable MakeChildTable(const WlmFolders& folders) {
  ChildTable children;
  for (const auto& [id, folder] : folders) {
    children[folder.ParentId].emplace(folder.Special, id);
  }
  return children;
}

// The path of a folder where it does not depend on another's.
std::optional<std::wstring> StartingPath(const WlmFolder& folder, const WlmFolders& folders) {
  if (folder.Id == kNoFolder || folder.Name.empty()) {
    return std::wstring(kRootLabel);
  }
  if (folder.ParentId == kNoFolder) {
    return std::wstring(kRootLabel).append(L"\\").append(folder.Name);
  }
  return folders.contains(folder.ParentId) ? std::nullopt : std::optional(L"\\" + folder.Name);
}

}  // namespace

std::optional<uint32_t> LowBits(const JetValue& value) {
  if (const int32_t* const number = value.AsInt32()) {
    return static_cast<uint32_t>(*number);
  }
  const int64_t* const number = value.AsInt64();
  return number == nullptr ? std::nullopt : std::optional(static_cast<uint32_t>(*number));
}

std::optional<WlmFolder> FolderOfRow(const JetRow& row, const std::wstring& storeRoot) {
  const auto number = [&row](const wchar_t* column) { return LowBits(ValueOf(row, column)); };
  const std::optional<uint32_t> type = number(L"FLDCOL_TYPE");
  const uint32_t special = number(L"FLDCOL_SPECIAL").value_or(0);
  const std::wstring* const name = ValueOf(row, L"FLDCOL_NAMEW").AsText();
  const std::wstring* const path = ValueOf(row, L"FLDCOL_PATH").AsText();
  const bool isMail =
      std::find(std::begin(kFolderTypes), std::end(kFolderTypes), type) != std::end(kFolderTypes);
  if (!isMail || special == kHiddenSpecial || name == nullptr || path == nullptr) {
    return std::nullopt;
  }
  WlmFolder folder;
  folder.Id = number(L"FLDCOL_ID").value_or(0);
  const uint32_t parent = number(L"FLDCOL_PARENT").value_or(0);
  folder.ParentId = parent == 0 ? kNoFolder : parent;
  folder.Special = SpecialOf(special, folder.Id, *name);
  folder.Name = *name;
  folder.StoreFile = storeRoot + *path;
  return folder;
}

void FillDisplayPaths(WlmFolders* folders) {
  const ChildTable children = MakeChildTable(*folders);
  std::vector<uint32_t> ready;  // folders with a path, level by level
  for (auto& [id, folder] : *folders) {
    if (std::optional<std::wstring> path = StartingPath(folder, *folders)) {
      folder.DisplayPath = *std::move(path);
      ready.push_back(id);
    }
  }
  size_t unitsLeft = kPathUnitsPerTree + kPathUnitsPerFolder * folders->size();
  for (size_t next = 0; next < ready.size(); ++next) {
    const auto below = children.find(ready[next]);
    if (ready[next] == kNoFolder || below == children.end()) {
      continue;
    }
    const std::wstring& parentPath = folders->at(ready[next]).DisplayPath;
    for (const auto& [special, id] : below->second) {
      WlmFolder& child = folders->at(id);
      if (!child.DisplayPath.empty()) {
        continue;
      }
      const size_t length = parentPath.size() + 1 + child.Name.size();
      if (length > unitsLeft) {
        return;
      }
      unitsLeft -= length;
      child.DisplayPath.reserve(length);
      child.DisplayPath.append(parentPath).append(L"\\").append(child.Name);
      ready.push_back(id);
    }
  }
}

void FillRootIds(WlmFolders* folders) {
  // A folder comes after its parent.
  for (const uint32_t id : OrderFolders(*folders)) {
    WlmFolder& folder = folders->at(id);
    folder.RootIdText = folder.ParentId == kNoFolder ? std::to_wstring(id)
                                                     : folders->at(folder.ParentId).RootIdText;
  }
}

std::vector<uint32_t> OrderFolders(const WlmFolders& folders) {
  const ChildTable children = MakeChildTable(folders);
  std::vector<uint32_t> pending;  // the next one is the last element
  const auto addChildren = [&](uint32_t parent) {
    const auto below = children.find(parent);
    if (below == children.end()) {
      return;
    }
    for (auto child = below->second.rbegin(); child != below->second.rend(); ++child) {
      // A folder with the id of none would have the top folders below it.
      if (child->second != kNoFolder) {
        pending.push_back(child->second);
      }
    }
  };
  std::vector<uint32_t> ordered;
  ordered.reserve(folders.size());
  addChildren(kNoFolder);
  while (!pending.empty()) {
    ordered.push_back(pending.back());
    pending.pop_back();
    addChildren(ordered.back());
  }
  return ordered;
}

void AppendFolders(const WlmFolders& folders, MailFolderList* list) {
  for (const uint32_t id : OrderFolders(folders)) {
    const WlmFolder& folder = folders.at(id);
    if (!folder.DisplayPath.empty()) {
      list->push_back(
          {folder.DisplayPath, std::to_string(id), Narrow(folder.RootIdText), folder.IsFolder});
    }
  }
}

std::optional<uint32_t> FindFolderBySpecial(const WlmFolders& folders, uint32_t special,
                                            std::string_view rootFilter) {
  const std::wstring root = Widen(rootFilter);
  const auto found = std::find_if(folders.begin(), folders.end(), [&](const auto& entry) {
    const WlmFolder& folder = entry.second;
    const auto parent = folders.find(folder.ParentId);
    return folder.Special == special && folder.ParentId != kNoFolder && parent != folders.end() &&
           parent->second.ParentId == kNoFolder &&
           (root.empty() || EqualNoCase(folder.RootIdText, root));
  });
  return found == folders.end() ? std::nullopt : std::optional(found->first);
}

}  // namespace postmarker::livemail
