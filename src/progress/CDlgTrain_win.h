// The progress window of the service: the job is running, and then it is over.
#pragma once

#include <optional>

#include "controls/CXHTMLStatic_win.h"
#include "progress/CDlgProgressBase_win.h"
#include "progress/LinkWorker_win.h"
#include "support/Handles_win.h"

namespace postmarker {

// Two faces share the window. The first has text, bar and Stop; the finished one says how the job
// ended and has links to the suite's support. A stop shows the second face at once, although the
// job ends when the host sees the mark.
class CDlgTrain : public CDlgProgressBase {
 public:
  // The links lead where the resident process at `route` says, which must outlive the dialog.
  explicit CDlgTrain(ProgressHandle* handle, const AccountToolsRoute& route = kResidentProcess);

 protected:
  bool OnInitDialog() override;
  void OnOK() override;
  void OnCancel() override;
  void OnDestroy() override { m_links.reset(); }
  [[nodiscard]] bool IsRunning() const override { return !m_done && CDlgProgressBase::IsRunning(); }
  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

 private:
  LRESULT HandleEnd(const MessageArgs& args);
  LRESULT HandleStop(const MessageArgs& args);
  LRESULT HandleClose(const MessageArgs& args);
  LRESULT HandleLink(const MessageArgs& args);

  void SetStyles();
  void MakeLinks();
  void ShowLink(size_t number);
  void ShowFace();
  void FocusClose();
  void Close();

  const AccountToolsRoute& m_route;
  bool m_done = false;
  bool m_stopped = false;
  bool m_isReady = false;  // the controls have been set up
  CXHTMLStatic m_supportLink;
  CXHTMLStatic m_secondLink;
  IconHandle m_icon;
  FontHandle m_headingFont;
  BitmapHandle m_banner;
  std::optional<LinkWorker> m_links;
};

}  // namespace postmarker
