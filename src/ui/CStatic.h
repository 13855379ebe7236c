// The static text control.
#pragma once

#include <windows.h>

#include <string>

#include "ui/CWnd.h"

namespace postmarker {

class CStatic : public CWnd {
 public:
  [[nodiscard]] std::wstring Text() const { return WindowText(Handle()); }
  void SetText(const std::wstring& text) const { ::SetWindowTextW(Handle(), text.c_str()); }

  // The SS_... value that says how texts are shown.
  [[nodiscard]] LONG Kind() const {
    return static_cast<LONG>(::GetWindowLongPtrW(Handle(), GWL_STYLE)) & SS_TYPEMASK;
  }
};

}  // namespace postmarker
