// Owners of device contexts, and of what is changed in them for a while.
#pragma once

#include <windows.h>

#include "support/Handles_win.h"

namespace postmarker {

namespace handle_close {
inline void MemoryDc(HDC dc) noexcept {
  ::DeleteDC(dc);
}
}  // namespace handle_close

// A device context made by CreateCompatibleDC. What is selected into it goes out again first: an
// ObjectSelection declared after it sees to that.
using MemoryDc = UniqueHandle<NullableHandleTraits<HDC, handle_close::MemoryDc>>;

// The device context of a window's client area, or of the screen for a null window. Get() is null
// if the system refuses.
class WindowDc {
 public:
  explicit WindowDc(HWND window) : m_window(window), m_dc(::GetDC(window)) {}
  WindowDc(const WindowDc&) = delete;
  WindowDc& operator=(const WindowDc&) = delete;
  ~WindowDc() {
    if (m_dc != nullptr) {
      ::ReleaseDC(m_window, m_dc);
    }
  }

  [[nodiscard]] HDC Get() const { return m_dc; }

 private:
  HWND m_window;
  HDC m_dc;
};

// The device context of WM_PAINT, from BeginPaint to EndPaint.
class PaintDc {
 public:
  explicit PaintDc(HWND window) : m_window(window) { ::BeginPaint(window, &m_paint); }
  PaintDc(const PaintDc&) = delete;
  PaintDc& operator=(const PaintDc&) = delete;
  ~PaintDc() { ::EndPaint(m_window, &m_paint); }

  [[nodiscard]] HDC Get() const { return m_paint.hdc; }

 private:
  HWND m_window;
  PAINTSTRUCT m_paint = {};
};

// Selects an object into a device context, which gets the former one back at the end. A null object
// changes nothing.
class ObjectSelection {
 public:
  ObjectSelection(HDC dc, HGDIOBJ object)
      : m_dc(dc), m_former(object != nullptr ? ::SelectObject(dc, object) : nullptr) {}
  ObjectSelection(const ObjectSelection&) = delete;
  ObjectSelection& operator=(const ObjectSelection&) = delete;
  ~ObjectSelection() {
    if (m_former != nullptr) {
      ::SelectObject(m_dc, m_former);
    }
  }

 private:
  HDC m_dc;
  HGDIOBJ m_former;
};

// Gives a device context all of its state back at the end: colors, modes and selected objects.
class SavedDcState {
 public:
  explicit SavedDcState(HDC dc) : m_dc(dc), m_saved(::SaveDC(dc)) {}
  SavedDcState(const SavedDcState&) = delete;
  SavedDcState& operator=(const SavedDcState&) = delete;
  ~SavedDcState() {
    if (m_saved != 0) {
      ::RestoreDC(m_dc, m_saved);
    }
  }

 private:
  HDC m_dc;
  int m_saved;
};

}  // namespace postmarker
