// What a label is measured with and drawn on: a device context, or a stand-in for one.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "controls/LabelMarkup.h"

namespace postmarker {

// A rectangle in pixels; right and bottom lie outside of it.
struct LabelRect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;

  bool operator==(const LabelRect&) const = default;
};

struct LabelFontMetrics {
  int height = 0;  // of a line
  int ascent = 0;  // how much of it lies above the letters' base line
};

// Sizes are in pixels of the surface. Colors are as CXNamedColors::Value.
class LabelSurface {
 public:
  virtual ~LabelSurface() = default;

  // The font for what follows: the control's own with these changes. An empty face changes nothing.
  virtual LabelFontMetrics SelectFont(const std::wstring& face, const LabelFont& font) = 0;

  // The width of a text in this font.
  virtual int TextWidth(std::wstring_view text) = 0;

  // A size given in pixels at 96 per inch.
  virtual int Scale(int size) = 0;

  // Spreads so many pixels over the blanks of the next texts; 0 and 0 ends it.
  virtual void SetJustification(int extra, int blanks) = 0;

  // Draws a text from its upper left corner, on a background of its own if there is one.
  virtual void PutText(int left, int top, std::wstring_view text, uint32_t color,
                       std::optional<uint32_t> background) = 0;

  virtual void FillRectangle(const LabelRect& rect, uint32_t color) = 0;
};

}  // namespace postmarker
