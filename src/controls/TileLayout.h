// Where things stand in a grid of tiles, and how texts are made to fit. Sizes are in pixels.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "controls/GridCell.h"

namespace postmarker {

// The height of a line of text is that of this text.
// Deliberate: two letters are missing. The heights of existing layouts come from this very text.
inline constexpr wchar_t kLineSample[] =
    L"ABCDEFGHIJKLMNOPQRSTUVWXZabcdefghijklmnopqrstuvwxz0123456789";

// How many columns of a width fit beside the scroll bar: at least 1, also for a width below 1.
int32_t TileColumnCount(int32_t clientWidth, int32_t scrollBarWidth, int32_t columnWidth);

// The column state text (ColumnState.h) of so many columns of one width.
std::wstring TileColumnState(int32_t columnCount, int32_t columnWidth);

// The whole multiple of the column's width that is nearest to a size. The size itself for a width
// below 1.
int32_t RoundToColumns(int32_t size, int32_t columnWidth);

// The width of a text in the font that it is drawn with.
using TextWidth = std::function<int32_t(const std::wstring& text)>;

// Cuts a text that is wider than `width` until it fits, with "..." after it if `ellipsis` is on
// and the dots themselves fit. Asks for widths a number of times that grows with the logarithm of
// the text's length. A surrogate pair is not cut in two.
std::wstring FitText(const std::wstring& text, int32_t width, bool ellipsis,
                     const TextWidth& widthOf);

// The measures from which a tile is laid out.
struct TileMetrics {
  int32_t columnWidth = 0;
  int32_t imageSize = 0;   // pictures are square
  int32_t lineHeight = 0;  // of one line of text
  int32_t margin = 0;      // between the tile's edge and what stands in it
  int32_t gap = 0;         // between the picture and the texts
  int32_t stateLines = 0;  // lines kept for the state
};

// The parts of a tile, from its upper left corner.
struct TileLayout {
  CellRect tile;   // as wide as whole columns
  CellRect image;  // in the middle of the upper part
  CellRect name;   // one line
  CellRect state;  // stateLines lines below it
};

TileLayout LayOutTile(const TileMetrics& metrics);

// The place of an entry among the columns, and back; -1 for a cell without an entry.
GridCell TileCell(int32_t entry, int32_t columnCount);
int32_t TileEntry(GridCell cell, int32_t columnCount, int32_t entryCount);

// The keys that move the focus among tiles.
enum class TileMove { kLeft, kRight, kUp, kDown, kFirst, kLast };

// Where the focus goes from an entry. Left and right go on to the neighboring row; at the ends it
// stays. From none (-1) it goes to the first entry, or to the last with kLast. -1 without entries.
int32_t MoveAmongTiles(int32_t entry, TileMove move, int32_t columnCount, int32_t entryCount);

// What the list view's cell of an entry holds, for who reads the screen aloud.
std::wstring TileText(const std::wstring& name, const std::wstring& status);

}  // namespace postmarker
