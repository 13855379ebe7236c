// Conversion between wide and narrow text in the thread's ANSI code page.
#include <windows.h>

#include "support/Text.h"

namespace postmarker {

std::wstring Widen(std::string_view narrow) {
  if (narrow.empty()) {
    return {};
  }
  const int length = static_cast<int>(narrow.size());
  const int needed = ::MultiByteToWideChar(CP_THREAD_ACP, 0, narrow.data(), length, nullptr, 0);
  std::wstring wide(static_cast<size_t>(needed), L'\0');
  ::MultiByteToWideChar(CP_THREAD_ACP, 0, narrow.data(), length, wide.data(), needed);
  return wide;
}

std::string Narrow(std::wstring_view wide) {
  if (wide.empty()) {
    return {};
  }
  const int length = static_cast<int>(wide.size());
  const int needed =
      ::WideCharToMultiByte(CP_THREAD_ACP, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<size_t>(needed), '\0');
  ::WideCharToMultiByte(CP_THREAD_ACP, 0, wide.data(), length, narrow.data(), needed, nullptr,
                        nullptr);
  return narrow;
}

}  // namespace postmarker
