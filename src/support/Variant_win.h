// The owner of a VARIANT, and the values that calls of automation objects take.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include "support/Bstr_win.h"
#include "support/UniqueHandle.h"

namespace postmarker {

struct VariantTraits {
  using Type = VARIANT;
  static Type None() noexcept { return {}; }
  static bool IsOpen(const Type& value) noexcept { return value.vt != VT_EMPTY; }
  static void Close(Type value) noexcept { ::VariantClear(&value); }
};

// Owns what the value refers to: its text, its object or its array.
using Variant = UniqueHandle<VariantTraits>;

// Values that own nothing. They need no owner, and a call may be given copies of them.

inline VARIANT NumberVariant(LONG number) {
  VARIANT value = {};
  value.vt = VT_I4;
  value.lVal = number;
  return value;
}

inline VARIANT BoolVariant(bool flag) {
  VARIANT value = {};
  value.vt = VT_BOOL;
  value.boolVal = flag ? VARIANT_TRUE : VARIANT_FALSE;
  return value;
}

// The text stays with its owner, which must outlive the value.
inline VARIANT TextVariant(const Bstr& text) {
  VARIANT value = {};
  value.vt = VT_BSTR;
  value.bstrVal = text.Get();
  return value;
}

// Stands for an optional argument that is left out.
inline VARIANT MissingVariant() {
  VARIANT value = {};
  value.vt = VT_ERROR;
  value.scode = DISP_E_PARAMNOTFOUND;
  return value;
}

}  // namespace postmarker
