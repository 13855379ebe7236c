#include "ipc/ChannelWaits_win.h"

namespace postmarker {
namespace {

// Half of what is promised, as the system's clock may tick only every 16 ms.
constexpr uint32_t kStopPollMs = 50;

}  // namespace

bool IsSignalled(HANDLE object) {
  return object != nullptr && ::WaitForSingleObject(object, 0) == WAIT_OBJECT_0;
}

bool IsClear(HANDLE event) {
  return ::WaitForSingleObject(event, 0) == WAIT_TIMEOUT;
}

bool WaitUnlessCancelled(HANDLE event, uint32_t timeout, HANDLE cancel, const StopQuery& stop) {
  const HANDLE objects[] = {event, cancel};
  const ElapsedTime elapsed;
  while (!ShouldStop(stop)) {
    const uint32_t left = elapsed.Left(timeout);
    const uint32_t slice = stop ? std::min(left, kStopPollMs) : left;
    const DWORD state = ::WaitForMultipleObjects(cancel != nullptr ? 2 : 1, objects, FALSE, slice);
    if (state != WAIT_TIMEOUT || left == 0) {
      return state == WAIT_OBJECT_0;
    }
  }
  return false;
}

bool WaitUntilTaken(HANDLE event, uint32_t timeout, HANDLE cancel, const StopQuery& stop) {
  const ElapsedTime elapsed;
  for (;;) {
    const DWORD state = ::WaitForSingleObject(event, 0);
    if (state != WAIT_OBJECT_0) {
      return state == WAIT_TIMEOUT;
    }
    ::Sleep(1);
    if (elapsed.IsMoreThan(timeout) || IsCancelled(cancel, stop)) {
      return false;
    }
  }
}

}  // namespace postmarker
