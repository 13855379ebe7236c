// What the cells of a grid are and what is done with them. No window is needed for any of it.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

namespace postmarker {

// A place in a grid; -1 is none.
struct GridCell {
  int32_t row = -1;
  int32_t col = -1;

  [[nodiscard]] bool IsNone() const { return row < 0 || col < 0; }
  bool operator==(const GridCell&) const = default;
};

// What a click or the blank key does in a cell.
enum class CellKind : int32_t {
  kNone = 0,           // nothing
  kPlain = 1,          // tells the grid's owner
  kEdit = 2,           // opens an edit box
  kCombo = 3,          // opens a combo box
  kEditableCombo = 4,  // opens a combo box that takes other texts, too
  kCheck = 5,          // toggles a check box
  kRadio = 6,          // as kCheck, drawn as a round button
};

// What m_sortOrder says. A click on a heading steps from each to the next and back to the first.
enum class SortOrder : int32_t { kNone = 0, kAscending = 1, kDescending = 2 };

SortOrder NextSortOrder(SortOrder order);

// The rows that toggling the check box of `clicked` reaches. With several rows selected these are
// all of them whose cell in that column has the kind of the clicked one; otherwise it is its own
// row alone.
std::vector<int32_t> RowsToCheck(GridCell clicked, const std::vector<int32_t>& selected,
                                 const std::function<CellKind(int32_t row, int32_t col)>& kindOf);

// Edges in pixels of the client area, right and bottom exclusive.
struct CellRect {
  int32_t left = 0;
  int32_t top = 0;
  int32_t right = 0;
  int32_t bottom = 0;

  [[nodiscard]] bool Contains(int32_t x, int32_t y) const {
    return x >= left && x < right && y >= top && y < bottom;
  }
  bool operator==(const CellRect&) const = default;
};

// A column as it is shown.
struct ColumnEdges {
  int32_t col = 0;
  int32_t left = 0;
  int32_t right = 0;
};

// What of a grid is in view.
struct GridGeometry {
  std::vector<ColumnEdges> columns;  // in display order
  int32_t firstRow = 0;              // the top row in view
  int32_t rowCount = 0;              // of the whole grid
  int32_t top = 0;                   // the upper edge of the top row
  int32_t rowHeight = 1;             // at least 1
  int32_t bottom = 0;                // where the view ends
};

// The cell under a point; none beside all cells. The rows in view are tried from the top one down,
// the columns in their display order. `rect` may be null; it is left alone where there is no cell.
GridCell HitTestCell(const GridGeometry& geometry, int32_t x, int32_t y, CellRect* rect);

// The column that the focus goes to from `col`, a step to the left (-1) or right (1) in the display
// order. Without such a column it stays; from no column it goes to the first one.
int32_t StepColumn(const std::vector<int32_t>& displayOrder, int32_t col, int32_t step);

}  // namespace postmarker
