#include "controls/TileLayout.h"

#include <algorithm>

#include "controls/ColumnState.h"

namespace postmarker {
namespace {

constexpr wchar_t kDots[] = L"...";

// The first `length` units, without half of a pair at the end.
std::wstring Head(const std::wstring& text, size_t length) {
  const bool splits = length > 0 && length < text.size() && text[length] >= 0xDC00 &&
                      text[length] <= 0xDFFF && text[length - 1] >= 0xD800 &&
                      text[length - 1] <= 0xDBFF;
  return text.substr(0, splits ? length - 1 : length);
}

}  // namespace

int32_t TileColumnCount(int32_t clientWidth, int32_t scrollBarWidth, int32_t columnWidth) {
  return columnWidth < 1 ? 1 : std::max(1, (clientWidth - scrollBarWidth) / columnWidth);
}

std::wstring TileColumnState(int32_t columnCount, int32_t columnWidth) {
  ColumnState state;
  for (int32_t i = 0; i < columnCount; ++i) {
    state.columns.push_back({i, columnWidth});
  }
  return FormatColumnState(state);
}

int32_t RoundToColumns(int32_t size, int32_t columnWidth) {
  return columnWidth < 1 ? size : (size + columnWidth / 2) / columnWidth * columnWidth;
}

std::wstring FitText(const std::wstring& text, int32_t width, bool ellipsis,
                     const TextWidth& widthOf) {
  if (widthOf(text) <= width) {
    return text;
  }
  const std::wstring dots = ellipsis && widthOf(kDots) <= width ? kDots : L"";
  size_t fits = 0;
  for (size_t tooLong = text.size(); tooLong - fits > 1;) {
    const size_t middle = fits + (tooLong - fits) / 2;
    if (widthOf(Head(text, middle) + dots) <= width) {
      fits = middle;
    } else {
      tooLong = middle;
    }
  }
  return Head(text, fits) + dots;
}

TileLayout LayOutTile(const TileMetrics& metrics) {
  // What the picture and its margins need is a whole number of columns, so that a large picture
  // keeps the raster.
  const int32_t needed =
      RoundToColumns(metrics.imageSize + 2 * metrics.margin, metrics.columnWidth);
  const int32_t width = std::max(metrics.columnWidth, needed);
  const int32_t imageLeft = (width - metrics.imageSize) / 2;
  const int32_t nameTop = metrics.margin + metrics.imageSize + metrics.gap;
  const int32_t stateTop = nameTop + metrics.lineHeight;
  const int32_t stateBottom = stateTop + metrics.stateLines * metrics.lineHeight;
  const int32_t textRight = width - metrics.margin;
  return {{0, 0, width, stateBottom + metrics.margin},
          {imageLeft, metrics.margin, imageLeft + metrics.imageSize,
           metrics.margin + metrics.imageSize},
          {metrics.margin, nameTop, textRight, stateTop},
          {metrics.margin, stateTop, textRight, stateBottom}};
}

GridCell TileCell(int32_t entry, int32_t columnCount) {
  return entry < 0 || columnCount < 1 ? GridCell()
                                      : GridCell{entry / columnCount, entry % columnCount};
}

int32_t TileEntry(GridCell cell, int32_t columnCount, int32_t entryCount) {
  if (cell.IsNone() || cell.col >= columnCount) {
    return -1;
  }
  const int64_t entry = static_cast<int64_t>(cell.row) * columnCount + cell.col;
  return entry < entryCount ? static_cast<int32_t>(entry) : -1;
}

int32_t MoveAmongTiles(int32_t entry, TileMove move, int32_t columnCount, int32_t entryCount) {
  if (entryCount < 1) {
    return -1;
  }
  if (move == TileMove::kLast) {
    return entryCount - 1;
  }
  if (move == TileMove::kFirst || entry < 0) {
    return 0;
  }
  const int32_t step = move == TileMove::kLeft    ? -1
                       : move == TileMove::kRight ? 1
                       : move == TileMove::kUp    ? -columnCount
                                                  : columnCount;
  const int32_t target = entry + step;
  return target >= 0 && target < entryCount ? target : entry;
}

std::wstring TileText(const std::wstring& name, const std::wstring& status) {
  return status.empty() ? name : name + L", " + status;
}

}  // namespace postmarker
