// The look and the habits that all pages share.
#pragma once

#include <cstdint>
#include <string>

#include "controls/KsToolTip_win.h"
#include "postmarker/MailFolderRef.h"
#include "support/Handles_win.h"
#include "ui/CPropertyPage.h"
#include "ui/CTreeCtrl.h"

namespace postmarker {

class CWizardSheet;

class CPageWizardDefault : public CPropertyPage {
 public:
  explicit CPageWizardDefault(UINT templateId, uint32_t buttonMask = 3)
      : CPropertyPage(templateId), m_buttonMask(buttonMask) {}

 protected:
  // Gives heading and body their styles, makes the tool tip, and fills the banner if the page has
  // one.
  bool OnInitDialog() override;

  // Tells the sheet which buttons apply.
  bool OnSetActive() override;

  // Posts the mask to the sheet: 1 Back, 2 Next, 4 Finish.
  void SetButtonMask(uint32_t mask);

  // The sheet as what it is; null for a page outside one.
  [[nodiscard]] CWizardSheet* Wizard() const;

  // The screen rectangle of a button of the sheet, where messages of the page point.
  [[nodiscard]] RECT GetButtonRect(int id) const;

  // Shows a message at the sheet's Next button.
  void ShowAtNext(const std::wstring& text);

  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

  KsToolTip m_tooltip;
  uint32_t m_buttonMask;

 private:
  LRESULT HandleColor(const MessageArgs& args);
  LRESULT HandlePlainColor(const MessageArgs& args);
  void SetHeadingFont(HWND heading);

  FontHandle m_headingFont;
};

}  // namespace postmarker
