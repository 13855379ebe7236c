// The last page, with the three switches that the person decides at the end.
#pragma once

#include "wizard/CPageWizardDefault_win.h"

namespace postmarker {

// What it shows comes from the registry as it stood when the page was first seen.
class CPageSettings : public CPageWizardDefault {
 public:
  explicit CPageSettings(WizardServices* wizard);

 protected:
  bool OnInitDialog() override;
  bool OnKillActive() override;
  bool OnWizardFinish() override;
  void DoDataExchange(const CDataExchange& exchange) override;
  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

 private:
  LRESULT HandleBoxClick(const MessageArgs& args);
  void LoadBoxes();
  void StoreBoxes();

  int m_moveEmailsBox = 0;
  int m_addBlockedBox = 0;
  int m_addUnblockedBox = 0;
};

}  // namespace postmarker
