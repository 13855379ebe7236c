#include "ui/Clipboard.h"

#include <algorithm>

#include "support/UniqueHandle.h"

namespace postmarker {

bool SetClipboardText(HWND owner, const std::wstring& text) {
  if (!::OpenClipboard(owner)) {
    return false;
  }
  const ScopeExit close([] { ::CloseClipboard(); });
  ::EmptyClipboard();
  const HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE, (text.size() + 1) * sizeof(wchar_t));
  if (memory == nullptr) {
    return false;
  }
  std::copy_n(text.c_str(), text.size() + 1, static_cast<wchar_t*>(::GlobalLock(memory)));
  ::GlobalUnlock(memory);
  // The clipboard owns the memory from here on, unless it refuses.
  if (::SetClipboardData(CF_UNICODETEXT, memory) == nullptr) {
    ::GlobalFree(memory);
    return false;
  }
  return true;
}

std::wstring ClipboardText(HWND owner) {
  if (!::OpenClipboard(owner)) {
    return {};
  }
  const ScopeExit close([] { ::CloseClipboard(); });
  const HANDLE memory = ::GetClipboardData(CF_UNICODETEXT);
  const auto* const units =
      memory != nullptr ? static_cast<const wchar_t*>(::GlobalLock(memory)) : nullptr;
  if (units == nullptr) {
    return {};
  }
  // Another program may have forgotten the NUL at the end.
  const size_t room = ::GlobalSize(memory) / sizeof(wchar_t);
  std::wstring text(units, std::find(units, units + room, L'\0'));
  ::GlobalUnlock(memory);
  return text;
}

}  // namespace postmarker
