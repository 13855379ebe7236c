// What a test sees of an ESE database: every row of a table as texts.
#pragma once

#include <string>
#include <vector>

#include "ese/TableCursor.h"

namespace postmarker::test {

inline constexpr char kEseNull[] = "(null)";
inline constexpr char kEseDamaged[] = "(damaged)";

// A value of the cursor's row: its bytes, or one of the two words.
inline std::string EseValueOf(const ese::TableCursor& cursor, const ese::Column& column,
                              size_t number = 0) {
  std::string value;
  switch (cursor.Read(column, number, std::string::npos, &value).state) {
    case ese::ReadOutcome::State::kNull:
      return kEseNull;
    case ese::ReadOutcome::State::kDamaged:
      return kEseDamaged;
    default:
      return value;
  }
}

// A column of all rows, in the order of the cursor from where its next move leads.
inline std::vector<std::string> EseColumnOf(ese::TableCursor* cursor, const ese::Column& column) {
  std::vector<std::string> values;
  for (bool isThere = cursor->MoveFirst(); isThere; isThere = cursor->MoveNext()) {
    values.push_back(EseValueOf(*cursor, column));
  }
  return values;
}

// The same of a table by name, in its own order; nothing if there is no such table or column.
inline std::vector<std::string> EseColumnOf(const ese::Database& database, const char* tableName,
                                            const char* columnName) {
  const ese::Table* const table = database.FindTable(tableName);
  const ese::Column* const column = table != nullptr ? table->FindColumn(columnName) : nullptr;
  if (column == nullptr) {
    return {};
  }
  ese::TableCursor cursor(database, *table);
  return EseColumnOf(&cursor, *column);
}

}  // namespace postmarker::test
