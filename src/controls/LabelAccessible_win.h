// A label as the platform's accessibility interface shows it: what can be read, and its links as
// children.
#pragma once

#include <windows.h>

#include <oleacc.h>

#include <string>

#include "controls/ItemsAccessible_win.h"
#include "support/ComPtr_win.h"

namespace postmarker {

// A window object that shows links, which count from 0. Asked on the window's thread.
class LinkSource {
 public:
  // The text without its markup.
  [[nodiscard]] virtual std::wstring PlainText() = 0;
  [[nodiscard]] virtual int LinkCount() = 0;
  // False for a number without a link. The value is the target; the place goes around all of the
  // link's rectangles. A link of a window that takes no input is not enabled.
  virtual bool ReadLinkFacts(int link, ItemFacts* facts) = 0;
  // The link at a point on the screen, or -1.
  [[nodiscard]] virtual int LinkFromPoint(POINT point) = 0;
  // Both do it in the person's name, for a number with a link. The link opens after the call, as it
  // can take long.
  virtual void FocusLink(int link) = 0;
  virtual void OpenLinkLater(int link) = 0;

 protected:
  ~LinkSource() = default;
};

// Makes the object for the client area of a window whose CWnd is a LinkSource; none if the system
// has none for it. It may live longer than the window: it then says that there is nothing.
[[nodiscard]] ComPtr<IAccessible> MakeLabelAccessible(HWND window);

}  // namespace postmarker
