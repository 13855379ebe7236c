#include "wizard/SpamFolderRules.h"

#include "support/Text.h"

namespace postmarker {

bool MeansDefaultFolder(const std::string& folderId) {
  return folderId.empty() || folderId == kDefaultFolderId;
}

std::string SpamFolderIdToSave(const MailFolderRef& chosen, const MailFolderRef& defaultFolder) {
  const bool isDefault = EqualNoCase(chosen.firstId, defaultFolder.firstId) &&
                         EqualNoCase(chosen.secondId, defaultFolder.secondId);
  return isDefault ? kDefaultFolderId : chosen.firstId;
}

void TakeStoreIdFromList(const MailFolderList& folders, MailFolderRef* rec) {
  for (const MailFolderRef& folder : folders) {
    if (folder.firstId == rec->firstId) {
      rec->secondId = folder.secondId;
    }
  }
}

std::wstring FillIn(const std::wstring& text, const std::wstring& value) {
  std::wstring filled;
  size_t pos = 0;
  for (size_t found = text.find(L"%s"); found != std::wstring::npos;
       found = text.find(L"%s", pos)) {
    filled.append(text, pos, found - pos).append(value);
    pos = found + 2;
  }
  return filled.append(text, pos);
}

}  // namespace postmarker
