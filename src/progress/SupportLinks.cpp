#include "progress/SupportLinks.h"

#include "controls/LabelMarkup.h"

namespace postmarker {
namespace {

// A label reads entities in targets too, so a target that seems to hold one is written with them.
std::wstring EscapeEntities(const std::wstring& target) {
  if (LabelCharacters(target) == target) {
    return target;
  }
  std::wstring escaped;
  for (const wchar_t unit : target) {
    if (unit == L'&') {
      escaped += L"&amp;";
    } else {
      escaped += unit;
    }
  }
  return escaped;
}

}  // namespace

std::wstring LinkMarkup(const std::wstring& target, const std::wstring& shown) {
  return L"<a href=" + EscapeEntities(target) + L"> <u> " + shown + L" </u> </a>";
}

}  // namespace postmarker
