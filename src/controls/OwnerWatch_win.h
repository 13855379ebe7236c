// Notices when a window stops being where the person sees it.
#pragma once

#include <windows.h>

#include <functional>
#include <vector>

namespace postmarker {

// Watches a window and the windows that it lies in, for as long as something is shown that belongs
// to it. For the window's thread.
class OwnerWatch {
 public:
  OwnerWatch() = default;
  OwnerWatch(const OwnerWatch&) = delete;
  OwnerWatch& operator=(const OwnerWatch&) = delete;
  ~OwnerWatch() { End(); }

  // Ends a former watch and begins one. `onLeft` is called when the window is hidden, moved,
  // resized or destroyed, by itself or together with a window that it lies in, and when its
  // top-level window is deactivated. It must not throw; it may end the watch.
  void Begin(HWND owner, std::function<void()> onLeft);

  void End();

 private:
  static LRESULT CALLBACK WatchProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam,
                                    UINT_PTR id, DWORD_PTR data) noexcept;
  [[nodiscard]] bool IsWhereItWas() const;
  [[nodiscard]] bool IsLeftBy(HWND window, UINT message, WPARAM wParam);

  HWND m_owner = nullptr;
  RECT m_place = {};
  std::vector<HWND> m_windows;  // the owner and those that it lies in
  std::function<void()> m_onLeft;
};

}  // namespace postmarker
