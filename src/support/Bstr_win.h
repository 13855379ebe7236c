// The owner of a BSTR.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <string_view>

#include "support/UniqueHandle.h"

namespace postmarker {

struct BstrTraits {
  using Type = BSTR;
  static Type None() noexcept { return nullptr; }
  static bool IsOpen(Type text) noexcept { return text != nullptr; }
  static void Close(Type text) noexcept { ::SysFreeString(text); }
};
using Bstr = UniqueHandle<BstrTraits>;

// A copy of `text`; none if there is no memory for it.
inline Bstr MakeBstr(std::wstring_view text) {
  return Bstr(::SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
}

}  // namespace postmarker
