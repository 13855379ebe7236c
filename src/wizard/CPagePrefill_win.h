// The page that fills the list of allowed senders from the addresses the person has written to.
#pragma once

#include <windows.h>

#include <atomic>

#include "controls/KsEmailAddressGridCtrl_win.h"
#include "support/Handles_win.h"
#include "wizard/CPageWizardDefault_win.h"

namespace postmarker {

// Has two faces: while the worker collects, a bar and a button that stops it; afterwards the
// addresses in a grid that can be edited. The worker is started once; coming back to the page shows
// the grid as it was left.
class CPagePrefill : public CPageWizardDefault {
 public:
  explicit CPagePrefill(WizardServices* wizard);
  ~CPagePrefill() override;

 protected:
  void DoDataExchange(const CDataExchange& exchange) override;
  bool OnInitDialog() override;
  bool OnKillActive() override;
  void OnReset() override;
  bool PreTranslate(const MSG& message) override;
  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

 private:
  LRESULT HandleRange(const MessageArgs& args);
  LRESULT HandleAdvance(const MessageArgs& args);
  LRESULT HandleAddress(const MessageArgs& args);
  LRESULT HandleFinished(const MessageArgs& args);
  LRESULT HandleStop(const MessageArgs& args);
  LRESULT HandleAdd(const MessageArgs& args);
  LRESULT HandleRemove(const MessageArgs& args);
  LRESULT HandleItemChanged(const MessageArgs& args);
  LRESULT HandleKeyUp(const MessageArgs& args);
  LRESULT HandleDrawItem(const MessageArgs& args);
  LRESULT HandleMeasureItem(const MessageArgs& args);
  LRESULT HandleDestroy(const MessageArgs& args);

  void SetUpGrid();
  void StartWorker();

  // Ends the worker and waits for it without a limit. A second call finds nothing to do.
  void StopWorker();

  // Shows the face for a running worker (0) or for one that has ended.
  void ShowFinished(uint32_t finished);

  void FocusGrid() const;

  KsEmailAddressGridCtrl m_addressGrid;
  uint32_t m_finished = 0;
  std::atomic<bool> m_abandoned = false;
  std::atomic<int> m_unreadAddresses = 0;
  KernelHandle m_workerThread;
  KernelHandle m_stopEvent;
};

}  // namespace postmarker
