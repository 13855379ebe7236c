// The plain progress window: a text and a bar.
#pragma once

#include "progress/CDlgProgressBase_win.h"

namespace postmarker {

// It closes when the job is over. The service opens CDlgTrain instead.
class CDlgProgress : public CDlgProgressBase {
 public:
  explicit CDlgProgress(ProgressHandle* handle);

 protected:
  bool OnInitDialog() override;
  void OnCancel() override;
  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

 private:
  LRESULT HandleEnd(const MessageArgs& args);
};

}  // namespace postmarker
