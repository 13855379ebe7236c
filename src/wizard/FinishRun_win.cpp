// What the wizard changes on the machine: the operations of the sheet by which the spam folder is
// chosen and everything is written out at Finish.
#include <array>

#include "clients/ClientTable.h"
#include "clients/HookModule_win.h"
#include "controls/KsMessageBoxDlg_win.h"
#include "resource.h"
#include "settings/AddressLists.h"
#include "settings/FilterSettings.h"
#include "settings/GlobalSettings.h"
#include "settings/Recommendations_win.h"
#include "support/Text.h"
#include "ui/CWinApp.h"
#include "wizard/CWizardSheet_win.h"
#include "wizard/SpamFolderRules.h"

namespace postmarker {
namespace {

// The advice to set the spam filter up, which is done with.
constexpr uint32_t kSetUpRecommendation = 12;

// By which the rule inside a client recognises mails that the filter marked.
constexpr wchar_t kSpamMark[] = L"[KSSpam]";

constexpr uint32_t kStoreIdRoom = 4095;

std::string SavedStoreId(const FilterSettings& settings) {
  std::array<char, kStoreIdRoom + 1> id = {};
  uint32_t size = kStoreIdRoom;
  settings.GetMessageStoreId(id.data(), &size);
  return id.data();  // up to the first zero byte
}

}  // namespace

ResultCode CWizardSheet::LoadConfiguredSpamFolder(MailFolderRef* rec) {
  if (m_request == nullptr) {
    return kFail;
  }
  {
    const FilterSettings settings(GetClientSettingsName());
    rec->firstId = settings.GetSpamFolderId();
    rec->secondId = SavedStoreId(settings);
    rec->flag = 1;
    rec->name = settings.GetSpamFolderName();
  }
  if (Client().hasLocalFolderIds) {
    MailFolderRef ignored;
    GetDefaultFolder(&ignored);
    MailFolderList folders;
    GetFolders(&folders);
    TakeStoreIdFromList(folders, rec);
  }
  if (MeansDefaultFolder(rec->firstId)) {
    GetDefaultFolder(rec);
  }
  m_request->spamFolder = *rec;
  return kOk;
}

ResultCode CWizardSheet::SetSpamFolder(const MailFolderRef& rec) {
  if (m_request == nullptr) {
    return kFail;
  }
  m_request->spamFolder = rec;
  if (Client().hasLocalFolderIds) {
    MailFolderRef defaultFolder;
    GetDefaultFolder(&defaultFolder);
    m_request->spamFolder.firstId = SpamFolderIdToSave(rec, defaultFolder);
  }
  return kOk;
}

void CWizardSheet::SaveSettings(const ClientRow& client, bool* moveChanged,
                                bool* folderChanged) const {
  const WizardRequest& request = *m_request;
  FilterSettings settings(GetClientSettingsName());
  *moveChanged = (settings.GetMoveEmails() != 0 ? 1 : 0) != request.moveEmails;
  *folderChanged = !EqualNoCase(request.spamFolder.firstId, settings.GetSpamFolderId());
  settings.SetMoveEmails(request.moveEmails);
  settings.SetAddBlocked(request.addBlocked);
  settings.SetAddUnblocked(request.addUnblocked);
  settings.SetSpamFolderId(request.spamFolder.firstId);
  settings.SetShowWizard(0);
  settings.SetSpamFolderName(request.spamFolder.name);
  if (!client.hasLocalFolderIds) {
    const std::string& storeId = request.spamFolder.secondId;
    settings.SetMessageStoreId(storeId.data(), static_cast<uint32_t>(storeId.size()));
  }
}

void CWizardSheet::RefreshStoreId(const ClientRow& client) const {
  std::string storeId;
  if (client.hasLocalFolderIds && client.adapter->ReadStoreId(&storeId)) {
    FilterSettings settings{std::wstring(client.settingsName)};
    settings.SetMessageStoreId(storeId.data(), static_cast<uint32_t>(storeId.size()));
  }
}

void CWizardSheet::NotifyClient(const ClientRow& client) const {
  if (client.hasLocalFolderIds) {
    const std::wstring text = FillIn(LoadText(IDS_RESTART_CLIENT), m_request->clientName);
    ShowMessageBox(nullptr, text, Caption(), MB_OK | MB_ICONINFORMATION);
  }
  client.adapter->SetMoveMails(m_request->moveEmails != 0);
}

ResultCode CWizardSheet::ApplySettings() {
  if (m_request == nullptr) {
    return kOk;
  }
  const ClientRow& client = Client();
  (void)SetLastConfigured(m_request->clientName);
  (void)SetActionPlugin(m_request->clientName);
  (void)SetRecommendationBit(kSetUpRecommendation, false);
  bool moveChanged = false;
  bool folderChanged = false;
  SaveSettings(client, &moveChanged, &folderChanged);
  for (const std::wstring& address : m_request->prefillAddresses) {
    (void)AddAddressToWhitelist(address, true);
  }
  RefreshStoreId(client);
  AddSpamRule(client.hookModule, kSpamMark);
  if (moveChanged || folderChanged) {
    NotifyClient(client);
  }
  return kOk;
}

}  // namespace postmarker
