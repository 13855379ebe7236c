// The text form of a grid's columns, which a program can keep: "N,0;0,100;1,80" is no sort order,
// sort column 0, and two columns with their places and widths.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "controls/GridCell.h"

namespace postmarker {

struct ColumnPlace {
  int32_t order = 0;  // the place from the left
  int32_t width = 0;  // pixels
  bool operator==(const ColumnPlace&) const = default;
};

struct ColumnState {
  SortOrder sortOrder = SortOrder::kNone;
  int32_t sortColumn = 0;
  std::vector<ColumnPlace> columns;  // by column
  bool operator==(const ColumnState&) const = default;
};

// Empty for a state without columns.
std::wstring FormatColumnState(const ColumnState& state);

// Reads a state for a grid of `columnCount` columns; nothing if any part of the text is not as it
// must be. The first two characters are the order, A or D or anything else for none, and its
// separator, which is not looked at; numbers have at most 5 digits.
std::optional<ColumnState> ParseColumnState(std::wstring_view text, size_t columnCount);

// The columns from left to right. Of columns that claim one place the one with the lower number
// comes first.
std::vector<int32_t> DisplayOrder(const ColumnState& state);

}  // namespace postmarker
