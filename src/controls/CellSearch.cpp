#include "controls/CellSearch.h"

#include "support/Text.h"

namespace postmarker {
namespace {

constexpr wchar_t kBackspace = 0x08;

// The start's part if the grid has it, else 0.
int32_t Within(int32_t part, int32_t count) {
  return part >= 0 && part < count ? part : 0;
}

}  // namespace

bool CellMatches(const std::wstring& cellText, const std::wstring& search,
                 const SearchOptions& options) {
  if (search.empty()) {
    return false;
  }
  const std::wstring text = options.caseSensitive ? cellText : ToLower(cellText);
  const std::wstring wanted = options.caseSensitive ? search : ToLower(search);
  return options.anywhere ? text.find(wanted) != std::wstring::npos : text.starts_with(wanted);
}

GridCell FindCell(GridSize size, GridCell start, const std::wstring& search,
                  const SearchOptions& options,
                  const std::function<std::wstring(int32_t, int32_t)>& textOf) {
  if (size.rows <= 0 || size.columns <= 0) {
    return {};
  }
  GridCell cell = {Within(start.row, size.rows), Within(start.col, size.columns)};
  const GridCell first = cell;
  do {
    if (CellMatches(textOf(cell.row, cell.col), search, options)) {
      return cell;
    }
    bool nextRow = true;
    if (options.mode != SearchMode::kFocusColumn) {
      cell.col = (cell.col + 1) % size.columns;
      nextRow = cell.col == 0;
    }
    if (nextRow) {
      cell.row = (cell.row + 1) % size.rows;
    }
  } while (cell != first);
  return {};
}

SearchKey SearchText::Type(wchar_t unit, bool blanksSearch, size_t capacity) {
  if (unit == kBackspace) {
    if (m_text.empty()) {
      return SearchKey::kIgnored;
    }
    m_text.pop_back();
    return SearchKey::kChanged;
  }
  if (unit == L' ' && (m_text.empty() || !blanksSearch)) {
    return SearchKey::kAction;
  }
  if (unit < L' ' || unit == 0x7F || m_text.size() >= capacity) {
    return SearchKey::kIgnored;
  }
  m_text.push_back(unit);
  return SearchKey::kChanged;
}

}  // namespace postmarker
