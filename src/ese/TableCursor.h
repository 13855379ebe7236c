// Walks over the rows of a table, by one of its orders.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "ese/Database.h"
#include "ese/MemoryIndex.h"
#include "ese/Record.h"

namespace postmarker::ese {

// True if keys for this index can be made without the platform, so that it can be searched.
// Otherwise a MemoryIndex serves.
bool HasKnownOrder(const Table& table, const Index& index);

// Where a search ended.
enum class Found {
  kNone,     // all keys are below the wanted one
  kGreater,  // on the first row after it
  kEqual,
};

// A cursor that stands on a row or on none. Rows that can't be read are passed over, as are entries
// of an index whose row is missing. Database and table must outlive it. From one thread at a time.
class TableCursor {
 public:
  // In the table's own order; on no row.
  TableCursor(const Database& database, const Table& table);
  TableCursor(const TableCursor&) = delete;
  TableCursor& operator=(const TableCursor&) = delete;
  ~TableCursor();

  // Chooses the order of rows; the cursor then stands on none and has no limit. An index of the
  // file must have a known order. A MemoryIndex must be of this table.
  void OrderByTable();
  void OrderBy(const Index& index);
  void OrderBy(std::shared_ptr<const MemoryIndex> index);

  // To the first row of the order, or to the next one. False at the end; then there is no row. The
  // first move to the beginning drops the limit.
  bool MoveFirst();
  bool MoveNext();

  // To the first row whose key is not below `key`. Drops the limit.
  Found Seek(std::string_view key);

  // Rows with keys above `key` count as after the end. False if the current row is one of them;
  // then there is no row. REQUIRES: HasRow.
  bool SetUpperLimit(std::string_view key);

  [[nodiscard]] bool HasRow() const { return m_hasRow; }

  // A column of the current row, as ReadValue gives it. REQUIRES: HasRow.
  ReadOutcome Read(const Column& column, size_t number, size_t limit, std::string* value) const;

 private:
  class Order;
  class TreeOrder;
  class IndexOrder;
  class MemoryOrder;

  // Goes from where the order stands to a row that can be read.
  bool Settle(bool isThere);

  const Database* m_database;
  const Table* m_table;
  std::unique_ptr<Order> m_order;
  std::optional<std::string> m_upperLimit;
  Record m_record;
  bool m_hasRow = false;
};

}  // namespace postmarker::ese
