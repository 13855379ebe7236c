// A color given by name or by value.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace postmarker {

// One color. Values have red in the lowest byte, green above it, then blue: the order of the
// platform's COLORREF.
class CXNamedColors {
 public:
  // Black.
  CXNamedColors() = default;

  // "#RRGGBB", or a name of the table, ignoring case. Anything else is black, and so is null. Not
  // explicit, so that colors can be passed by name.
  CXNamedColors(const wchar_t* text);
  explicit CXNamedColors(std::wstring_view text);

  // A value; bits above blue are dropped.
  CXNamedColors(uint32_t value) : m_value(value & 0xFFFFFF) {}

  [[nodiscard]] uint32_t Value() const { return m_value; }

  // The color as "#RRGGBB", in upper case.
  [[nodiscard]] std::wstring Text() const;

  // The first name of this color in the table, spelled as there; "not defined" if it has none.
  [[nodiscard]] std::wstring Name() const;

  bool operator==(const CXNamedColors&) const = default;

 private:
  uint32_t m_value = 0;
};

}  // namespace postmarker
