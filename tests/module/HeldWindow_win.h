// Holds the thread of a progress window.
#pragma once

#include <windows.h>

#include <atomic>

#include "support/Handles_win.h"
#include "support/WizardSession_win.h"

namespace postmarker::test {

// Holds the window's thread at the first text or step that it takes from its queue, until GoOn. One
// at a time.
class HeldWindow {
 public:
  explicit HeldWindow(HWND window) : m_goOn(::CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
    s_goOn = m_goOn.Get();
    s_isHeld = false;
    m_hook.Reset(::SetWindowsHookExW(WH_GETMESSAGE, &HeldWindow::Hold, nullptr,
                                     ::GetWindowThreadProcessId(window, nullptr)));
  }
  HeldWindow(const HeldWindow&) = delete;
  HeldWindow& operator=(const HeldWindow&) = delete;
  ~HeldWindow() {
    GoOn();
    // The hook's procedure must not run on without the event.
    m_hook.Reset();
    WaitUntil([] { return !s_isHeld; });
  }

  static bool WaitUntilHeld() {
    return WaitUntil([] { return s_isHeld.load(); });
  }
  void GoOn() { ::SetEvent(m_goOn.Get()); }

 private:
  static LRESULT CALLBACK Hold(int code, WPARAM wParam, LPARAM lParam) {
    const UINT message = reinterpret_cast<const MSG*>(lParam)->message;
    if (code == HC_ACTION && wParam == PM_REMOVE && (message == 0x401 || message == 0x402)) {
      s_isHeld = true;
      ::WaitForSingleObject(s_goOn, INFINITE);
      s_isHeld = false;
    }
    return ::CallNextHookEx(nullptr, code, wParam, lParam);
  }

  static inline HANDLE s_goOn = nullptr;
  static inline std::atomic<bool> s_isHeld = false;
  KernelHandle m_goOn;
  WindowsHook m_hook;
};

}  // namespace postmarker::test
