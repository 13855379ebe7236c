#include "support/Text.h"

#include <algorithm>

namespace postmarker {
namespace {

constexpr wchar_t kReplacement = 0xFFFD;
constexpr char32_t kIllFormed = 0xFFFFFFFF;

bool IsEvenUpper(wchar_t c) {
  // Blocks in which capital and small letters alternate, the capital first on an even code.
  return (c >= 0x100 && c <= 0x137) || (c >= 0x14A && c <= 0x177) || (c >= 0x370 && c <= 0x373) ||
         (c >= 0x3D8 && c <= 0x3EF) || (c >= 0x460 && c <= 0x481) || (c >= 0x48A && c <= 0x4BF) ||
         (c >= 0x4D0 && c <= 0x52F) || (c >= 0x1E00 && c <= 0x1E95) || (c >= 0x1EA0 && c <= 0x1EFF);
}

bool IsOddUpper(wchar_t c) {
  return (c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E) || (c >= 0x4C1 && c <= 0x4CE);
}

wchar_t ToLowerBeyondAscii(wchar_t c) {
  if ((c >= 0xC0 && c <= 0xDE && c != 0xD7) || (c >= 0x391 && c <= 0x3AB && c != 0x3A2) ||
      (c >= 0x410 && c <= 0x42F) || (c >= 0xFF21 && c <= 0xFF3A)) {
    return static_cast<wchar_t>(c + 0x20);
  }
  if (c >= 0x2160 && c <= 0x216F) {
    return static_cast<wchar_t>(c + 0x10);
  }
  if (c >= 0x400 && c <= 0x40F) {
    return static_cast<wchar_t>(c + 0x50);
  }
  switch (c) {
    case 0x130:
      return L'i';
    case 0x178:
      return 0xFF;
    case 0x1A0:
      return 0x1A1;
    case 0x1AF:
      return 0x1B0;
    case 0x386:
      return 0x3AC;
    case 0x388:
    case 0x389:
    case 0x38A:
      return static_cast<wchar_t>(c + 0x25);
    case 0x38C:
      return 0x3CC;
    case 0x38E:
    case 0x38F:
      return static_cast<wchar_t>(c + 0x3F);
    case 0x4C0:
      return 0x4CF;
    default:
      break;
  }
  if ((IsEvenUpper(c) && c % 2 == 0) || (IsOddUpper(c) && c % 2 == 1)) {
    return static_cast<wchar_t>(c + 1);
  }
  return c;
}

void AppendCodePoint(std::wstring* out, char32_t code) {
  if (code >= 0x10000) {
    code -= 0x10000;
    out->push_back(static_cast<wchar_t>(0xD800 + (code >> 10)));
    out->push_back(static_cast<wchar_t>(0xDC00 + (code & 0x3FF)));
  } else {
    out->push_back(static_cast<wchar_t>(code));
  }
}

// Decodes the sequence at *pos and moves past it; an ill-formed one gives kIllFormed.
char32_t NextUtf8(std::string_view text, size_t* pos) {
  const auto lead = static_cast<unsigned char>(text[(*pos)++]);
  if (lead < 0x80) {
    return lead;
  }
  const int more = lead >= 0xF0 && lead < 0xF5   ? 3
                   : lead >= 0xE0 && lead < 0xF0 ? 2
                   : lead >= 0xC2 && lead < 0xE0 ? 1
                                                 : 0;
  if (more == 0) {
    return kIllFormed;
  }
  char32_t code = lead & (0x3F >> more);
  for (int i = 0; i < more; ++i) {
    if (*pos >= text.size() || (static_cast<unsigned char>(text[*pos]) & 0xC0) != 0x80) {
      return kIllFormed;
    }
    code = (code << 6) | (static_cast<unsigned char>(text[(*pos)++]) & 0x3F);
  }
  constexpr char32_t kMinCode[] = {0, 0x80, 0x800, 0x10000};
  const bool valid = code >= kMinCode[more] && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
  return valid ? code : kIllFormed;
}

void AppendUtf8(std::string* out, char32_t code) {
  const auto put = [out](char32_t byte) { out->push_back(static_cast<char>(byte)); };
  if (code < 0x80) {
    put(code);
  } else if (code < 0x800) {
    put(0xC0 | (code >> 6));
    put(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    put(0xE0 | (code >> 12));
    put(0x80 | ((code >> 6) & 0x3F));
    put(0x80 | (code & 0x3F));
  } else {
    put(0xF0 | (code >> 18));
    put(0x80 | ((code >> 12) & 0x3F));
    put(0x80 | ((code >> 6) & 0x3F));
    put(0x80 | (code & 0x3F));
  }
}

bool IsAsciiSpace(wchar_t c) {
  return c == L' ' || (c >= L'\t' && c <= L'\r');
}

}  // namespace

std::wstring WidenUtf8(std::string_view utf8) {
  std::wstring wide;
  wide.reserve(utf8.size());
  for (size_t pos = 0; pos < utf8.size();) {
    const char32_t code = NextUtf8(utf8, &pos);
    AppendCodePoint(&wide, code == kIllFormed ? static_cast<char32_t>(kReplacement) : code);
  }
  return wide;
}

bool IsUtf8(std::string_view text) {
  for (size_t pos = 0; pos < text.size();) {
    if (NextUtf8(text, &pos) == kIllFormed) {
      return false;
    }
  }
  return true;
}

std::string NarrowUtf8(std::wstring_view wide) {
  std::string utf8;
  utf8.reserve(wide.size());
  for (size_t i = 0; i < wide.size(); ++i) {
    const auto unit = static_cast<char32_t>(wide[i]);
    const bool lead = unit >= 0xD800 && unit <= 0xDBFF;
    if (lead && i + 1 < wide.size() && wide[i + 1] >= 0xDC00 && wide[i + 1] <= 0xDFFF) {
      const auto trail = static_cast<char32_t>(wide[++i]);
      AppendUtf8(&utf8, 0x10000 + ((unit - 0xD800) << 10) + (trail - 0xDC00));
    } else {
      AppendUtf8(&utf8,
                 unit >= 0xD800 && unit <= 0xDFFF ? static_cast<char32_t>(kReplacement) : unit);
    }
  }
  return utf8;
}

wchar_t ToLower(wchar_t unit) {
  if (unit < 0x80) {
    return unit >= L'A' && unit <= L'Z' ? static_cast<wchar_t>(unit + 0x20) : unit;
  }
  return ToLowerBeyondAscii(unit);
}

std::wstring ToLower(std::wstring_view text) {
  std::wstring lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](wchar_t c) { return ToLower(c); });
  return lower;
}

int CompareNoCase(std::wstring_view a, std::wstring_view b) {
  const size_t common = std::min(a.size(), b.size());
  for (size_t i = 0; i < common; ++i) {
    const wchar_t left = ToLower(a[i]);
    const wchar_t right = ToLower(b[i]);
    if (left != right) {
      return left < right ? -1 : 1;
    }
  }
  return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

bool EqualNoCase(std::wstring_view a, std::wstring_view b) {
  return a.size() == b.size() && CompareNoCase(a, b) == 0;
}

std::wstring_view TrimWhiteSpace(std::wstring_view text) {
  while (!text.empty() && IsAsciiSpace(text.front())) {
    text.remove_prefix(1);
  }
  while (!text.empty() && IsAsciiSpace(text.back())) {
    text.remove_suffix(1);
  }
  return text;
}

}  // namespace postmarker
