#include "progress/ProgressHandle_win.h"

#include <mutex>

namespace postmarker {

void ProgressHandle::Open(HWND created) {
  {
    const std::lock_guard lock(m_lock);
    window = created;
  }
  ::SetEvent(ready.Get());
}

void ProgressHandle::Close() {
  const std::lock_guard lock(m_lock);
  window = nullptr;
}

void ProgressHandle::PostText(Bstr text, int32_t total) {
  const std::lock_guard lock(m_lock);
  if (window == nullptr || !text) {
    return;
  }
  m_steps.BeginRange();
  if (::PostMessageW(window, kProgressText, reinterpret_cast<WPARAM>(text.Get()), total)) {
    (void)text.Release();
  }
}

void ProgressHandle::PostSteps(int32_t steps) {
  const std::lock_guard lock(m_lock);
  if (window != nullptr && m_steps.Report(steps) &&
      !::PostMessageW(window, kProgressSteps, 0, steps)) {
    m_steps.TakeBack(steps);
  }
}

void ProgressHandle::PostEnd(bool closeNow) {
  HWND refusing = nullptr;
  {
    const std::lock_guard lock(m_lock);
    if (window != nullptr && !::PostMessageW(window, kProgressEnd, 0, closeNow ? 1 : 0)) {
      refusing = window;
    }
  }
  if (refusing != nullptr) {
    ::SendMessageW(refusing, kProgressEnd, 0, closeNow ? 1 : 0);
  }
}

int64_t ProgressHandle::StepsArrived() {
  const std::lock_guard lock(m_lock);
  return m_steps.MessageArrived();
}

PendingSteps::Gathered ProgressHandle::FetchSteps() {
  const std::lock_guard lock(m_lock);
  return m_steps.FetchGathered();
}

}  // namespace postmarker
