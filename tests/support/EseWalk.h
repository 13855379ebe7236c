// Reads all there is in an ESE database, for what was harmed: it must end, and read nothing else.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "ese/TableCursor.h"

namespace postmarker::test {

// Many tables and indexes can name one tree, so a walk over all of them has an end of its own.
inline constexpr size_t kMaxEseRows = 20000;

struct EseWalk {
  ese::FileStatus status = ese::FileStatus::kNotADatabase;
  size_t rows = 0;  // of the tables, once for each of their orders
  size_t values = 0;
  size_t bytes = 0;
  size_t damagedValues = 0;
};

inline void WalkEseRows(const ese::Table& table, ese::TableCursor* cursor, EseWalk* walk) {
  const std::vector<const ese::Column*> columns = table.AllColumns();
  std::string value;
  for (bool isThere = cursor->MoveFirst(); isThere && walk->rows < kMaxEseRows;
       isThere = cursor->MoveNext()) {
    ++walk->rows;
    for (const ese::Column* const column : columns) {
      constexpr size_t kLimit = 4096;
      const auto outcome = cursor->Read(*column, 0, kLimit, &value);
      walk->values += outcome.state == ese::ReadOutcome::State::kValue ? 1 : 0;
      walk->damagedValues += outcome.state == ese::ReadOutcome::State::kDamaged ? 1 : 0;
      walk->bytes += value.size();
    }
  }
}

inline EseWalk WalkEse(std::string_view bytes) {
  const std::string exact(bytes);  // so that a read beyond the end is seen
  const ese::Database database(exact);
  EseWalk walk;
  walk.status = database.Status();
  for (const ese::Table& table : database.Tables()) {
    ese::TableCursor cursor(database, table);
    WalkEseRows(table, &cursor, &walk);
    for (const ese::Index& index : table.indexes) {
      if (ese::HasKnownOrder(table, index)) {
        cursor.OrderBy(index);
        WalkEseRows(table, &cursor, &walk);
      }
      cursor.Seek("\x7F\x80");
    }
    if (!table.columns.empty()) {
      ese::Index inMemory;
      inMemory.columns = {{.columnId = table.columns.front().id}};
      cursor.OrderBy(std::make_shared<const ese::MemoryIndex>(database, table, inMemory));
      WalkEseRows(table, &cursor, &walk);
    }
  }
  return walk;
}

}  // namespace postmarker::test
