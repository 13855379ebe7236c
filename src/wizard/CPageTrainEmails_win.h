// The two pages on which folders for the training of the filter are checked.
#pragma once

#include "controls/CCustomTreeCtrl_win.h"
#include "controls/CXHTMLStatic_win.h"
#include "postmarker/WizardRequest.h"
#include "wizard/CPageWizardDefault_win.h"

namespace postmarker {

// Both pages are alike but for their texts: the first asks for folders that contain spam, the
// second for folders with messages that the person wants. Leaving a page, forward or back, replaces
// its map of the request by all folders of its tree. No check mark is required.
class CPageTrainEmails : public CPageWizardDefault {
 public:
  // `isFirst` is 1 for the page that is shown first, 0 for the one after it.
  CPageTrainEmails(WizardServices* wizard, uint32_t isFirst);

 protected:
  bool OnInitDialog() override;
  bool OnSetActive() override;
  bool OnKillActive() override;
  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

 private:
  LRESULT HandleDestroy(const MessageArgs& args);

  void FillTree();
  void ReadTree(TrainFolderMap* folders) const;

  uint32_t m_isFirst;
  CCustomTreeCtrl m_folderTree;
  CXHTMLStatic m_note;
};

}  // namespace postmarker
