// Dialogs made from a template of the resource module or from one in memory.
#pragma once

#include <string>

#include "ui/CWnd.h"

namespace postmarker {

// Moves values between members and controls, in the direction that the object says.
class CDataExchange {
 public:
  CDataExchange(HWND dialog, bool save) : m_dialog(dialog), m_save(save) {}

  // An edit control's text.
  void Text(int id, std::wstring* value) const;

  // A check box: 1 if ticked, otherwise 0.
  void Check(int id, int* value) const;

 private:
  HWND m_dialog;
  bool m_save;  // from the controls to the members
};

// A modal dialog, and the base of property pages.
class CDialog : public CWnd {
 public:
  // `templateId` names a dialog of the resource module; `owner` may be null.
  explicit CDialog(UINT templateId, HWND owner = nullptr)
      : m_templateId(templateId), m_owner(owner) {}

  // Shows the dialog until EndDialog. Returns the code given there; -1 if the template is missing.
  // Throws what a handler threw. REQUIRES: a ModuleStateGuard on this thread.
  virtual INT_PTR DoModal();

  // Ends DoModal with a code.
  void EndDialog(INT_PTR result) { ::EndDialog(Handle(), result); }

  // Moves values from the controls to the members (true) or the other way. False if an exchange
  // refuses.
  bool UpdateData(bool save);

  [[nodiscard]] UINT TemplateId() const { return m_templateId; }

 protected:
  // Runs when the dialog has its controls. True lets the system set the focus. The base moves the
  // members' values into the controls.
  virtual bool OnInitDialog();

  virtual void DoDataExchange(const CDataExchange& /*exchange*/) {}

  // The two buttons that every dialog knows. The base takes the values over and ends with the
  // button's id.
  virtual void OnOK();
  virtual void OnCancel();

  // A template in memory, used in place of the resource; null for none. Lives until the window is
  // made.
  [[nodiscard]] virtual const DLGTEMPLATE* MemoryTemplate() { return nullptr; }

  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

  // The dialog procedure of the class library, for templates handed to the system.
  static INT_PTR CALLBACK DialogProc(HWND window, UINT message, WPARAM wParam,
                                     LPARAM lParam) noexcept;

 private:
  LRESULT HandleOK(const MessageArgs& args);
  LRESULT HandleCancel(const MessageArgs& args);

  UINT m_templateId;
  HWND m_owner;
};

// True if the resource module has a dialog template of this id.
bool HasDialogTemplate(UINT templateId);

}  // namespace postmarker
