#include "ipc/ChannelWaits_win.h"

namespace postmarker {

bool IsSignalled(HANDLE object) {
  return object != nullptr && ::WaitForSingleObject(object, 0) == WAIT_OBJECT_0;
}

bool IsClear(HANDLE event) {
  return ::WaitForSingleObject(event, 0) == WAIT_TIMEOUT;
}

bool WaitUnlessCancelled(HANDLE event, HANDLE cancel, uint32_t timeout) {
  const HANDLE objects[] = {event, cancel};
  return ::WaitForMultipleObjects(cancel != nullptr ? 2 : 1, objects, FALSE, timeout) ==
         WAIT_OBJECT_0;
}

bool WaitUntilTaken(HANDLE event, uint32_t timeout) {
  const ElapsedTime elapsed;
  for (;;) {
    const DWORD state = ::WaitForSingleObject(event, 0);
    if (state != WAIT_OBJECT_0) {
      return state == WAIT_TIMEOUT;
    }
    ::Sleep(1);
    if (elapsed.IsMoreThan(timeout)) {
      return false;
    }
  }
}

}  // namespace postmarker
