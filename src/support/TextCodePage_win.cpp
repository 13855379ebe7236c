// Conversion between wide and narrow text in the thread's ANSI code page.
#include <windows.h>

#include "support/Ascii.h"
#include "support/Text.h"

namespace postmarker {
std::wstring Widen(std::string_view narrow) {
  if (IsAscii(narrow)) {
    return WidenAscii(narrow);
  }
  const int length = static_cast<int>(narrow.size());
  const int needed = ::MultiByteToWideChar(CP_THREAD_ACP, 0, narrow.data(), length, nullptr, 0);
  std::wstring wide(static_cast<size_t>(needed), L'\0');
  ::MultiByteToWideChar(CP_THREAD_ACP, 0, narrow.data(), length, wide.data(), needed);
  return wide;
}

std::string Narrow(std::wstring_view wide) {
  if (IsAscii(wide)) {
    return NarrowAscii(wide);
  }
  const int length = static_cast<int>(wide.size());
  std::string narrow;
  // A character that merely looks alike (an A with a line above it, and A) must not make one of two
  // folders. UTF-8 as the code page, which has all characters, refuses the flag.
  for (const DWORD flags : {DWORD{WC_NO_BEST_FIT_CHARS}, DWORD{0}}) {
    const int needed = ::WideCharToMultiByte(CP_THREAD_ACP, flags, wide.data(), length, nullptr, 0,
                                             nullptr, nullptr);
    narrow.resize(static_cast<size_t>(needed));
    if (::WideCharToMultiByte(CP_THREAD_ACP, flags, wide.data(), length, narrow.data(), needed,
                              nullptr, nullptr) != 0) {
      break;
    }
  }
  return narrow;
}

}  // namespace postmarker
