// A page of a property sheet in wizard mode.
#pragma once

#include <windows.h>

#include <prsht.h>

#include "ui/CDialog.h"

namespace postmarker {

class CPropertySheet;

// The sheet makes the page's window at its first activation; the object lives with the sheet.
class CPropertyPage : public CDialog {
 public:
  explicit CPropertyPage(UINT templateId) : CDialog(templateId) {}

  // The sheet that the page was added to, or null.
  [[nodiscard]] CPropertySheet* Sheet() const { return m_sheet; }

 protected:
  // The page comes to the front. False lets the sheet go on to the next page.
  virtual bool OnSetActive() { return true; }

  // The page is left, forward or back. False keeps it.
  virtual bool OnKillActive() { return UpdateData(true); }

  // Finish was pressed. False keeps the sheet open.
  virtual bool OnWizardFinish() { return true; }

  // Cancel was pressed or the sheet closed. False keeps the sheet open.
  virtual bool OnQueryCancel() { return true; }

  // The sheet is being closed without Finish.
  virtual void OnReset() {}

  // A message of the keyboard or the mouse is about to go to this page or a window in it, whichever
  // has the focus; called while the page is in front. True: it has been dealt with.
  virtual bool PreTranslate(const MSG& /*message*/) { return false; }

  LRESULT WindowProc(const MessageArgs& args) override;

  // The keys Enter and Escape belong to the sheet.
  void OnOK() override {}
  void OnCancel() override {}

 private:
  friend class CPropertySheet;

  [[nodiscard]] PROPSHEETPAGEW Description();
  static UINT CALLBACK PageCallback(HWND window, UINT message, LPPROPSHEETPAGEW page) noexcept;
  LRESULT HandleSheetNotification(UINT code);

  CPropertySheet* m_sheet = nullptr;
};

}  // namespace postmarker
