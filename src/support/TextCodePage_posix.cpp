// Conversion between wide and narrow text in Windows-1252, the code page of builds outside Windows.
#include <algorithm>
#include <array>

#include "support/Ascii.h"
#include "support/Text.h"

namespace postmarker {
namespace {

// The bytes 0x80 to 0x9F; the five that are not defined map to themselves, as Windows has it.
constexpr std::array<wchar_t, 32> kHighControls = {
    0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};

}  // namespace

std::wstring Widen(std::string_view narrow) {
  if (IsAscii(narrow)) {
    return WidenAscii(narrow);
  }
  std::wstring wide;
  wide.reserve(narrow.size());
  for (const char c : narrow) {
    const auto byte = static_cast<unsigned char>(c);
    wide.push_back(byte >= 0x80 && byte < 0xA0 ? kHighControls[byte - 0x80]
                                               : static_cast<wchar_t>(byte));
  }
  return wide;
}

std::string Narrow(std::wstring_view wide) {
  if (IsAscii(wide)) {
    return NarrowAscii(wide);
  }
  std::string narrow;
  narrow.reserve(wide.size());
  for (const wchar_t unit : wide) {
    const auto* const found = std::find(kHighControls.begin(), kHighControls.end(), unit);
    if (found != kHighControls.end()) {
      narrow.push_back(static_cast<char>(0x80 + (found - kHighControls.begin())));
    } else if (unit < 0x80 || (unit >= 0xA0 && unit <= 0xFF)) {
      narrow.push_back(static_cast<char>(unit));
    } else {
      narrow.push_back('?');
    }
  }
  return narrow;
}

}  // namespace postmarker
