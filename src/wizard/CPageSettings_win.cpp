#include "wizard/CPageSettings_win.h"

#include "clients/ClientTable.h"
#include "resource.h"
#include "settings/FilterSettings.h"
#include "ui/CPropertySheet.h"
#include "wizard/WindowHook_win.h"
#include "wizard/WizardServices_win.h"

namespace postmarker {
namespace {

constexpr uint32_t kBackAndFinish = PSWIZB_BACK | PSWIZB_FINISH;

}  // namespace

const MessageEntry CPageSettings::kEntries[] = {
    OnCommand(IDC_MOVE_EMAILS, &CPageSettings::HandleBoxClick),
    OnCommand(IDC_ADD_BLOCKED, &CPageSettings::HandleBoxClick),
    OnCommand(IDC_ADD_UNBLOCKED, &CPageSettings::HandleBoxClick),
};
const MessageTable CPageSettings::kMessages = {&CPageWizardDefault::kMessages,
                                               CPageSettings::kEntries};

CPageSettings::CPageSettings(WizardServices* wizard)
    : CPageWizardDefault(wizard, IDD_PAGE_SETTINGS, kBackAndFinish) {}

void CPageSettings::DoDataExchange(const CDataExchange& exchange) {
  exchange.Check(IDC_MOVE_EMAILS, &m_moveEmailsBox);
  exchange.Check(IDC_ADD_BLOCKED, &m_addBlockedBox);
  exchange.Check(IDC_ADD_UNBLOCKED, &m_addUnblockedBox);
}

bool CPageSettings::OnInitDialog() {
  CPageWizardDefault::OnInitDialog();
  SetSkinnedBody(Item(IDC_SETTINGS_FINISH));
  LoadBoxes();
  return true;
}

void CPageSettings::LoadBoxes() {
  if (!Wizard().Client().canMoveEmails) {
    ::EnableWindow(Item(IDC_MOVE_EMAILS), FALSE);
  }
  const FilterSettings settings(Wizard().GetClientSettingsName());
  m_moveEmailsBox = settings.GetMoveEmails() != 0 ? 1 : 0;
  m_addBlockedBox = settings.GetAddBlocked() != 0 ? 1 : 0;
  m_addUnblockedBox = settings.GetAddUnblocked() != 0 ? 1 : 0;
  UpdateData(false);
}

void CPageSettings::StoreBoxes() {
  WizardRequest& request = Wizard().Request();
  request.moveEmails = m_moveEmailsBox != 0 ? 1 : 0;
  request.addBlocked = m_addBlockedBox != 0 ? 1 : 0;
  request.addUnblocked = m_addUnblockedBox != 0 ? 1 : 0;
}

bool CPageSettings::OnKillActive() {
  if (!UpdateData(true)) {
    return false;
  }
  StoreBoxes();
  return CPageWizardDefault::OnKillActive();
}

bool CPageSettings::OnWizardFinish() {
  if (!UpdateData(true)) {
    return false;
  }
  StoreBoxes();
  {
    const CPropertySheet::InputPause pause(Sheet());
    (void)Wizard().ApplySettings();
  }
  return CPageWizardDefault::OnWizardFinish();
}

LRESULT CPageSettings::HandleBoxClick(const MessageArgs& /*args*/) {
  UpdateData(true);
  return 0;
}

}  // namespace postmarker
