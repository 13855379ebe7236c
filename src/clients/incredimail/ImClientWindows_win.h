// The running client's windows.
#pragma once

#include <windows.h>

#include <string>

namespace postmarker::incredimail {

// Is this top-level window the client's, with its folder tree inside. If so, *directory becomes
// the folder of the client's program in lower case, with a backslash at its end.
bool IsClientWindow(HWND window, std::wstring* directory);

// Goes through the top-level windows and finds the folder tree of each running client. Nothing is
// sent to it: the client sees a new folder when it next reads its database. This is the place from
// which a message to the tree would go.
void LocateClientFolderTree();

}  // namespace postmarker::incredimail
