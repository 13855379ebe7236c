#include "controls/OwnerWatch_win.h"

#include <commctrl.h>

#include <utility>

namespace postmarker {
namespace {

// The window that a child window lies in; null for a top-level window.
HWND ParentOf(HWND window) {
  const bool isChild = (::GetWindowLongPtrW(window, GWL_STYLE) & WS_CHILD) != 0;
  return isChild ? ::GetAncestor(window, GA_PARENT) : nullptr;
}

RECT PlaceOf(HWND window) {
  RECT place = {};
  ::GetWindowRect(window, &place);
  return place;
}

}  // namespace

void OwnerWatch::Begin(HWND owner, std::function<void()> onLeft) {
  End();
  m_owner = owner;
  m_place = PlaceOf(owner);
  m_onLeft = std::move(onLeft);
  for (HWND window = owner; window != nullptr; window = ParentOf(window)) {
    if (::SetWindowSubclass(window, &OwnerWatch::WatchProc, reinterpret_cast<UINT_PTR>(this),
                            reinterpret_cast<DWORD_PTR>(this))) {
      m_windows.push_back(window);
    }
  }
}

void OwnerWatch::End() {
  for (const HWND window : std::exchange(m_windows, {})) {
    ::RemoveWindowSubclass(window, &OwnerWatch::WatchProc, reinterpret_cast<UINT_PTR>(this));
  }
}

bool OwnerWatch::IsWhereItWas() const {
  const RECT place = PlaceOf(m_owner);
  return ::IsWindowVisible(m_owner) && ::EqualRect(&place, &m_place);
}

bool OwnerWatch::IsLeftBy(HWND window, UINT message, WPARAM wParam) {
  switch (message) {
    case WM_WINDOWPOSCHANGED:
      return !IsWhereItWas();
    case WM_ACTIVATE:
      return LOWORD(wParam) == WA_INACTIVE;
    case WM_NCDESTROY:
      std::erase(m_windows, window);
      ::RemoveWindowSubclass(window, &OwnerWatch::WatchProc, reinterpret_cast<UINT_PTR>(this));
      return true;
    default:
      return false;
  }
}

LRESULT CALLBACK OwnerWatch::WatchProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam,
                                       UINT_PTR /*id*/, DWORD_PTR data) noexcept {
  auto* const watch = reinterpret_cast<OwnerWatch*>(data);
  if (watch->IsLeftBy(window, message, wParam)) {
    // A copy, as the function may end the watch.
    const std::function<void()> onLeft = watch->m_onLeft;
    onLeft();
  }
  return ::DefSubclassProc(window, message, wParam, lParam);
}

}  // namespace postmarker
