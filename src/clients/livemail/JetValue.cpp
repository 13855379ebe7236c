#include "clients/livemail/JetValue.h"

#include <algorithm>

#include "support/Text.h"

namespace postmarker {

bool JetValue::operator==(const JetValue& other) const {
  const std::wstring* const text = AsText();
  const std::wstring* const otherText = other.AsText();
  if (text != nullptr && otherText != nullptr) {
    return IsSameInLocale(*text, *otherText);
  }
  return m_content == other.m_content;
}

const JetValue& ValueOf(const JetRow& row, const std::wstring& column) {
  static const JetValue kNothing;
  const auto found = row.find(column);
  return found == row.end() ? kNothing : found->second;
}

JetValue TextFromUtf16(std::string_view bytes) {
  std::wstring text(bytes.size() / 2, L'\0');
  for (size_t i = 0; i < text.size(); ++i) {
    const auto low = static_cast<uint8_t>(bytes[2 * i]);
    const auto high = static_cast<uint8_t>(bytes[2 * i + 1]);
    text[i] = static_cast<wchar_t>(low | high << 8U);
  }
  text.resize(std::min(text.size(), text.find(L'\0')));
  return JetValue(std::move(text));
}

JetValue TextFromNarrow(std::string_view bytes) {
  return JetValue(Widen(bytes.substr(0, bytes.find('\0'))));
}

JetValue TextFromBinary(std::string_view bytes) {
  constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
  std::wstring text;
  text.reserve(bytes.size() * 2);
  for (const char c : bytes) {
    text.push_back(kDigits[static_cast<uint8_t>(c) >> 4U]);
    text.push_back(kDigits[static_cast<uint8_t>(c) & 15U]);
  }
  return JetValue(std::move(text));
}

}  // namespace postmarker
