// What all progress windows do: text and bar, the hook, the question before a stop.
#pragma once

#include <string>

#include "progress/ProgressHandle_win.h"
#include "ui/CDialog.h"

namespace postmarker {

// A dialog on a thread of its own that follows a ProgressHandle.
class CDlgProgressBase : public CDialog {
 public:
  CDlgProgressBase(const CDlgProgressBase&) = delete;
  CDlgProgressBase& operator=(const CDlgProgressBase&) = delete;
  ~CDlgProgressBase() override;

 protected:
  enum class Hook { kAsHandleSays, kAlways };

  // `handle` must outlive the dialog.
  CDlgProgressBase(ProgressHandle* handle, UINT templateId, Hook hook);

  bool OnInitDialog() override;
  void DoDataExchange(const CDataExchange& exchange) override;

  // The Enter key while no button has the focus. The base does nothing: ending the dialog is not
  // for CDialog.
  void OnOK() override {}

  // Is there still a job that can be stopped. An open question is withdrawn when there is none.
  [[nodiscard]] virtual bool IsRunning() const { return m_handle->window != nullptr; }

  // Asks the user. True if the job is still running and is to stop.
  bool ConfirmStop();

  // Is the question open.
  [[nodiscard]] bool IsAsking() const { return m_isAsking; }

  // The window goes: it still exists, but nobody posts to it any more.
  virtual void OnDestroy() {}

  // Ends the dialog: the handle has no window from now on.
  void EndWith(INT_PTR result);

  // Posts a message to this window, or handles it at once if the queue is full.
  void PostToSelf(UINT message, WPARAM wParam, LPARAM lParam) const;

  [[nodiscard]] ProgressHandle& Progress() const { return *m_handle; }

  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

 private:
  LRESULT HandleNcCreate(const MessageArgs& args);
  LRESULT HandleDestroy(const MessageArgs& args);
  LRESULT HandleText(const MessageArgs& args);
  LRESULT HandleSteps(const MessageArgs& args);
  LRESULT HandleTimer(const MessageArgs& args);
  LRESULT HandleIdle(const MessageArgs& args);
  LRESULT HandleColor(const MessageArgs& args);

  ProgressHandle* m_handle;
  std::wstring m_text;
  Hook m_hook;
  bool m_hookOwner = false;
  bool m_isAsking = false;
};

}  // namespace postmarker
