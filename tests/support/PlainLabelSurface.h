// A surface for labels without a device: letters are 10 pixels wide, bold ones 1 more, each step of
// spacing adds 1, and blanks are 5; lines are 20 high, 16 of it above the base line, and higher by
// what a size adds. Keeps what is drawn.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "controls/LabelSurface.h"

namespace postmarker::test {

struct DrawnText {
  std::wstring text;
  int left = 0;
  int top = 0;
  uint32_t color = 0;
  std::optional<uint32_t> background;
  std::wstring face;
  LabelFont font;
  int extra = 0;
  int blanks = 0;
};

struct FilledRectangle {
  LabelRect rect;
  uint32_t color = 0;
};

class PlainLabelSurface final : public LabelSurface {
 public:
  LabelFontMetrics SelectFont(const std::wstring& face, const LabelFont& font) override {
    m_face = face;
    m_font = font;
    const int size = std::max(-15, font.size);
    return {20 + size, 16 + size};
  }
  int TextWidth(std::wstring_view text) override {
    measured += text.size();
    const auto blanks = static_cast<int>(std::count(text.begin(), text.end(), L' '));
    const int letters = static_cast<int>(text.size()) - blanks;
    return letters * (letterWidth + (m_font.bold ? 1 : 0)) + blanks * 5 +
           static_cast<int>(text.size()) * m_font.spacing;
  }
  int Scale(int size) override { return size * scale; }
  void SetJustification(int extra, int blanks) override {
    m_extra = extra;
    m_blanks = blanks;
  }
  void PutText(int left, int top, std::wstring_view text, uint32_t color,
               std::optional<uint32_t> background) override {
    texts.push_back(
        {std::wstring(text), left, top, color, background, m_face, m_font, m_extra, m_blanks});
  }
  void FillRectangle(const LabelRect& rect, uint32_t color) override {
    rectangles.push_back({rect, color});
  }

  int letterWidth = 10;
  int scale = 1;
  size_t measured = 0;  // units in all texts that were measured
  std::vector<DrawnText> texts;
  std::vector<FilledRectangle> rectangles;

 private:
  std::wstring m_face;
  LabelFont m_font;
  int m_extra = 0;
  int m_blanks = 0;
};

}  // namespace postmarker::test
