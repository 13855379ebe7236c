#include <windows.h>

#include "clients/livemail/JetValue.h"

namespace postmarker {

bool IsSameInLocale(const std::wstring& a, const std::wstring& b) {
  return ::CompareStringW(LOCALE_USER_DEFAULT, 0, a.data(), static_cast<int>(a.size()), b.data(),
                          static_cast<int>(b.size())) == CSTR_EQUAL;
}

}  // namespace postmarker
