#include "ui/Clipboard.h"

#include <algorithm>

#include "support/Handles_win.h"

namespace postmarker {
namespace {

// The clipboard, open from construction to destruction.
class ClipboardAccess {
 public:
  explicit ClipboardAccess(HWND window) : m_isOpen(::OpenClipboard(window) != FALSE) {}
  ClipboardAccess(const ClipboardAccess&) = delete;
  ClipboardAccess& operator=(const ClipboardAccess&) = delete;
  ~ClipboardAccess() {
    if (m_isOpen) {
      ::CloseClipboard();  // owner
    }
  }

  explicit operator bool() const { return m_isOpen; }

 private:
  bool m_isOpen;
};

void FreeGlobal(HGLOBAL memory) noexcept {
  ::GlobalFree(memory);  // owner
}
using GlobalMemory = UniqueHandle<NullableHandleTraits<HGLOBAL, FreeGlobal>>;

// The units in global memory, which stays where it is meanwhile. Null if the system refuses.
class LockedUnits {
 public:
  explicit LockedUnits(HGLOBAL memory)
      : m_memory(memory), m_units(static_cast<wchar_t*>(::GlobalLock(memory))) {}
  LockedUnits(const LockedUnits&) = delete;
  LockedUnits& operator=(const LockedUnits&) = delete;
  ~LockedUnits() {
    if (m_units != nullptr) {
      ::GlobalUnlock(m_memory);  // owner
    }
  }

  [[nodiscard]] wchar_t* Get() const { return m_units; }

 private:
  HGLOBAL m_memory;
  wchar_t* m_units;
};

bool CopyText(const std::wstring& text, HGLOBAL memory) {
  const LockedUnits units(memory);
  if (units.Get() == nullptr) {
    return false;
  }
  std::copy_n(text.c_str(), text.size() + 1, units.Get());
  return true;
}

}  // namespace

bool SetClipboardText(HWND owner, const std::wstring& text) {
  const ClipboardAccess clipboard(owner);
  if (!clipboard) {
    return false;
  }
  ::EmptyClipboard();
  GlobalMemory memory(::GlobalAlloc(GMEM_MOVEABLE, (text.size() + 1) * sizeof(wchar_t)));
  if (!memory || !CopyText(text, memory.Get())) {
    return false;
  }
  if (::SetClipboardData(CF_UNICODETEXT, memory.Get()) == nullptr) {
    return false;
  }
  // The clipboard owns it from here on.
  (void)memory.Release();
  return true;
}

std::wstring ClipboardText(HWND owner) {
  const ClipboardAccess clipboard(owner);
  const HANDLE memory = clipboard ? ::GetClipboardData(CF_UNICODETEXT) : nullptr;
  if (memory == nullptr) {
    return {};
  }
  const LockedUnits units(memory);
  if (units.Get() == nullptr) {
    return {};
  }
  // Another program may have forgotten the NUL at the end.
  const size_t room = ::GlobalSize(memory) / sizeof(wchar_t);
  return {units.Get(), std::find(units.Get(), units.Get() + room, L'\0')};
}

}  // namespace postmarker
