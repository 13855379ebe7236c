// An index that stands in memory alone.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "ese/Database.h"

namespace postmarker::ese {

// The rows of a table, ordered by keys of our own. It is for columns that no index of the file is
// on, and for the file's indexes whose keys only the platform can make.
class MemoryIndex {
 public:
  // Reads the whole table once. Keys are made of the columns of `definition`; rows in which one of
  // them can't be read are left out. Rows with equal keys keep the order of the table.
  MemoryIndex(const Database& database, const Table& table, const Index& definition);

  [[nodiscard]] size_t RowCount() const { return m_rows.size(); }

  // REQUIRES: `row` is below RowCount.
  [[nodiscard]] std::string_view KeyAt(size_t row) const { return m_rows[row].key; }
  [[nodiscard]] EntryPlace PlaceAt(size_t row) const { return m_rows[row].place; }

  // The first row whose key is not below `key`.
  [[nodiscard]] size_t FirstNotBelow(std::string_view key) const;

 private:
  struct Row {
    std::string key;
    EntryPlace place;
  };

  std::vector<Row> m_rows;
};

}  // namespace postmarker::ese
