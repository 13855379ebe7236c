#include "ui/CDialog.h"

#include "ui/CWinApp.h"
#include "ui/ThreadState.h"

namespace postmarker {

void CDataExchange::Text(int id, std::wstring* value) const {
  const HWND control = ::GetDlgItem(m_dialog, id);
  if (m_save) {
    *value = WindowText(control);
  } else {
    ::SetWindowTextW(control, value->c_str());
  }
}

void CDataExchange::Check(int id, int* value) const {
  if (m_save) {
    *value = ::IsDlgButtonChecked(m_dialog, id) == BST_CHECKED ? 1 : 0;
  } else {
    ::CheckDlgButton(m_dialog, id, *value != 0 ? BST_CHECKED : BST_UNCHECKED);
  }
}

const MessageEntry CDialog::kEntries[] = {
    OnCommand(IDOK, &CDialog::HandleOK),
    OnCommand(IDCANCEL, &CDialog::HandleCancel),
};
const MessageTable CDialog::kMessages = {&CWnd::kMessages, CDialog::kEntries};

INT_PTR CDialog::DoModal() {
  const CreationHook hook(this);
  INT_PTR result = -1;
  if (const DLGTEMPLATE* memory = MemoryTemplate()) {
    result =
        ::DialogBoxIndirectParamW(AfxGetResourceHandle(), memory, m_owner, &CDialog::DialogProc, 0);
  } else {
    result = ::DialogBoxParamW(AfxGetResourceHandle(), MAKEINTRESOURCEW(m_templateId), m_owner,
                               &CDialog::DialogProc, 0);
  }
  if (ThreadState* state = ThreadState::Current()) {
    state->RethrowException();
  }
  return result;
}

bool CDialog::UpdateData(bool save) {
  if (Handle() == nullptr) {
    return false;
  }
  DoDataExchange(CDataExchange(Handle(), save));
  return true;
}

bool CDialog::OnInitDialog() {
  UpdateData(false);
  return true;
}

void CDialog::OnOK() {
  if (UpdateData(true)) {
    EndDialog(IDOK);
  }
}

void CDialog::OnCancel() {
  EndDialog(IDCANCEL);
}

LRESULT CDialog::HandleOK(const MessageArgs& /*args*/) {
  OnOK();
  return 0;
}

LRESULT CDialog::HandleCancel(const MessageArgs& /*args*/) {
  OnCancel();
  return 0;
}

INT_PTR CALLBACK CDialog::DialogProc(HWND window, UINT message, WPARAM /*wParam*/,
                                     LPARAM /*lParam*/) noexcept {
  if (message != WM_INITDIALOG) {
    return FALSE;
  }
  auto* const dialog = dynamic_cast<CDialog*>(CWnd::FromHandle(window));
  if (dialog == nullptr) {
    return TRUE;
  }
  try {
    return dialog->OnInitDialog() ? TRUE : FALSE;
  } catch (...) {
    if (ThreadState* state = ThreadState::Current()) {
      state->KeepException(std::current_exception());
    }
    ::EndDialog(window, -1);
    return TRUE;
  }
}

bool HasDialogTemplate(UINT templateId) {
  return ::FindResourceW(AfxGetResourceHandle(), MAKEINTRESOURCEW(templateId), RT_DIALOG) !=
         nullptr;
}

}  // namespace postmarker
