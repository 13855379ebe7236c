// The accessibility events of this process, as a screen reader hears them.
#pragma once

#include <windows.h>

#include <algorithm>
#include <iterator>
#include <mutex>
#include <vector>

namespace postmarker::test {

struct WinEvent {
  DWORD event = 0;
  HWND window = nullptr;
  LONG object = 0;
  LONG child = 0;
  bool operator==(const WinEvent&) const = default;
};

// Listens while it lives, to all threads of the process. One at a time.
class WinEvents {
 public:
  WinEvents() {
    s_listening = this;
    m_hook = ::SetWinEventHook(EVENT_MIN, EVENT_MAX, ::GetModuleHandleW(nullptr), &WinEvents::Hear,
                               ::GetCurrentProcessId(), 0, WINEVENT_INCONTEXT);
  }
  WinEvents(const WinEvents&) = delete;
  WinEvents& operator=(const WinEvents&) = delete;
  ~WinEvents() {
    ::UnhookWinEvent(m_hook);
    s_listening = nullptr;
  }

  // What was heard of a window, of these kinds of events, in its order.
  [[nodiscard]] std::vector<WinEvent> Of(HWND window, const std::vector<DWORD>& kinds) {
    const std::lock_guard lock(m_lock);
    std::vector<WinEvent> events;
    std::copy_if(m_heard.begin(), m_heard.end(), std::back_inserter(events),
                 [&](const WinEvent& heard) {
                   return heard.window == window &&
                          std::find(kinds.begin(), kinds.end(), heard.event) != kinds.end();
                 });
    return events;
  }
  void Forget() {
    const std::lock_guard lock(m_lock);
    m_heard.clear();
  }

 private:
  static void CALLBACK Hear(HWINEVENTHOOK /*hook*/, DWORD event, HWND window, LONG object,
                            LONG child, DWORD /*thread*/, DWORD /*time*/) {
    if (WinEvents* const listening = s_listening) {
      const std::lock_guard lock(listening->m_lock);
      listening->m_heard.push_back({event, window, object, child});
    }
  }

  static inline WinEvents* s_listening = nullptr;
  HWINEVENTHOOK m_hook;
  std::mutex m_lock;
  std::vector<WinEvent> m_heard;
};

}  // namespace postmarker::test
