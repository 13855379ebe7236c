// The markup of labels: parser, word wrap and drawing. The first two bytes choose the place.
#include <algorithm>

#include "FuzzTarget.h"
#include "controls/LabelLayout.h"
#include "support/PlainLabelSurface.h"
#include "support/Text.h"

namespace {

using namespace postmarker;

bool IsBlank(wchar_t unit) {
  return unit == L' ';
}

// Pieces are parts of their runs, in the order of the text and within the coordinates.
void RequireOrder(const LabelMarkup& markup, const LabelLayout& layout) {
  constexpr int kFarthest = 1 << 28;
  size_t position = 0;
  for (const LabelPiece& piece : layout.pieces) {
    const LabelItem& item = markup.items.at(piece.item);
    fuzz::Require(item.kind == LabelItemKind::kRun && piece.begin < piece.end);
    fuzz::Require(piece.begin >= std::max(item.begin, position) && piece.end <= item.end);
    fuzz::Require(piece.place.left >= 0 && piece.place.left <= piece.place.right);
    fuzz::Require(piece.place.top >= 0 && piece.place.right <= kFarthest);
    position = piece.end;
  }
}

// All words are drawn: only blanks at the ends of lines are left out.
void RequireWords(const LabelMarkup& markup, const LabelLayout& layout) {
  const auto letters = [&markup](size_t begin, size_t end) {
    return std::count_if(markup.text.begin() + static_cast<ptrdiff_t>(begin),
                         markup.text.begin() + static_cast<ptrdiff_t>(end),
                         [](wchar_t unit) { return !IsBlank(unit); });
  };
  ptrdiff_t read = 0;
  for (const LabelItem& item : markup.items) {
    read += letters(item.begin, item.end);
  }
  ptrdiff_t placed = 0;
  for (const LabelPiece& piece : layout.pieces) {
    placed += letters(piece.begin, piece.end);
  }
  fuzz::Require(read == placed);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) {
    return 0;
  }
  LabelArea area;
  area.width = data[0] * 4;
  area.leftMargin = data[1] % 16;
  area.rightMargin = data[1] / 16;
  area.lineSpacing = data[1] % 3;
  area.wrap = data[1] % 5 != 0;
  const LabelMarkup markup = ParseLabel(WidenUtf8(fuzz::Bytes(data + 2, size - 2)));
  test::PlainLabelSurface surface;
  const LabelLayout layout = LayOutLabel(markup, area, &surface);
  RequireOrder(markup, layout);
  RequireWords(markup, layout);
  for (const size_t link : VisibleLabelLinks(layout)) {
    fuzz::Require(link < markup.links.size());
  }
  fuzz::Require(LabelPlainText(markup).size() <= markup.text.size());
  DrawLabel(markup, layout, {0, 0, area.width, 1000}, 0, &surface);
  fuzz::Require(surface.texts.size() <= layout.pieces.size());
  return 0;
}
