#include "wizard/CPageWizardDefault_win.h"

#include "resource.h"
#include "ui/CPropertySheet.h"
#include "wizard/Banner_win.h"
#include "wizard/Colors_win.h"
#include "wizard/FolderTreeControl_win.h"
#include "wizard/HeadingFont_win.h"
#include "wizard/WindowHook_win.h"
#include "wizard/WizardServices_win.h"

namespace postmarker {
namespace {

constexpr UINT kToolTipDelayMs = 0;
constexpr UINT kToolTipDurationMs = 3000;
constexpr int kNextButton = 12324;  // of every wizard sheet
constexpr UINT WM_CTLCOLOR = 0x19;  // the message of old controls, which carry no kind

}  // namespace

const MessageEntry CPageWizardDefault::kEntries[] = {
    OnMessage(WM_CTLCOLOR, &CPageWizardDefault::HandlePlainColor),
    OnMessage(WM_CTLCOLORDLG, &CPageWizardDefault::HandleColor),
    OnMessage(WM_CTLCOLOREDIT, &CPageWizardDefault::HandleColor),
    OnMessage(WM_CTLCOLORLISTBOX, &CPageWizardDefault::HandleColor),
    OnMessage(WM_CTLCOLORBTN, &CPageWizardDefault::HandleColor),
    OnMessage(WM_CTLCOLORSTATIC, &CPageWizardDefault::HandleColor),
};
const MessageTable CPageWizardDefault::kMessages = {&CPropertyPage::kMessages,
                                                    CPageWizardDefault::kEntries};

bool CPageWizardDefault::OnInitDialog() {
  CPropertyPage::OnInitDialog();
  m_headingFont = SetHeadingFont(Handle(), Item(IDC_HEADING));
  SetSkinnedHeading(Item(IDC_HEADING));
  SetSkinnedBody(Item(IDC_BODY));
  m_tooltip.Create(Handle(), kToolTipDelayMs, kToolTipDurationMs, true);
  const HWND banner = Item(IDC_BANNER);
  if (banner != nullptr) {
    RECT rect = {};
    ::GetClientRect(banner, &rect);
    ShowBanner(banner, Wizard().BannerBitmap({rect.right, rect.bottom}));
  }
  return true;
}

bool CPageWizardDefault::OnSetActive() {
  SetButtonMask(m_buttonMask);
  return CPropertyPage::OnSetActive();
}

void CPageWizardDefault::SetButtonMask(uint32_t mask) {
  m_buttonMask = mask;
  if (Sheet() != nullptr) {
    ::PostMessageW(Sheet()->Handle(), PSM_SETWIZBUTTONS, 0, static_cast<LPARAM>(mask));
  }
}

RECT CPageWizardDefault::GetButtonRect(int id) const {
  RECT rect = {};
  if (Sheet() != nullptr) {
    ::GetWindowRect(Sheet()->Item(id), &rect);
  }
  return rect;
}

void CPageWizardDefault::ShowAtNext(const std::wstring& text) {
  m_tooltip.ShowAt(text, GetButtonRect(kNextButton));
}

void CPageWizardDefault::FillFolderTree(const MailFolderList& folders, const CTreeCtrl& tree) {
  FolderTreeLayout layout(folders, &m_seenStores);
  layout.FillAll();
  FillTreeControl(tree, layout);
}

LRESULT CPageWizardDefault::HandleTreeClick(const MessageArgs& /*args*/) {
  m_tooltip.Hide();
  return 0;
}

LRESULT CPageWizardDefault::HandleTreeRightClick(const MessageArgs& args) {
  SelectItemUnderPointer(reinterpret_cast<const NMHDR*>(args.lParam)->hwndFrom);
  return 0;
}

LRESULT CPageWizardDefault::HandleColor(const MessageArgs& args) {
  return ColorForControl(args);
}

LRESULT CPageWizardDefault::HandlePlainColor(const MessageArgs& args) {
  const auto dc = reinterpret_cast<HDC>(args.wParam);
  ::SetTextColor(dc, RGB(0, 0, 0));
  ::SetBkColor(dc, RGB(255, 255, 255));
  return Default(args);
}

}  // namespace postmarker
