#include "wizard/SpamFolderChoice_win.h"

#include <array>

#include "clients/ClientTable.h"
#include "settings/FilterSettings.h"
#include "wizard/SpamFolderRules.h"
#include "wizard/WizardServices_win.h"

namespace postmarker {
namespace {

constexpr uint32_t kMaxStoreIdBytes = 4095;

std::string SavedStoreId(const FilterSettings& settings) {
  std::array<char, kMaxStoreIdBytes + 1> id = {};
  uint32_t size = kMaxStoreIdBytes;
  settings.GetMessageStoreId(id.data(), &size);
  return id.data();  // up to the first zero byte
}

MailFolderRef SavedSpamFolder(const std::wstring& settingsName) {
  const FilterSettings settings(settingsName);
  return {settings.GetSpamFolderName(), settings.GetSpamFolderId(), SavedStoreId(settings), 1};
}

}  // namespace

MailFolderRef ReadConfiguredSpamFolder(WizardServices* wizard) {
  MailFolderRef rec = SavedSpamFolder(wizard->GetClientSettingsName());
  if (wizard->Client().hasLocalFolderIds) {
    MailFolderRef ignored;
    wizard->GetDefaultFolder(&ignored);
    MailFolderList folders;
    wizard->GetFolders(&folders);
    TakeStoreIdFromList(folders, &rec);
  }
  if (MeansDefaultFolder(rec.firstId)) {
    wizard->GetDefaultFolder(&rec);
  }
  wizard->Request().spamFolder = rec;
  return rec;
}

void TakeSpamFolder(WizardServices* wizard, const MailFolderRef& chosen) {
  WizardRequest& request = wizard->Request();
  request.spamFolder = chosen;
  if (wizard->Client().hasLocalFolderIds) {
    MailFolderRef defaultFolder;
    wizard->GetDefaultFolder(&defaultFolder);
    request.spamFolder.firstId = SpamFolderIdToSave(chosen, defaultFolder);
  }
}

}  // namespace postmarker
