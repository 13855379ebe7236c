// Asks whether a job that is running is to stop.
#pragma once

#include "ui/CDialog.h"

namespace postmarker {

// DoModal returns IDOK if it is to stop.
class CDlgConfirmation : public CDialog {
 public:
  explicit CDlgConfirmation(HWND owner);

 protected:
  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

 private:
  LRESULT HandleColor(const MessageArgs& args);
};

}  // namespace postmarker
