// The older store's list of folders, Folders.imm: entries one after the other, each followed by
// its children.
#pragma once

#include <string>
#include <string_view>

#include "clients/incredimail/ImContainerMap.h"
#include "support/Results.h"

namespace postmarker {

// The folders of a list, without paths. The root is added: its id is `rootLabel`, or the zero id if
// that is empty, and all other texts of it are empty. Of several folders with one id the last
// stays. What is cut short or makes no sense ends the list there; what came before it stays.
// A folder below the top level has its label as its FileName.
ImContainerMap ParseFolderFile(std::string_view bytes, std::wstring_view rootLabel);

// The same of a file. A file that can't be read gives a failure and an empty map.
ResultCode ReadFolderFile(ImContainerMap* containers, const std::wstring& rootLabel,
                          const std::wstring& path);

// The base name of the files of the folder with this id, whatever its case; empty if it is not in
// the list. Unlike ParseFolderFile it gives the stored name also below the top level.
std::wstring FindContainerName(std::string_view bytes, std::wstring_view id);

// The same of a file; empty as well if it can't be read.
std::wstring FindContainerFile(const std::wstring& id, const std::wstring& path);

// The path of the headers and the base name of the files of one folder of an identity. A folder
// without a name fails, and *headerPath is as it was.
ResultCode ResolveOlderContainer(const std::wstring& identityDirectory, const std::wstring& id,
                                 std::wstring* headerPath, std::wstring* fileName);

}  // namespace postmarker
