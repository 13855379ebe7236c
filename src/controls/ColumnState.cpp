#include "controls/ColumnState.h"

#include <algorithm>
#include <numeric>

namespace postmarker {
namespace {

constexpr size_t kMinTextChars = 4;
constexpr size_t kPrefixLength = 2;
constexpr size_t kMaxDigits = 5;

wchar_t OrderLetter(SortOrder order) {
  switch (order) {
    case SortOrder::kAscending:
      return L'A';
    case SortOrder::kDescending:
      return L'D';
    default:
      return L'N';
  }
}

SortOrder OrderOf(wchar_t letter) {
  return letter == L'A'   ? SortOrder::kAscending
         : letter == L'D' ? SortOrder::kDescending
                          : SortOrder::kNone;
}

bool IsDigit(wchar_t unit) {
  return unit >= L'0' && unit <= L'9';
}

// Numbers with one separator between two of them. Nothing for any other text, and for more numbers
// than `most`.
std::optional<std::vector<int32_t>> ReadNumbers(std::wstring_view text, size_t most) {
  std::vector<int32_t> numbers;
  size_t pos = 0;
  for (;;) {
    const size_t start = pos;
    int32_t number = 0;
    for (; pos < text.size() && IsDigit(text[pos]) && pos - start <= kMaxDigits; ++pos) {
      number = number * 10 + static_cast<int32_t>(text[pos] - L'0');
    }
    if (pos == start || pos - start > kMaxDigits || numbers.size() == most) {
      return std::nullopt;
    }
    numbers.push_back(number);
    if (pos == text.size()) {
      return numbers;
    }
    if (text[pos] != L';' && text[pos] != L',') {
      return std::nullopt;
    }
    ++pos;
  }
}

}  // namespace

std::wstring FormatColumnState(const ColumnState& state) {
  if (state.columns.empty()) {
    return {};
  }
  std::wstring text(1, OrderLetter(state.sortOrder));
  text.append(L",").append(std::to_wstring(state.sortColumn));
  for (const ColumnPlace& column : state.columns) {
    text.append(L";").append(std::to_wstring(column.order));
    text.append(L",").append(std::to_wstring(column.width));
  }
  return text;
}

std::optional<ColumnState> ParseColumnState(std::wstring_view text, size_t columnCount) {
  // Every number takes two characters of the text, so a larger count can't be in it.
  if (text.size() < kMinTextChars || columnCount > text.size()) {
    return std::nullopt;
  }
  const size_t expected = 2 * columnCount + 1;
  const auto numbers = ReadNumbers(text.substr(kPrefixLength), expected);
  const auto isColumn = [columnCount](int32_t number) {
    return static_cast<size_t>(number) < columnCount;
  };
  if (!numbers || numbers->size() != expected || !isColumn(numbers->front())) {
    return std::nullopt;
  }
  ColumnState state = {OrderOf(text.front()), numbers->front(), {}};
  for (size_t i = 1; i < numbers->size(); i += 2) {
    if (!isColumn((*numbers)[i])) {
      return std::nullopt;
    }
    state.columns.push_back({(*numbers)[i], (*numbers)[i + 1]});
  }
  return state;
}

std::vector<int32_t> DisplayOrder(const ColumnState& state) {
  std::vector<int32_t> order(state.columns.size());
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [&state](int32_t a, int32_t b) {
    return state.columns[static_cast<size_t>(a)].order <
           state.columns[static_cast<size_t>(b)].order;
  });
  return order;
}

}  // namespace postmarker
