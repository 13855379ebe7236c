#include "wizard/FinishRun_win.h"

#include <exception>
#include <utility>

#include "clients/AdapterCall_win.h"
#include "clients/ClientTable.h"
#include "clients/HookModule_win.h"
#include "controls/KsMessageBoxDlg_win.h"
#include "resource.h"
#include "settings/AddressLists.h"
#include "settings/FilterSettings.h"
#include "settings/GlobalSettings.h"
#include "settings/Recommendations_win.h"
#include "support/Results.h"
#include "support/Text.h"
#include "ui/CWinApp.h"
#include "wizard/SpamFolderRules.h"

namespace postmarker {
namespace {

// The advice to set up the spam filter.
constexpr uint32_t kSetUpRecommendation = 12;

// The rule inside a client recognizes the mails that the filter marked by this.
constexpr wchar_t kSpamMark[] = L"[KSSpam]";

FinishOutcome OutcomeOf(bool worked) {
  return worked ? FinishOutcome::kDone : FinishOutcome::kFailed;
}

}  // namespace

struct FinishRun::Step {
  FinishStep step;
  FinishOutcome (FinishRun::*run)();
};

const FinishRun::Step FinishRun::kSteps[] = {
    {FinishStep::kLastConfigured, &FinishRun::SaveLastConfigured},
    {FinishStep::kActionPlugin, &FinishRun::SaveActionPlugin},
    {FinishStep::kRecommendation, &FinishRun::ClearRecommendation},
    {FinishStep::kSettings, &FinishRun::SaveSettings},
    {FinishStep::kWhitelist, &FinishRun::WriteWhitelist},
    {FinishStep::kStoreId, &FinishRun::RefreshStoreId},
    {FinishStep::kSpamRule, &FinishRun::AddRule},
    {FinishStep::kNotice, &FinishRun::ShowNotice},
    {FinishStep::kMoveSwitch, &FinishRun::TellMoveSwitch},
};

FinishRun::FinishRun(const WizardRequest& request, const ClientRow& client,
                     std::wstring settingsName, std::wstring caption)
    : m_request(request),
      m_client(client),
      m_settingsName(std::move(settingsName)),
      m_caption(std::move(caption)) {}

std::vector<FinishRecord> FinishRun::Run() {
  std::vector<FinishRecord> records;
  for (const Step& step : kSteps) {
    FinishOutcome outcome = FinishOutcome::kFailed;
    try {
      outcome = (this->*step.run)();
    } catch (const std::exception&) {
      // Out of memory, at worst; the next step may need less.
      outcome = FinishOutcome::kFailed;
    }
    records.push_back({step.step, outcome});
  }
  return records;
}

FinishOutcome FinishRun::SaveLastConfigured() {
  return OutcomeOf(SetLastConfigured(m_request.clientName));
}

FinishOutcome FinishRun::SaveActionPlugin() {
  return OutcomeOf(SetActionPlugin(m_request.clientName));
}

FinishOutcome FinishRun::ClearRecommendation() {
  return OutcomeOf(SetRecommendationBit(kSetUpRecommendation, false) != 0);
}

FinishOutcome FinishRun::SaveSettings() {
  FilterSettings settings(m_settingsName);
  const bool moveChanged = (settings.GetMoveEmails() != 0 ? 1 : 0) != m_request.moveEmails;
  const bool folderChanged = !EqualNoCase(m_request.spamFolder.firstId, settings.GetSpamFolderId());
  m_isChanged = moveChanged || folderChanged;
  settings.SetMoveEmails(m_request.moveEmails);
  settings.SetAddBlocked(m_request.addBlocked);
  settings.SetAddUnblocked(m_request.addUnblocked);
  settings.SetSpamFolderId(m_request.spamFolder.firstId);
  settings.SetShowWizard(0);
  settings.SetSpamFolderName(m_request.spamFolder.name);
  if (!m_client.hasLocalFolderIds) {
    const std::string& storeId = m_request.spamFolder.secondId;
    settings.SetMessageStoreId(storeId.data(), static_cast<uint32_t>(storeId.size()));
  }
  return OutcomeOf(Succeeded(settings.Save()));
}

FinishOutcome FinishRun::WriteWhitelist() {
  if (m_request.prefillAddresses.empty()) {
    return FinishOutcome::kNotNeeded;
  }
  AddAddressesToWhitelist(m_request.prefillAddresses);
  return FinishOutcome::kDone;
}

FinishOutcome FinishRun::RefreshStoreId() {
  if (!m_client.hasLocalFolderIds) {
    return FinishOutcome::kNotNeeded;
  }
  std::string storeId;
  const ResultCode read =
      CallAdapter([&] { return m_client.adapter->ReadStoreId(&storeId) ? kOk : kFail; });
  if (Failed(read)) {
    return FinishOutcome::kFailed;
  }
  FilterSettings settings(m_settingsName);
  settings.SetMessageStoreId(storeId.data(), static_cast<uint32_t>(storeId.size()));
  return OutcomeOf(Succeeded(settings.Save()));
}

FinishOutcome FinishRun::AddRule() {
  if (m_client.hookModule.empty()) {
    return FinishOutcome::kNotNeeded;
  }
  AddSpamRule(m_client.hookModule, kSpamMark);
  return FinishOutcome::kDone;
}

FinishOutcome FinishRun::ShowNotice() {
  if (!m_isChanged || !m_client.hasLocalFolderIds) {
    return FinishOutcome::kNotNeeded;
  }
  const std::wstring text = FillIn(LoadText(IDS_RESTART_CLIENT), m_request.clientName);
  ShowMessageBox(nullptr, text, m_caption, MB_OK | MB_ICONINFORMATION);
  return FinishOutcome::kDone;
}

FinishOutcome FinishRun::TellMoveSwitch() {
  if (!m_isChanged) {
    return FinishOutcome::kNotNeeded;
  }
  m_client.adapter->SetMoveMails(m_request.moveEmails != 0);
  return FinishOutcome::kDone;
}

}  // namespace postmarker
