// The page on which the mail client is chosen, if the host did not name one.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <vector>

#include "controls/KsImageGridCtrl_win.h"
#include "support/Results.h"
#include "ui/ImageList.h"
#include "wizard/CPageWizardDefault_win.h"

namespace postmarker {

struct ClientRow;

// Shows a tile for each client that can be served here. What was found is not looked at again, and
// once the page is left forward the choice is final.
class CPageChooseClient : public CPageWizardDefault {
 public:
  explicit CPageChooseClient(WizardServices* wizard);

 protected:
  void DoDataExchange(const CDataExchange& exchange) override;
  bool OnInitDialog() override;
  bool OnKillActive() override;
  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

 private:
  LRESULT HandleItemChanged(const MessageArgs& args);
  LRESULT HandleActivity(const MessageArgs& args);
  LRESULT HandleDrawItem(const MessageArgs& args);
  LRESULT HandleMeasureItem(const MessageArgs& args);

  void BuildImageList();
  void FillList();
  void AddRow(const ClientRow& client, const std::wstring& status, bool enabled);

  // E_FAIL, with a tip at Next, if no client is selected.
  ResultCode StoreChoice();

  KsImageGridCtrl m_clientGrid;
  ImageListHandle m_clientImages;
  std::vector<unsigned> m_bitmaps;  // of m_clientImages, by index
};

}  // namespace postmarker
