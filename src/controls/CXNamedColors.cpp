#include "controls/CXNamedColors.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "support/Text.h"

namespace postmarker {
namespace {

// As it is written in hexadecimal: red in the highest byte.
struct NamedColor {
  uint32_t rgb;
  const wchar_t* name;
};

// The colors of HTML. Deliberate: BlanchedAlmond, Gray and YellowGreen have other values than
// there, and Burlywood, Lawngreen and LightGrey are spelled like this: texts rely on it.
constexpr NamedColor kNamedColors[] = {
    {0xF0F8FF, L"AliceBlue"},
    {0xFAEBD7, L"AntiqueWhite"},
    {0x00FFFF, L"Aqua"},
    {0x7FFFD4, L"Aquamarine"},
    {0xF0FFFF, L"Azure"},
    {0xF5F5DC, L"Beige"},
    {0xFFE4C4, L"Bisque"},
    {0x000000, L"Black"},
    {0xFFFFCD, L"BlanchedAlmond"},
    {0x0000FF, L"Blue"},
    {0x8A2BE2, L"BlueViolet"},
    {0xA52A2A, L"Brown"},
    {0xDEB887, L"Burlywood"},
    {0x5F9EA0, L"CadetBlue"},
    {0x7FFF00, L"Chartreuse"},
    {0xD2691E, L"Chocolate"},
    {0xFF7F50, L"Coral"},
    {0x6495ED, L"CornflowerBlue"},
    {0xFFF8DC, L"Cornsilk"},
    {0xDC143C, L"Crimson"},
    {0x00FFFF, L"Cyan"},
    {0x00008B, L"DarkBlue"},
    {0x008B8B, L"DarkCyan"},
    {0xB8860B, L"DarkGoldenrod"},
    {0xA9A9A9, L"DarkGray"},
    {0x006400, L"DarkGreen"},
    {0xBDB76B, L"DarkKhaki"},
    {0x8B008B, L"DarkMagenta"},
    {0x556B2F, L"DarkOliveGreen"},
    {0xFF8C00, L"DarkOrange"},
    {0x9932CC, L"DarkOrchid"},
    {0x8B0000, L"DarkRed"},
    {0xE9967A, L"DarkSalmon"},
    {0x8FBC8F, L"DarkSeaGreen"},
    {0x483D8B, L"DarkSlateBlue"},
    {0x2F4F4F, L"DarkSlateGray"},
    {0x00CED1, L"DarkTurquoise"},
    {0x9400D3, L"DarkViolet"},
    {0xFF1493, L"DeepPink"},
    {0x00BFFF, L"DeepSkyBlue"},
    {0x696969, L"DimGray"},
    {0x1E90FF, L"DodgerBlue"},
    {0xB22222, L"FireBrick"},
    {0xFFFAF0, L"FloralWhite"},
    {0x228B22, L"ForestGreen"},
    {0xFF00FF, L"Fuchsia"},
    {0xDCDCDC, L"Gainsboro"},
    {0xF8F8FF, L"GhostWhite"},
    {0xFFD700, L"Gold"},
    {0xDAA520, L"Goldenrod"},
    {0x7F7F7F, L"Gray"},
    {0x008000, L"Green"},
    {0xADFF2F, L"GreenYellow"},
    {0xF0FFF0, L"Honeydew"},
    {0xFF69B4, L"HotPink"},
    {0xCD5C5C, L"IndianRed"},
    {0x4B0082, L"Indigo"},
    {0xFFFFF0, L"Ivory"},
    {0xF0E68C, L"Khaki"},
    {0xE6E6FA, L"Lavender"},
    {0xFFF0F5, L"LavenderBlush"},
    {0x7CFC00, L"Lawngreen"},
    {0xFFFACD, L"LemonChiffon"},
    {0xADD8E6, L"LightBlue"},
    {0xF08080, L"LightCoral"},
    {0xE0FFFF, L"LightCyan"},
    {0xFAFAD2, L"LightGoldenrodYellow"},
    {0x90EE90, L"LightGreen"},
    {0xD3D3D3, L"LightGrey"},
    {0xFFB6C1, L"LightPink"},
    {0xFFA07A, L"LightSalmon"},
    {0x20B2AA, L"LightSeaGreen"},
    {0x87CEFA, L"LightSkyBlue"},
    {0x778899, L"LightSlateGray"},
    {0xB0C4DE, L"LightSteelBlue"},
    {0xFFFFE0, L"LightYellow"},
    {0x00FF00, L"Lime"},
    {0x32CD32, L"LimeGreen"},
    {0xFAF0E6, L"Linen"},
    {0xFF00FF, L"Magenta"},
    {0x800000, L"Maroon"},
    {0x66CDAA, L"MediumAquamarine"},
    {0x0000CD, L"MediumBlue"},
    {0xBA55D3, L"MediumOrchid"},
    {0x9370DB, L"MediumPurple"},
    {0x3CB371, L"MediumSeaGreen"},
    {0x7B68EE, L"MediumSlateBlue"},
    {0x00FA9A, L"MediumSpringGreen"},
    {0x48D1CC, L"MediumTurquoise"},
    {0xC71585, L"MediumVioletRed"},
    {0x191970, L"MidnightBlue"},
    {0xF5FFFA, L"MintCream"},
    {0xFFE4E1, L"MistyRose"},
    {0xFFE4B5, L"Moccasin"},
    {0xFFDEAD, L"NavajoWhite"},
    {0x000080, L"Navy"},
    {0xFDF5E6, L"OldLace"},
    {0x808000, L"Olive"},
    {0x6B8E23, L"OliveDrab"},
    {0xFFA500, L"Orange"},
    {0xFF4500, L"OrangeRed"},
    {0xDA70D6, L"Orchid"},
    {0xEEE8AA, L"PaleGoldenrod"},
    {0x98FB98, L"PaleGreen"},
    {0xAFEEEE, L"PaleTurquoise"},
    {0xDB7093, L"PaleVioletRed"},
    {0xFFEFD5, L"PapayaWhip"},
    {0xFFDAB9, L"PeachPuff"},
    {0xCD853F, L"Peru"},
    {0xFFC0CB, L"Pink"},
    {0xDDA0DD, L"Plum"},
    {0xB0E0E6, L"PowderBlue"},
    {0x800080, L"Purple"},
    {0xFF0000, L"Red"},
    {0xBC8F8F, L"RosyBrown"},
    {0x4169E1, L"RoyalBlue"},
    {0x8B4513, L"SaddleBrown"},
    {0xFA8072, L"Salmon"},
    {0xF4A460, L"SandyBrown"},
    {0x2E8B57, L"SeaGreen"},
    {0xFFF5EE, L"SeaShell"},
    {0xA0522D, L"Sienna"},
    {0xC0C0C0, L"Silver"},
    {0x87CEEB, L"SkyBlue"},
    {0x6A5ACD, L"SlateBlue"},
    {0x708090, L"SlateGray"},
    {0xFFFAFA, L"Snow"},
    {0x00FF7F, L"SpringGreen"},
    {0x4682B4, L"SteelBlue"},
    {0xD2B48C, L"Tan"},
    {0x008080, L"Teal"},
    {0xD8BFD8, L"Thistle"},
    {0xFF6347, L"Tomato"},
    {0x40E0D0, L"Turquoise"},
    {0xEE82EE, L"Violet"},
    {0xF5DEB3, L"Wheat"},
    {0xFFFFFF, L"White"},
    {0xF5F5F5, L"WhiteSmoke"},
    {0xFFFF00, L"Yellow"},
    {0x8BCD32, L"YellowGreen"},
};
static_assert(std::size(kNamedColors) == 140);

constexpr size_t kHexLength = 7;  // "#RRGGBB"

// The same color in the other order of bytes.
constexpr uint32_t Reversed(uint32_t rgb) {
  return (rgb >> 16) | (rgb & 0xFF00) | ((rgb & 0xFF) << 16);
}

int HexDigit(wchar_t unit) {
  if (unit >= L'0' && unit <= L'9') {
    return unit - L'0';
  }
  const wchar_t lower = ToLower(unit);
  return lower >= L'a' && lower <= L'f' ? lower - L'a' + 10 : -1;
}

// The value of "#RRGGBB"; black if a digit is none.
uint32_t HexColor(std::wstring_view text) {
  uint32_t rgb = 0;
  for (const wchar_t unit : text.substr(1)) {
    const int digit = HexDigit(unit);
    if (digit < 0) {
      return 0;
    }
    rgb = rgb * 16 + static_cast<uint32_t>(digit);
  }
  return Reversed(rgb);
}

uint32_t ColorOf(std::wstring_view text) {
  if (text.size() == kHexLength && text[0] == L'#') {
    return HexColor(text);
  }
  const auto* const row =
      std::find_if(std::begin(kNamedColors), std::end(kNamedColors),
                   [text](const NamedColor& color) { return EqualNoCase(color.name, text); });
  return row != std::end(kNamedColors) ? Reversed(row->rgb) : 0;
}

}  // namespace

CXNamedColors::CXNamedColors(const wchar_t* text)
    : CXNamedColors(text != nullptr ? std::wstring_view(text) : std::wstring_view()) {}

CXNamedColors::CXNamedColors(std::wstring_view text) : m_value(ColorOf(text)) {}

std::wstring CXNamedColors::Text() const {
  constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
  std::wstring text = L"#";
  uint32_t rgb = Reversed(m_value);
  for (size_t i = 1; i < kHexLength; ++i) {
    text += kDigits[(rgb >> 20) & 0xF];
    rgb <<= 4;
  }
  return text;
}

std::wstring CXNamedColors::Name() const {
  const auto* const row =
      std::find_if(std::begin(kNamedColors), std::end(kNamedColors),
                   [this](const NamedColor& color) { return Reversed(color.rgb) == m_value; });
  return row != std::end(kNamedColors) ? row->name : L"not defined";
}

}  // namespace postmarker
