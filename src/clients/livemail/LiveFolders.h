// The folder tree of a Windows Live Mail store: what its rows mean, paths and order.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "clients/livemail/JetValue.h"
#include "postmarker/MailFolderRef.h"

namespace postmarker::livemail {

// What no folder is: the parent of the folders at the top.
inline constexpr uint32_t kNoFolder = 0xFFFFFFFF;

// Values of WlmFolder::Special. Folders without a purpose have their id there.
inline constexpr uint32_t SpecialInbox = 1;
inline constexpr uint32_t SpecialSent = 3;
inline constexpr uint32_t SpecialDeleted = 4;

// One folder. Texts are UTF-16.
struct WlmFolder {
  uint32_t Id = 0;
  uint32_t ParentId = kNoFolder;
  std::wstring RootIdText;  // id of the topmost folder above it; empty if it doesn't hang on one
  uint32_t Special = 0;
  std::wstring Name;
  std::wstring DisplayPath;
  std::wstring StoreFile;  // full path of its folder on disk
  uint8_t IsFolder = 1;
};

// By Id.
using WlmFolders = std::map<uint32_t, WlmFolder>;

// The low 32 bits of a number of either width; nothing for other values.
std::optional<uint32_t> LowBits(const JetValue& value);

// The folder that a row of the table "Folders" stands for, without DisplayPath and RootIdText.
// Nothing for rows that are no folders of mail, or lack a name or path. `storeRoot` ends in a
// separator.
std::optional<WlmFolder> FolderOfRow(const JetRow& row, const std::wstring& storeRoot);

// Sets every DisplayPath. A folder at the top has two backslashes and its name; one without a name
// has a single backslash; any other has its parent's path, a backslash and its name, and a parent
// that is missing has an empty path. A folder that is its own ancestor keeps an empty path, as do
// those below it. Paths of a tree nested without measure would be longer than memory: once all of
// them together pass a limit that real trees are far from, deeper folders stay without a path.
void FillDisplayPaths(WlmFolders* folders);

// Sets every RootIdText.
void FillRootIds(WlmFolders* folders);

// The ids in display order: the tree in pre-order, the children of one parent sorted by Special and
// then by Id. Folders that don't hang on a top folder are left out, and the id of no folder.
std::vector<uint32_t> OrderFolders(const WlmFolders& folders);

// Appends the folders in display order to *list, but for those without a path.
void AppendFolders(const WlmFolders& folders, MailFolderList* list);

// The id of the first folder with this Special that is a child of a top folder. Those whose
// RootIdText differs from a filter that is not empty are passed over; case is ignored.
std::optional<uint32_t> FindFolderBySpecial(const WlmFolders& folders, uint32_t special,
                                            std::string_view rootFilter);

}  // namespace postmarker::livemail
