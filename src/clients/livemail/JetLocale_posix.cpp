#include "clients/livemail/JetValue.h"

namespace postmarker {

bool IsSameInLocale(const std::wstring& a, const std::wstring& b) {
  return a == b;
}

}  // namespace postmarker
