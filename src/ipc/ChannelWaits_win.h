// Waiting, as both sides of a channel do it. Times are in milliseconds.
#pragma once

#include <windows.h>

#include <cstdint>

namespace postmarker {

// Measures the time since its construction.
class ElapsedTime {
 public:
  ElapsedTime() : m_start(::GetTickCount()) {}
  [[nodiscard]] bool IsMoreThan(uint32_t milliseconds) const {
    return ::GetTickCount() - m_start > milliseconds;
  }

 private:
  DWORD m_start;
};

// Is the object signalled now. A null handle never is.
bool IsSignalled(HANDLE object);

// Is the event there and not signalled now.
bool IsClear(HANDLE event);

// Waits for the event. False if the time is over, `cancel` (which may be null) is signalled first,
// or the wait fails.
bool WaitUnlessCancelled(HANDLE event, HANDLE cancel, uint32_t timeout);

// Waits until the other side has reset the event, which says that it has taken what was announced.
// False if it still stands when more than `timeout` have passed, or if the wait fails.
bool WaitUntilTaken(HANDLE event, uint32_t timeout);

}  // namespace postmarker
