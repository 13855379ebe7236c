#include "ui/CPropertyPage.h"

#include "ui/CWinApp.h"

namespace postmarker {
namespace {

// The codes are negative numbers in an unsigned field.
template <auto code>
constexpr UINT kNotification = static_cast<UINT>(code);

}  // namespace

PROPSHEETPAGEW CPropertyPage::Description() {
  PROPSHEETPAGEW page = {};
  page.dwSize = sizeof(page);
  page.dwFlags = PSP_USECALLBACK;
  page.hInstance = AfxGetResourceHandle();
  page.pszTemplate = MAKEINTRESOURCEW(TemplateId());
  page.pfnDlgProc = &CDialog::DialogProc;
  page.lParam = reinterpret_cast<LPARAM>(this);
  page.pfnCallback = &CPropertyPage::PageCallback;
  return page;
}

UINT CALLBACK CPropertyPage::PageCallback(HWND /*window*/, UINT message,
                                          LPPROPSHEETPAGEW page) noexcept {
  if (message == PSPCB_CREATE) {
    CreationHook::Arm(reinterpret_cast<CPropertyPage*>(page->lParam));
  }
  return 1;
}

LRESULT CPropertyPage::WindowProc(const MessageArgs& args) {
  if (args.message == WM_NOTIFY) {
    const auto* header = reinterpret_cast<const NMHDR*>(args.lParam);
    const bool fromSheet = header->hwndFrom == ::GetParent(Handle());
    if (fromSheet && header->code <= kNotification<PSN_FIRST> &&
        header->code >= kNotification<PSN_LAST>) {
      return HandleSheetNotification(header->code);
    }
  }
  return CDialog::WindowProc(args);
}

LRESULT CPropertyPage::HandleSheetNotification(UINT code) {
  switch (code) {
    case kNotification<PSN_SETACTIVE>:
      return OnSetActive() ? 0 : -1;
    case kNotification<PSN_KILLACTIVE>:
      return OnKillActive() ? FALSE : TRUE;
    case kNotification<PSN_WIZFINISH>:
      return OnWizardFinish() ? FALSE : TRUE;
    case kNotification<PSN_QUERYCANCEL>:
      return OnQueryCancel() ? FALSE : TRUE;
    case kNotification<PSN_RESET>:
      OnReset();
      return 0;
    default:
      return 0;
  }
}

}  // namespace postmarker
