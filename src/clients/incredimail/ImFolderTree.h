// What the folder tree of one identity is to the person: names, paths and order.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "clients/incredimail/ImContainerMap.h"
#include "postmarker/MailFolderRef.h"

namespace postmarker {

// Gives the client's special folders the names of the person's language: the root's child with
// IndexInParent n gets the n-th name as its label. Other folders keep theirs.
void LocalizeLabels(ImContainerMap* containers, std::span<const std::wstring> names);

// Sets every Path. A folder without an id or a label has `rootLabel` itself as its path, any other
// its parent's path, a backslash and its label. A folder that does not hang on the root (its
// parent is missing, or it is its own ancestor) has an empty path, as have the ones below it.
// The paths of a tree nested without measure are longer than memory: once all of them together
// pass a limit that real trees are far from, the deeper folders stay without a path.
void FillPaths(ImContainerMap* containers, std::wstring_view rootLabel);

// The folders in display order: the tree in pre-order with the root first, the children of one
// parent sorted by IndexInParent. Those that do not hang on the root are left out. The pointers
// lead into `containers`.
std::vector<const ImContainer*> OrderContainers(const ImContainerMap& containers);

// Appends the folders in display order to *folders: the path as the name, the id, the identity's
// name as the store's id, and the flag 1. A folder without an id is no folder to choose.
// `identityName` is UTF-16.
void AppendFolders(const ImContainerMap& containers, std::wstring_view identityName,
                   MailFolderList* folders);

// The id of the root's child with this IndexInParent, empty if there is none. The root is a folder
// of the map without a parent's id.
std::wstring FindRootChild(const ImContainerMap& containers, uint32_t index);

}  // namespace postmarker
