// The base of all windows: a handle, one window procedure, message tables.
#pragma once

#include <windows.h>

#include <string>

#include "ui/MessageTable.h"

namespace postmarker {

// A window object of this thread. It is attached to its handle at the window's creation
// (CreationHook) or by Subclass, and detached when the window is gone; destroying the object
// destroys the window. All functions are for the window's own thread.
class CWnd {
 public:
  CWnd() = default;
  CWnd(const CWnd&) = delete;
  CWnd& operator=(const CWnd&) = delete;
  virtual ~CWnd();

  // The handle, or null while there is no window.
  [[nodiscard]] HWND Handle() const { return m_hWnd; }

  // The object attached to a window of this module, or null.
  static CWnd* FromHandle(HWND window);

  // Takes an existing window over: its messages come through this object's table first.
  bool Subclass(HWND window);

  // Gives the window back to its former procedure. The window stays.
  void Detach();

  // The control with this id, or null.
  [[nodiscard]] HWND Item(int id) const { return ::GetDlgItem(m_hWnd, id); }

  LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
    return ::SendMessageW(m_hWnd, message, wParam, lParam);
  }

 protected:
  // The table of the object's own class. A class with handlers overrides it.
  [[nodiscard]] virtual const MessageTable* Messages() const { return &kMessages; }

  // Looks the message up in the tables from the derived class upward. What has no row goes to
  // Default.
  virtual LRESULT WindowProc(const MessageArgs& args);

  // What the window did with the message before it was taken over.
  LRESULT Default(const MessageArgs& args);

  static const MessageTable kMessages;

 private:
  friend class CreationHook;

  static LRESULT CALLBACK StaticProc(HWND window, UINT message, WPARAM wParam,
                                     LPARAM lParam) noexcept;
  LRESULT Dispatch(const MessageArgs& args);

  HWND m_hWnd = nullptr;
  WNDPROC m_previousProc = nullptr;
};

// Attaches `window` to the next window that this thread creates, from its very first message on.
// REQUIRES: a ThreadState. Ends by itself with that window, or with the object.
class CreationHook {
 public:
  explicit CreationHook(CWnd* window);
  CreationHook(const CreationHook&) = delete;
  CreationHook& operator=(const CreationHook&) = delete;
  ~CreationHook();

  // The same without an object, for callbacks that return before the window is made.
  static void Arm(CWnd* window);
  static void Disarm();

 private:
  static LRESULT CALLBACK HookProc(int code, WPARAM wParam, LPARAM lParam) noexcept;
};

// The text of a window. Empty for none.
std::wstring WindowText(HWND window);

}  // namespace postmarker
