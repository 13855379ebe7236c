// Texts of ASCII alone, as nearly all are that come by the thousand: they are the same in each code
// page, so that changing their width needs no conversion.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace postmarker {

// Both look at all characters, many at once, as a text that is not ASCII is rare.
inline bool IsAscii(std::wstring_view text) {
  char32_t bits = 0;
  for (const wchar_t unit : text) {
    bits |= static_cast<char32_t>(unit);
  }
  return bits < 0x80;
}

inline bool IsAscii(std::string_view text) {
  constexpr size_t kWord = sizeof(uint64_t);
  const auto wordAt = [text](size_t place) {
    uint64_t word = 0;
    std::memcpy(&word, text.data() + place, sizeof(word));
    return word;
  };
  uint64_t bits = 0;
  if (text.size() < kWord) {
    std::copy(text.begin(), text.end(), reinterpret_cast<char*>(&bits));
  } else {
    for (size_t place = 0; place + kWord < text.size(); place += kWord) {
      bits |= wordAt(place);
    }
    bits |= wordAt(text.size() - kWord);
  }
  return (bits & 0x8080808080808080) == 0;
}

// As long as `ascii` at `to`; gives the end.
inline wchar_t* WidenAscii(std::string_view ascii, wchar_t* to) {
  return std::copy(ascii.begin(), ascii.end(), to);
}

inline std::wstring WidenAscii(std::string_view ascii) {
  return {ascii.begin(), ascii.end()};
}

inline std::string NarrowAscii(std::wstring_view ascii) {
  std::string narrow(ascii.size(), '\0');
  std::transform(ascii.begin(), ascii.end(), narrow.begin(),
                 [](wchar_t unit) { return static_cast<char>(unit); });
  return narrow;
}

}  // namespace postmarker
