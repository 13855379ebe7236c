// ParseColumnState, by the bytes after the first one, which is the number of columns.
#include "FuzzTarget.h"
#include "controls/ColumnState.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace postmarker;
  if (size == 0) {
    return 0;
  }
  const std::string_view bytes = fuzz::Bytes(data + 1, size - 1);
  const std::wstring text(bytes.begin(), bytes.end());
  const size_t columns = data[0] % 8;
  const auto state = ParseColumnState(text, columns);
  if (!state) {
    return 0;
  }
  fuzz::Require(state->columns.size() == columns);
  fuzz::Require(static_cast<size_t>(state->sortColumn) < columns);
  fuzz::Require(DisplayOrder(*state).size() == columns);
  // What was read is written and read as the same.
  fuzz::Require(ParseColumnState(FormatColumnState(*state), columns) == state);
  return 0;
}
