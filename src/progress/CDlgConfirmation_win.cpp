#include "progress/CDlgConfirmation_win.h"

#include "resource.h"
#include "wizard/Colors_win.h"

namespace postmarker {

const MessageEntry CDlgConfirmation::kEntries[] = {
    OnMessage(WM_CTLCOLORDLG, &CDlgConfirmation::HandleColor),
    OnMessage(WM_CTLCOLORBTN, &CDlgConfirmation::HandleColor),
    OnMessage(WM_CTLCOLORSTATIC, &CDlgConfirmation::HandleColor),
};
const MessageTable CDlgConfirmation::kMessages = {&CDialog::kMessages, CDlgConfirmation::kEntries};

CDlgConfirmation::CDlgConfirmation(HWND owner) : CDialog(IDD_CONFIRMATION, owner) {}

LRESULT CDlgConfirmation::HandleColor(const MessageArgs& args) {
  return ColorForControl(args);
}

}  // namespace postmarker
