#include "ipc/WebAddress.h"

#include <algorithm>

#include "support/Text.h"

namespace postmarker {
namespace {

constexpr std::wstring_view kSchemes[] = {L"http://", L"https://"};

bool IsForbidden(wchar_t unit) {
  const bool isControl = unit < 0x20 || (unit >= 0x7F && unit < 0xA0);
  return isControl || unit == L' ' || unit == L'<' || unit == L'>' || unit == L'"';
}

}  // namespace

bool IsWebAddress(std::wstring_view text) {
  const bool hasScheme =
      std::any_of(std::begin(kSchemes), std::end(kSchemes), [text](std::wstring_view scheme) {
        return text.size() > scheme.size() && EqualNoCase(text.substr(0, scheme.size()), scheme);
      });
  return hasScheme && std::none_of(text.begin(), text.end(), IsForbidden);
}

}  // namespace postmarker
