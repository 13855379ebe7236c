// column-state: the kept layout of a grid's columns.
#include "Commands.h"
#include "NumberArgument.h"
#include "controls/ColumnState.h"
#include "support/Text.h"

namespace postmarker::inspect {
namespace {

void WriteColumns(JsonWriter* json, const ColumnState& state) {
  json->Key("order").Number(static_cast<int64_t>(state.sortOrder));
  json->Key("sortColumn").Number(state.sortColumn);
  json->Key("columns").BeginArray();
  for (const ColumnPlace& column : state.columns) {
    json->BeginObject();
    json->Key("order").Number(column.order);
    json->Key("width").Number(column.width);
    json->EndObject();
  }
  json->EndArray();
}

}  // namespace

bool RunColumnState(const Arguments& arguments, JsonWriter* json) {
  uint32_t columns = 0;
  if (!ReadNumber(arguments.texts.front(), &columns)) {
    return false;
  }
  const auto state = ParseColumnState(WidenUtf8(arguments.texts.back()), columns);
  if (json != nullptr) {
    json->BeginObject();
    json->Key("accepted").Bool(state.has_value());
    if (state) {
      WriteColumns(json, *state);
    }
    json->EndObject();
  }
  return true;
}

}  // namespace postmarker::inspect
