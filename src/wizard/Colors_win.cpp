#include "wizard/Colors_win.h"

#include "wizard/WindowHook_win.h"

namespace postmarker {

HBRUSH BackgroundBrush() {
  return static_cast<HBRUSH>(::GetStockObject(WHITE_BRUSH));
}

LRESULT ColorForControl(const MessageArgs& args, int headingId) {
  const auto dc = reinterpret_cast<HDC>(args.wParam);
  const auto control = reinterpret_cast<HWND>(args.lParam);
  if (args.message == WM_CTLCOLORSTATIC) {
    const bool heading = ::GetDlgCtrlID(control) == headingId;
    ::SetTextColor(dc, heading ? kHeadingColor : RGB(0, 0, 0));
    ::SetBkMode(dc, TRANSPARENT);
  }
  return reinterpret_cast<LRESULT>(BackgroundBrush());
}

}  // namespace postmarker
