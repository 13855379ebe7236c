// A message box drawn by the program in a dialog of its own, with texts of the resource module.
#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "ui/CDialog.h"
#include "ui/DialogTemplate.h"

namespace postmarker {

// A button of a message box: the code that DoModal returns for it, and the id of its text.
struct MessageBoxButton {
  int result;
  UINT textId;
  const wchar_t* fallback;  // where the resource module has no such text
};

// The buttons that the low four bits of a style pick, for the values 0 to 6 as in the platform's
// message box. Other values give the set of 0.
std::vector<MessageBoxButton> MessageBoxButtons(UINT style);

// Takes the icon, default button and set of buttons from the platform's MB_... styles. DoModal
// returns the button's result code; Escape and the close button give IDCANCEL, or the only button's
// code, or nothing where the set has no way to cancel. Ctrl+C copies caption and text, as in the
// platform's own box.
class KsMessageBoxDlg : public CDialog {
 public:
  // `owner` may be null. REQUIRES: a ModuleStateGuard on this thread.
  KsMessageBoxDlg(HWND owner, std::wstring text, std::wstring caption, UINT style);

 protected:
  bool OnInitDialog() override;
  void OnOK() override;
  void OnCancel() override;
  const DLGTEMPLATE* MemoryTemplate() override;

  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

 private:
  LRESULT HandleCommand(const MessageArgs& args);
  LRESULT HandleCopy(const MessageArgs& args);
  [[nodiscard]] bool HasButton(int result) const;

  HWND m_ownerWindow;
  std::wstring m_text;
  std::wstring m_caption;
  UINT m_style;
  std::vector<MessageBoxButton> m_buttons;
  std::unique_ptr<DialogTemplate> m_template;
  HMODULE m_user32 = nullptr;
  HMODULE m_windowHook = nullptr;
};

// Shows a message box and returns the button's code.
int ShowMessageBox(HWND owner, const std::wstring& text, const std::wstring& caption, UINT style);

}  // namespace postmarker
