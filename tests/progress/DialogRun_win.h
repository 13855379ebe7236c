// A progress dialog of any class on a thread of its own, as the service has them.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "progress/ProgressHandle_win.h"
#include "support/WizardSession_win.h"
#include "ui/CDialog.h"
#include "ui/CWinApp.h"

namespace postmarker::test {

class DialogRun {
 public:
  // Runs a dialog until it ends, and `prepare` before it, on the dialog's thread.
  template <class Dialog, class... Arguments>
  static std::function<INT_PTR(ProgressHandle*)> Of(const Arguments&... arguments) {
    return
        [&arguments...](ProgressHandle* handle) { return Dialog(handle, arguments...).DoModal(); };
  }

  explicit DialogRun(std::function<INT_PTR(ProgressHandle*)> run, bool useHook = false) {
    m_handle.useHook = useHook ? 1 : 0;
    m_handle.ready.Reset(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    m_thread = std::thread([this, run = std::move(run)] {
      const ModuleStateGuard guard;
      m_result = run(&m_handle);
      m_isOver = true;
    });
    WizardSession::Require([this] { return IsShown(); }, "the window was not shown");
    m_window = m_handle.window;
  }
  DialogRun(const DialogRun&) = delete;
  DialogRun& operator=(const DialogRun&) = delete;
  ~DialogRun() {
    while (!m_isOver) {
      ::PostMessageW(m_window, kProgressEnd, 0, 1);
      ::Sleep(20);
    }
    m_thread.join();
  }

  [[nodiscard]] ProgressHandle& Handle() { return m_handle; }
  [[nodiscard]] HWND Window() const { return m_window; }
  [[nodiscard]] HWND Control(int id) const { return ::GetDlgItem(m_window, id); }

  // Waits for the dialog's own end. Its result.
  INT_PTR Result() {
    WizardSession::Require([this] { return m_isOver.load(); }, "the dialog did not end");
    return m_result;
  }

  // The question before a stop, once it is there.
  [[nodiscard]] HWND WaitForQuestion() const {
    HWND popup = nullptr;
    WizardSession::Require(
        [&] {
          popup = ::GetLastActivePopup(m_window);
          return popup != m_window && ::IsWindowVisible(popup);
        },
        "the question did not come");
    return popup;
  }

 private:
  [[nodiscard]] bool IsShown() const {
    return m_handle.window != nullptr && ::IsWindowVisible(m_handle.window);
  }

  ProgressHandle m_handle;
  HWND m_window = nullptr;
  INT_PTR m_result = 0;
  std::atomic<bool> m_isOver = false;
  std::thread m_thread;
};

}  // namespace postmarker::test
