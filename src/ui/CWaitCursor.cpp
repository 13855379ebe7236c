#include "ui/CWaitCursor.h"

namespace postmarker {

void UpdateCursor() {
  POINT point = {};
  ::GetCursorPos(&point);
  const HWND window = ::WindowFromPoint(point);
  if (window != nullptr && ::GetWindowThreadProcessId(window, nullptr) == ::GetCurrentThreadId()) {
    ::SendMessageW(window, WM_SETCURSOR, reinterpret_cast<WPARAM>(window),
                   MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
  }
}

}  // namespace postmarker
