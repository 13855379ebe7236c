// Owners for the kinds of Windows handle that the module uses. Closing keeps the thread's last
// error.
#pragma once

#include <windows.h>

#include "support/UniqueHandle.h"

namespace postmarker {

// Keeps GetLastError unchanged across a clean-up.
class LastErrorKeeper {
 public:
  LastErrorKeeper() : m_error(::GetLastError()) {}
  LastErrorKeeper(const LastErrorKeeper&) = delete;
  LastErrorKeeper& operator=(const LastErrorKeeper&) = delete;
  ~LastErrorKeeper() { ::SetLastError(m_error); }

 private:
  DWORD m_error;
};

// Traits of a handle type whose only invalid value is null and that `close` closes.
template <class Handle, auto close>
struct NullableHandleTraits {
  using Type = Handle;
  static Type None() noexcept { return nullptr; }
  static bool IsOpen(Type handle) noexcept { return handle != nullptr; }
  static void Close(Type handle) noexcept {
    const LastErrorKeeper keeper;
    close(handle);
  }
};

// Traits of a handle type that comes back as INVALID_HANDLE_VALUE from a failed call; null counts
// as none as well.
template <auto close>
struct InvalidHandleTraits {
  using Type = HANDLE;
  static Type None() noexcept { return nullptr; }
  static bool IsOpen(Type handle) noexcept {
    return handle != nullptr && handle != INVALID_HANDLE_VALUE;
  }
  static void Close(Type handle) noexcept {
    const LastErrorKeeper keeper;
    close(handle);
  }
};

namespace handle_close {
inline void Kernel(HANDLE handle) noexcept {
  ::CloseHandle(handle);
}
inline void View(const void* view) noexcept {
  ::UnmapViewOfFile(view);
}
inline void Library(HMODULE module) noexcept {
  ::FreeLibrary(module);
}
inline void Key(HKEY key) noexcept {
  ::RegCloseKey(key);
}
template <class Gdi>
void GdiObject(Gdi object) noexcept {
  ::DeleteObject(object);
}
inline void Icon(HICON icon) noexcept {
  ::DestroyIcon(icon);
}
inline void Context(HANDLE context) noexcept {
  ::ReleaseActCtx(context);
}
inline void Hook(HHOOK hook) noexcept {
  ::UnhookWindowsHookEx(hook);
}
}  // namespace handle_close

using FileHandle = UniqueHandle<InvalidHandleTraits<handle_close::Kernel>>;
using ActivationContext = UniqueHandle<InvalidHandleTraits<handle_close::Context>>;
using KernelHandle = UniqueHandle<NullableHandleTraits<HANDLE, handle_close::Kernel>>;
using FileView = UniqueHandle<NullableHandleTraits<const void*, handle_close::View>>;
using LibraryHandle = UniqueHandle<NullableHandleTraits<HMODULE, handle_close::Library>>;
using RegistryKeyHandle = UniqueHandle<NullableHandleTraits<HKEY, handle_close::Key>>;
using BitmapHandle = UniqueHandle<NullableHandleTraits<HBITMAP, handle_close::GdiObject<HBITMAP>>>;
using BrushHandle = UniqueHandle<NullableHandleTraits<HBRUSH, handle_close::GdiObject<HBRUSH>>>;
using FontHandle = UniqueHandle<NullableHandleTraits<HFONT, handle_close::GdiObject<HFONT>>>;
using PenHandle = UniqueHandle<NullableHandleTraits<HPEN, handle_close::GdiObject<HPEN>>>;
using RegionHandle = UniqueHandle<NullableHandleTraits<HRGN, handle_close::GdiObject<HRGN>>>;
using WindowsHook = UniqueHandle<NullableHandleTraits<HHOOK, handle_close::Hook>>;
using IconHandle = UniqueHandle<NullableHandleTraits<HICON, handle_close::Icon>>;

}  // namespace postmarker
