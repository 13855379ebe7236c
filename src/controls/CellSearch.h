// The type-ahead search of a grid: what was typed, and the walk to the cell that has it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "controls/GridCell.h"

namespace postmarker {

// How a search goes through the cells.
enum class SearchMode : int32_t {
  kFocusColumn = 0,     // the rows of the focus column
  kColumnsAndRows = 2,  // the columns of a row, then the next row
};

struct SearchOptions {
  SearchMode mode = SearchMode::kColumnsAndRows;
  bool caseSensitive = false;
  bool anywhere = true;  // false compares the start of a cell only
};

// Does a cell with this text match? An empty search matches nothing.
bool CellMatches(const std::wstring& cellText, const std::wstring& search,
                 const SearchOptions& options);

struct GridSize {
  int32_t rows = 0;
  int32_t columns = 0;
};

// Walks from `start`, itself included, around to it again. A part of `start` that is none, or
// outside the grid, is 0. Returns the first cell that matches, or none. `textOf` is asked at most
// once for each cell.
GridCell FindCell(GridSize size, GridCell start, const std::wstring& search,
                  const SearchOptions& options,
                  const std::function<std::wstring(int32_t row, int32_t col)>& textOf);

// What a typed character did to the search.
enum class SearchKey {
  kIgnored,  // a control character, or no room
  kAction,   // a blank that acts on the cell
  kChanged,  // the text is another one
};

// The text typed so far.
class SearchText {
 public:
  // Takes one UTF-16 unit as WM_CHAR brings it. A backspace takes one off. A blank is part of the
  // text only while there is one already and `blanksSearch` is on; otherwise it is an action. Text
  // grows while it is shorter than `capacity`.
  SearchKey Type(wchar_t unit, bool blanksSearch, size_t capacity);

  [[nodiscard]] const std::wstring& Text() const { return m_text; }
  [[nodiscard]] bool IsActive() const { return !m_text.empty(); }
  void Clear() { m_text.clear(); }

 private:
  std::wstring m_text;
};

}  // namespace postmarker
