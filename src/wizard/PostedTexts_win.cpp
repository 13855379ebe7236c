#include "wizard/PostedTexts_win.h"

#include "support/Bstr_win.h"

namespace postmarker {

std::wstring ReadPostedText(const MessageArgs& args) {
  const Bstr text(reinterpret_cast<BSTR>(args.wParam));
  return text ? std::wstring(text.Get(), ::SysStringLen(text.Get())) : std::wstring();
}

void DropPostedTexts(HWND window, UINT message) {
  MSG found = {};
  while (::PeekMessageW(&found, window, message, message, PM_REMOVE)) {
    if (found.message == WM_QUIT) {
      // It passes every filter, once nothing else is left, and belongs to the thread's loop.
      ::PostQuitMessage(static_cast<int>(found.wParam));
      return;
    }
    (void)ReadPostedText({found.message, found.wParam, found.lParam});
  }
}

}  // namespace postmarker
