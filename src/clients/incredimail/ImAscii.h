// Texts of ASCII alone, as nearly all are that come by the thousand: they are the same in each code
// page, so that changing their width needs no conversion.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <type_traits>

namespace postmarker {

// Without a way out in its loop, so that the compiler looks at many characters at once.
template <class Char>
bool IsAscii(std::basic_string_view<Char> text) {
  std::make_unsigned_t<Char> bits = 0;
  for (const Char c : text) {
    bits |= static_cast<std::make_unsigned_t<Char>>(c);
  }
  return bits < 0x80;
}

// As long as `ascii` at `to`; gives the end.
inline wchar_t* WidenAscii(std::string_view ascii, wchar_t* to) {
  return std::copy(ascii.begin(), ascii.end(), to);
}

inline std::string NarrowAscii(std::wstring_view ascii) {
  std::string narrow(ascii.size(), '\0');
  std::transform(ascii.begin(), ascii.end(), narrow.begin(),
                 [](wchar_t unit) { return static_cast<char>(unit); });
  return narrow;
}

}  // namespace postmarker
