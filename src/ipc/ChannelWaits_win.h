// Waiting, as both sides of a channel do it. Times are in milliseconds.
//
// A wait can be ended before its time: by `cancel`, an event that may be null, and by `stop`, which
// is asked at the beginning of the wait and then at least every 100 ms.
#pragma once

#include <windows.h>

#include <algorithm>
#include <cstdint>

#include "support/StopQuery.h"

namespace postmarker {

// Measures the time since its construction.
class ElapsedTime {
 public:
  ElapsedTime() : m_start(::GetTickCount()) {}
  [[nodiscard]] bool IsMoreThan(uint32_t milliseconds) const { return Passed() > milliseconds; }

  // What is left of a limit: 0 when it is over. INFINITE never is.
  [[nodiscard]] uint32_t Left(uint32_t milliseconds) const {
    return milliseconds == INFINITE ? INFINITE : milliseconds - std::min(milliseconds, Passed());
  }

 private:
  [[nodiscard]] uint32_t Passed() const { return ::GetTickCount() - m_start; }

  DWORD m_start;
};

// Is the object signalled now. A null handle never is.
bool IsSignalled(HANDLE object);

// Is the event there and not signalled now.
bool IsClear(HANDLE event);

// Is somebody asking for the end of a wait now.
inline bool IsCancelled(HANDLE cancel, const StopQuery& stop) {
  return IsSignalled(cancel) || ShouldStop(stop);
}

// Waits for the event. False if the time is over, the wait is ended before it, or it fails. An
// event that is signalled already counts even if `cancel` is signalled too.
bool WaitUnlessCancelled(HANDLE event, uint32_t timeout, HANDLE cancel, const StopQuery& stop = {});

// Waits until the other side has reset the event, which says that it has taken what was announced.
// False if it is still signalled when more than `timeout` have passed or the wait is ended, or if
// the wait fails.
bool WaitUntilTaken(HANDLE event, uint32_t timeout, HANDLE cancel, const StopQuery& stop = {});

}  // namespace postmarker
