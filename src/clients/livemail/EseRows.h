// What the reader's engine lets a table handle stand for: rows of a file, or of a listing.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "clients/livemail/JetApi.h"
#include "ese/TableCursor.h"
#include "support/MappedFile.h"

namespace postmarker {

// An attached database file.
class EseAttachment {
 public:
  // *error tells why there is none.
  static std::shared_ptr<EseAttachment> Open(const std::wstring& path, jet::Code* error);

  [[nodiscard]] const std::wstring& Path() const { return m_path; }
  [[nodiscard]] const ese::Database& Database() const { return *m_database; }
  [[nodiscard]] size_t Size() const { return m_size; }

  // The indexes of a table: those of the file, then those that were created.
  [[nodiscard]] std::vector<const ese::Index*> IndexesOf(const ese::Table& table) const;

  // Adds an index that stands in memory. Its name must be a new one.
  void AddIndex(const ese::Table& table, ese::Index definition);

  // An index of the table in memory, built at first use.
  std::shared_ptr<const ese::MemoryIndex> InMemory(const ese::Table& table,
                                                   const ese::Index& index);

 private:
  explicit EseAttachment(std::wstring path) : m_path(std::move(path)) {}

  std::wstring m_path;
  std::optional<MappedFile> m_file;
  std::string m_copy;
  size_t m_size = 0;
  std::optional<ese::Database> m_database;
  std::map<const ese::Table*, std::vector<std::unique_ptr<ese::Index>>> m_created;
  std::map<const ese::Index*, std::shared_ptr<const ese::MemoryIndex>> m_inMemory;
};

// The rows of a table handle. Operations give the engine's codes.
class EseRows {
 public:
  EseRows() = default;
  EseRows(const EseRows&) = delete;
  EseRows& operator=(const EseRows&) = delete;
  virtual ~EseRows() = default;

  virtual jet::Code Move(int32_t step) = 0;
  // The value of a column of the current row, at most `limit` bytes of it. *fullSize is its whole
  // size.
  virtual jet::Code Read(jet::ColumnId column, size_t limit, std::string* value,
                         size_t* fullSize) = 0;
};

// The rows of a listing. Columns are numbered from 1.
class EseListing : public EseRows {
 public:
  using Row = std::vector<std::optional<std::string>>;

  explicit EseListing(std::vector<Row> rows) : m_rows(std::move(rows)) {}
  jet::Code Move(int32_t step) override;
  jet::Code Read(jet::ColumnId column, size_t limit, std::string* value, size_t* fullSize) override;

 private:
  std::vector<Row> m_rows;
  size_t m_next = 0;  // after the current row
};

// The rows of a table of the file. What one of them hands out is bounded by a multiple of the
// file's size: a few bytes of a damaged file can stand for values without end.
class EseStoredRows : public EseRows {
 public:
  EseStoredRows(std::shared_ptr<EseAttachment> file, const ese::Table& table);

  [[nodiscard]] EseAttachment& File() const { return *m_file; }
  [[nodiscard]] const ese::Table& Table() const { return *m_table; }

  jet::Code Move(int32_t step) override;
  jet::Code Read(jet::ColumnId column, size_t limit, std::string* value, size_t* fullSize) override;

  jet::Code SetCurrentIndex(const std::string& name);

  // Appends to the key that Seek or SetIndexRange uses. `data` is null for a null value.
  jet::Code MakeKey(const void* data, size_t size, jet::Grbit grbit);
  jet::Code Seek(jet::Grbit grbit);
  jet::Code SetIndexRange(jet::Grbit grbit);

  // The id under which callers know a column.
  static jet::ColumnId IdOf(const ese::Column& column);

 private:
  std::shared_ptr<EseAttachment> m_file;
  const ese::Table* m_table;
  ese::TableCursor m_cursor;
  std::unordered_map<jet::ColumnId, const ese::Column*> m_columns;
  const ese::Index* m_index = nullptr;  // the current one
  bool m_isInMemory = false;
  std::optional<std::string> m_key;
  size_t m_keyColumns = 0;
  uint64_t m_readsLeft;
  uint64_t m_bytesLeft;
};

}  // namespace postmarker
