// The folders of one identity: the client's folder database, or the list of an older store.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "clients/incredimail/ImContainerMap.h"
#include "support/StopQuery.h"

namespace postmarker {

// The rows of a folder database, without paths. A file that can't be opened or understood gives an
// empty map; one that can't be read to its end, and a reading that is stopped, the rows before. The
// database may be open in the running client.
ImContainerMap ReadContainerRows(const std::wstring& database, const StopQuery& stop = {});

// The folders of an identity, without paths: from its database if there is a file of that name,
// otherwise from the older store, whose root gets `rootLabel` as its id. Empty if neither can be
// read. `identityDirectory` has no separator at its end. `stop` ends the reading of a database as
// above.
ImContainerMap ReadStoredContainers(const std::wstring& identityDirectory,
                                    const std::wstring& rootLabel, const StopQuery& stop = {});

// A new folder's row.
struct ImNewFolder {
  std::wstring id;  // a GUID in braces
  std::wstring parentId;
  uint32_t index = 0;
  std::wstring label;
  std::wstring fileName;
};

// Has none of the folder's texts a quote. The client's own tools can't name a folder that has one.
bool CanBeAdded(const ImNewFolder& folder);

// The statement that adds a folder that can be added: its texts are not escaped.
std::wstring AddFolderStatement(const ImNewFolder& folder);

// Adds the folder to a database that exists. False if it can't be added, before any statement is
// made, or if that failed; nothing is changed then.
bool AddFolder(const std::wstring& database, const ImNewFolder& folder);

// How many folders name this parent, whatever the case of its id.
uint32_t CountChildren(const ImContainerMap& containers, std::wstring_view parentId);

}  // namespace postmarker
