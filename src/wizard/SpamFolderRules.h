// What the folder id "0" means, and texts of the finishing run. No window and no registry is
// needed.
#pragma once

#include <string>

#include "postmarker/MailFolderRef.h"

namespace postmarker {

// Stands for the client's default folder, whatever its id is now.
inline constexpr char kDefaultFolderId[] = "0";

// Does a saved id stand for the default folder.
bool MeansDefaultFolder(const std::string& folderId);

// The id to save for a chosen folder of a client with local folder ids: "0" if both of its ids
// equal those of the default folder without regard to case, otherwise its own.
std::string SpamFolderIdToSave(const MailFolderRef& chosen, const MailFolderRef& defaultFolder);

// Gives *rec the store id of the last folder in the list whose first id equals rec's exactly. What
// the client says now wins over what was saved.
void TakeStoreIdFromList(const MailFolderList& folders, MailFolderRef* rec);

// The text with each "%s" replaced by `value`; all else stays as it is.
std::wstring FillIn(const std::wstring& text, const std::wstring& value);

}  // namespace postmarker
