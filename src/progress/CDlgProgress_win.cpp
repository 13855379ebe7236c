#include "progress/CDlgProgress_win.h"

#include <commctrl.h>

#include "resource.h"

namespace postmarker {
namespace {

constexpr COLORREF kBarGround = 0xE5E9EB;
constexpr COLORREF kBarColor = 171;

}  // namespace

const MessageEntry CDlgProgress::kEntries[] = {
    OnMessage(kProgressEnd, &CDlgProgress::HandleEnd),
};
const MessageTable CDlgProgress::kMessages = {&CDlgProgressBase::kMessages, CDlgProgress::kEntries};

// Deliberate: this window is hooked whatever the handle says.
CDlgProgress::CDlgProgress(ProgressHandle* handle)
    : CDlgProgressBase(handle, IDD_PROGRESS, Hook::kAlways) {}

bool CDlgProgress::OnInitDialog() {
  CDlgProgressBase::OnInitDialog();
  const HWND bar = Item(IDC_PROGRESS_BAR);
  ::SendMessageW(bar, PBM_SETBKCOLOR, 0, static_cast<LPARAM>(kBarGround));
  ::SendMessageW(bar, PBM_SETBARCOLOR, 0, static_cast<LPARAM>(kBarColor));
  return true;
}

void CDlgProgress::OnCancel() {
  if (ConfirmStop()) {
    Progress().Close();
    PostToSelf(kProgressEnd, 0, 0);
  }
}

LRESULT CDlgProgress::HandleEnd(const MessageArgs& /*args*/) {
  EndWith(IDCANCEL);
  return 0;
}

}  // namespace postmarker
