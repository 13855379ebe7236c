#include "controls/GridCell.h"

#include <algorithm>

namespace postmarker {

SortOrder NextSortOrder(SortOrder order) {
  switch (order) {
    case SortOrder::kNone:
      return SortOrder::kAscending;
    case SortOrder::kAscending:
      return SortOrder::kDescending;
    default:
      return SortOrder::kNone;
  }
}

std::vector<int32_t> RowsToCheck(GridCell clicked, const std::vector<int32_t>& selected,
                                 const std::function<CellKind(int32_t, int32_t)>& kindOf) {
  if (selected.size() < 2) {
    return {clicked.row};
  }
  const CellKind kind = kindOf(clicked.row, clicked.col);
  std::vector<int32_t> rows;
  std::copy_if(selected.begin(), selected.end(), std::back_inserter(rows),
               [&](int32_t row) { return kindOf(row, clicked.col) == kind; });
  return rows;
}

GridCell HitTestCell(const GridGeometry& geometry, int32_t x, int32_t y, CellRect* rect) {
  int32_t top = geometry.top;
  for (int32_t row = geometry.firstRow; row < geometry.rowCount && top < geometry.bottom; ++row) {
    for (const ColumnEdges& column : geometry.columns) {
      const CellRect cell = {column.left, top, column.right, top + geometry.rowHeight};
      if (cell.Contains(x, y)) {
        if (rect != nullptr) {
          *rect = cell;
        }
        return {row, column.col};
      }
    }
    top += geometry.rowHeight;
  }
  return {};
}

int32_t StepColumn(const std::vector<int32_t>& displayOrder, int32_t col, int32_t step) {
  if (displayOrder.empty()) {
    return -1;
  }
  const auto found = std::find(displayOrder.begin(), displayOrder.end(), col);
  if (found == displayOrder.end()) {
    return displayOrder.front();
  }
  const auto place = static_cast<int32_t>(found - displayOrder.begin()) + step;
  return place >= 0 && place < static_cast<int32_t>(displayOrder.size())
             ? displayOrder[static_cast<size_t>(place)]
             : col;
}

}  // namespace postmarker
