#include <algorithm>
#include <iterator>

#include "controls/LabelMarkup.h"

namespace postmarker {
namespace {

struct Entity {
  std::wstring_view text;
  wchar_t unit;
};

constexpr Entity kEntities[] = {
    {L"&amp;", 0x26},   {L"&bull;", 0x95},   {L"&copy;", 0xA9}, {L"&euro;", 0x80},
    {L"&gt;", 0x3E},    {L"&iquest;", 0xBF}, {L"&lt;", 0x3C},   {L"&nbsp;", 0x20},
    {L"&para;", 0xB6},  {L"&pound;", 0xA3},  {L"&quot;", 0x22}, {L"&reg;", 0xAE},
    {L"&trade;", 0x99},
};

// The entity that the text begins with, or null.
const Entity* EntityAt(std::wstring_view text) {
  const auto* const found =
      std::find_if(std::begin(kEntities), std::end(kEntities),
                   [text](const Entity& entity) { return text.starts_with(entity.text); });
  return found != std::end(kEntities) ? found : nullptr;
}

bool IsLineEndOrTab(wchar_t unit) {
  return unit == L'\r' || unit == L'\n' || unit == L'\t';
}

}  // namespace

std::wstring LabelCharacters(std::wstring_view text) {
  std::wstring characters;
  characters.reserve(text.size());
  while (!text.empty()) {
    size_t length = 1;
    wchar_t unit = text[0];
    if (unit == L'&') {
      if (const Entity* const entity = EntityAt(text)) {
        length = entity->text.size();
        unit = entity->unit;
      }
    } else if (IsLineEndOrTab(unit)) {
      length = text.starts_with(L"\r\n") ? 2 : 1;
      unit = L' ';
    }
    characters.push_back(unit);
    text.remove_prefix(length);
  }
  return characters;
}

}  // namespace postmarker
