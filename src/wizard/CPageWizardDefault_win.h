// The look and the habits that all pages share.
#pragma once

#include <cstdint>
#include <string>

#include "controls/KsToolTip_win.h"
#include "postmarker/MailFolderRef.h"
#include "support/Handles_win.h"
#include "ui/CPropertyPage.h"
#include "ui/CTreeCtrl.h"
#include "wizard/FolderTree.h"

namespace postmarker {

class WizardServices;

class CPageWizardDefault : public CPropertyPage {
 public:
  // `wizard` is not null and outlives the page. `buttonMask` is what the sheet shows when the page
  // comes to the front: 1 Back, 2 Next, 4 Finish.
  CPageWizardDefault(WizardServices* wizard, UINT templateId, uint32_t buttonMask = 3)
      : CPropertyPage(templateId), m_buttonMask(buttonMask), m_wizard(wizard) {}

 protected:
  // Gives heading and body their styles, makes the tool tip, and fills the banner if the page has
  // one.
  bool OnInitDialog() override;

  // Tells the sheet which buttons apply.
  bool OnSetActive() override;

  // Posts the mask to the sheet: 1 Back, 2 Next, 4 Finish.
  void SetButtonMask(uint32_t mask);

  // What the page may ask of its wizard.
  [[nodiscard]] WizardServices& Wizard() const { return *m_wizard; }

  // The screen rectangle of a button of the sheet, where messages of the page point.
  [[nodiscard]] RECT GetButtonRect(int id) const;

  // Shows a message at the sheet's Next button.
  void ShowAtNext(const std::wstring& text);

  // Lays the stores of a folder list into a tree of the page, but for those that it has seen
  // before: a folder that is added to a store later does not appear.
  void FillFolderTree(const MailFolderList& folders, const CTreeCtrl& tree);

  // For a page's entries of NM_CLICK and NM_RCLICK from a tree: hides the tip; selects the item
  // whose label or icon is under the pointer.
  LRESULT HandleTreeClick(const MessageArgs& args);
  LRESULT HandleTreeRightClick(const MessageArgs& args);

  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

  SeenStores m_seenStores;
  KsToolTip m_tooltip;
  uint32_t m_buttonMask;

 private:
  LRESULT HandleColor(const MessageArgs& args);
  LRESULT HandlePlainColor(const MessageArgs& args);

  WizardServices* m_wizard;
  FontHandle m_headingFont;
};

}  // namespace postmarker
